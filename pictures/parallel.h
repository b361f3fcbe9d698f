// Work on several threads.
#ifndef TARN_PICTURES_PARALLEL_H_
#define TARN_PICTURES_PARALLEL_H_

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>

namespace tarn::pictures {

// Calls work(i, worker) once for each i from 0 below count, on at most so many threads, fewer where
// the system grants fewer; i are begun in order, and worker, below threads, is the one that calls.
// Once work returns false or throws, no further i is begun; the first exception is thrown when all
// that were begun have ended.
void ParallelFor(int64_t count, int threads, const std::function<bool(int64_t, int)>& work);

// Lets what several threads do be done in order.
class InOrder {
 public:
    // Does what number i has to do once it has been done for all before. An exception ends all
    // waiting: who waits then, or comes later, gets false.
    bool Do(int64_t i, const std::function<void()>& what);
    // Number i will never come.
    void Stop();

 private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int64_t next_ = 0;
    bool stopped_ = false;
};

}  // namespace tarn::pictures

#endif  // TARN_PICTURES_PARALLEL_H_
