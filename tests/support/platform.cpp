#include "tests/support/platform.h"

#include <android/log.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/system_properties.h>

#include <algorithm>
#include <cerrno>
#include <cfenv>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>

namespace tarn_test {
namespace {

constexpr int kClientErrno = 77;
constexpr int kClientRounding = FE_UPWARD;

thread_local bool watching = false;
std::recursive_mutex oneStandInAtATime;

// While the test's own code runs inside a stand-in, nothing is the library's doing.
class Unwatched {
 public:
    Unwatched() { watching = false; }
    ~Unwatched() { watching = watched_; }

 private:
    bool watched_ = watching;
    std::lock_guard<std::recursive_mutex> lock_{oneStandInAtATime};
};

// Which signals are blocked, and what is done about each.
std::string SignalState() {
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    std::string state;
    for (int signal = 1; signal < NSIG; ++signal) {
        struct sigaction action {};
        sigaction(signal, nullptr, &action);
        state += sigismember(&blocked, signal) == 1 ? 'x' : '-';
        state += std::to_string(reinterpret_cast<uintptr_t>(action.sa_handler));
    }
    return state;
}

void Record(const std::string& event) {
    ThePlatform().events.push_back(event);
}

void* Allocate(size_t bytes) {
    if (watching) {
        Platform& platform = ThePlatform();
        if (platform.allocations++ == platform.allocationToFail) {
            errno = ENOMEM;
            return nullptr;
        }
        ++platform.unfreed;
    }
    return std::malloc(bytes);
}

void Free(void* memory) {
    if (memory && watching) --ThePlatform().unfreed;
    std::free(memory);
}

}  // namespace

Platform& ThePlatform() {
    static Platform platform;
    return platform;
}

std::string Joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    return text;
}

void Watch(bool on) {
    static thread_local std::string signals;
    if (on) {
        signals = SignalState();
    } else {
        EXPECT_EQ(errno, kClientErrno);
        EXPECT_EQ(std::fegetround(), kClientRounding);
        watching = false;
        EXPECT_EQ(SignalState(), signals);
    }
    std::fesetround(on ? kClientRounding : FE_TONEAREST);
    watching = on;
    errno = kClientErrno;
}

}  // namespace tarn_test

using tarn_test::Platform;
using tarn_test::ThePlatform;
using tarn_test::Unwatched;

extern "C" {

int __android_log_print(int priority, const char* tag, const char* format, ...) {
    const Unwatched unwatched;
    EXPECT_STREQ(tag, "TarnSolution");
    char text[1024];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    tarn_test::Record(std::to_string(priority) + " " + text);
    return 1;
}

// An unset property leaves the buffer as it is, so the caller must have cleared all of it.
int __system_property_get(const char* name, char* value) {
    const Unwatched unwatched;
    EXPECT_STREQ(name, "persist.log.tag.tarn.verbose");
    EXPECT_TRUE(std::all_of(value, value + PROP_VALUE_MAX, [](char c) { return c == 0; }));
    tarn_test::Record("get");
    const auto& property = ThePlatform().property;
    if (!property) return 0;
    std::memcpy(value, property->c_str(), property->size() + 1);
    return static_cast<int>(property->size());
}

// A dump lands in the working folder; what is not a dump passes through.
FILE* fopen(const char* path, const char* mode) {
    static const auto real =
        reinterpret_cast<FILE* (*)(const char*, const char*)>(dlsym(RTLD_NEXT, "fopen"));
    if (!tarn_test::watching) return real(path, mode);
    const Unwatched unwatched;
    Platform& platform = ThePlatform();
    EXPECT_STREQ(mode, "wb");
    tarn_test::Record(std::string("open ") + path);
    if (platform.disk == Platform::Disk::NoFolder) {
        errno = ENOENT;
        return nullptr;
    }
    if (platform.disk == Platform::Disk::Full) return real("/dev/full", mode);
    platform.dumps.push_back("dump" + std::to_string(platform.dumps.size()) + ".raw");
    FILE* file = real(platform.dumps.back().c_str(), mode);
    errno = EAGAIN;
    return file;
}

int fclose(FILE* file) {
    static const auto real = reinterpret_cast<int (*)(FILE*)>(dlsym(RTLD_NEXT, "fclose"));
    if (!tarn_test::watching) return real(file);
    const Unwatched unwatched;
    tarn_test::Record("close");
    const int result = real(file);
    if (ThePlatform().disk != Platform::Disk::NotClosing) return result;
    errno = EIO;
    return EOF;
}

int gettimeofday(timeval* now, void* zone) noexcept {
    const Unwatched unwatched;
    Platform& platform = ThePlatform();
    EXPECT_EQ(zone, nullptr);
    tarn_test::Record("clock");
    *now = platform.clocks[platform.clocksTaken++ % platform.clocks.size()];
    return 0;
}

time_t time(time_t* result) noexcept {
    const Unwatched unwatched;
    tarn_test::Record("time");
    if (result) *result = ThePlatform().time;
    return ThePlatform().time;
}

}  // extern "C"

void* operator new(size_t bytes) {
    void* memory = tarn_test::Allocate(bytes);
    if (!memory) throw std::bad_alloc();
    return memory;
}
void* operator new(size_t bytes, const std::nothrow_t&) noexcept {
    return tarn_test::Allocate(bytes);
}
void operator delete(void* memory) noexcept {
    tarn_test::Free(memory);
}
void operator delete(void* memory, size_t) noexcept {
    tarn_test::Free(memory);
}
