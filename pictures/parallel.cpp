#include "pictures/parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <memory>
#include <system_error>
#include <thread>
#include <vector>

namespace tarn::pictures {

void ParallelFor(int64_t count, int threads, const std::function<bool(int64_t, int)>& work) {
    std::atomic<int64_t> next = 0;
    std::atomic<bool> stopped = false;
    std::mutex mutex;
    std::exception_ptr failure;
    const auto run = [&](int worker) {
        for (int64_t i = next++; i < count && !stopped; i = next++) {
            try {
                if (!work(i, worker)) stopped = true;
            } catch (...) {
                stopped = true;
                const std::lock_guard lock(mutex);
                if (!failure) failure = std::current_exception();
            }
        }
    };
    std::vector<std::jthread> others;
    try {
        for (int worker = 1; worker < std::min<int64_t>(threads, count); ++worker) {
            others.emplace_back(run, worker);
        }
    } catch (const std::system_error&) {
        // The system grants no more of them: those that are there do it all.
    }
    run(0);
    others.clear();
    if (failure) std::rethrow_exception(failure);
}

bool InOrder::Do(int64_t i, const std::function<void()>& what) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return stopped_ || next_ == i; });
    if (stopped_) return false;
    lock.unlock();
    try {
        what();
    } catch (...) {
        Stop();
        throw;
    }
    lock.lock();
    ++next_;
    changed_.notify_all();
    return true;
}

void InOrder::Stop() {
    const std::lock_guard lock(mutex_);
    stopped_ = true;
    changed_.notify_all();
}

}  // namespace tarn::pictures
