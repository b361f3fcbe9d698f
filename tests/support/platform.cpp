#include "tests/support/platform.h"

#include <android/log.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/system_properties.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

namespace tarn_test {
namespace {

constexpr int kClientErrno = 77;

// While the test's own code runs inside a stand-in, nothing is the library's doing.
class Unwatched {
 public:
    Unwatched() { ThePlatform().watching = false; }
    ~Unwatched() { ThePlatform().watching = watched_; }

 private:
    bool watched_ = ThePlatform().watching;
};

void Record(const std::string& event) {
    ThePlatform().events.push_back(event);
}

void* Allocate(size_t bytes) {
    Platform& platform = ThePlatform();
    if (platform.watching) {
        if (platform.allocations++ == platform.allocationToFail) return nullptr;
        ++platform.unfreed;
    }
    return std::malloc(bytes);
}

void Free(void* memory) {
    if (memory && ThePlatform().watching) --ThePlatform().unfreed;
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
    if (!on) {
        EXPECT_EQ(errno, kClientErrno);
    }
    ThePlatform().watching = on;
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

// A dump lands in the build folder; what is not a dump passes through.
FILE* fopen(const char* path, const char* mode) {
    static const auto real =
        reinterpret_cast<FILE* (*)(const char*, const char*)>(dlsym(RTLD_NEXT, "fopen"));
    if (!ThePlatform().watching) return real(path, mode);
    const Unwatched unwatched;
    Platform& platform = ThePlatform();
    EXPECT_STREQ(mode, "wb");
    tarn_test::Record(std::string("open ") + path);
    if (!platform.dumpDirectoryExists) {
        errno = ENOENT;
        return nullptr;
    }
    platform.dumps.push_back(TARN_TEST_FOLDER "/dump" + std::to_string(platform.dumps.size()) +
                             ".raw");
    FILE* file = real(platform.dumps.back().c_str(), mode);
    errno = EAGAIN;
    return file;
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
