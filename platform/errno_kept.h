// The client's errno is none of the library's business: what may change it leaves it as it was.
#ifndef TARN_PLATFORM_ERRNO_KEPT_H_
#define TARN_PLATFORM_ERRNO_KEPT_H_

#include <cerrno>

namespace tarn {

class ErrnoKept {
 public:
    ErrnoKept() = default;
    // clang takes operator new for a function that leaves errno as it is, and would drop a plain
    // store.
    ~ErrnoKept() { static_cast<volatile int&>(errno) = saved_; }
    ErrnoKept(const ErrnoKept&) = delete;
    ErrnoKept& operator=(const ErrnoKept&) = delete;

 private:
    int saved_ = errno;
};

}  // namespace tarn

#endif  // TARN_PLATFORM_ERRNO_KEPT_H_
