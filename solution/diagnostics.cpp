// The stopwatch and the raw dumps of TarnSolution::impl.
#include <sys/time.h>

#include <cstddef>
#include <cstdio>
#include <ctime>

#include "platform/errno_kept.h"
#include "platform/log.h"
#include "solution/solution_impl.h"

namespace {

using Text = char[512];

timeval Now() {
    timeval now{};
    gettimeofday(&now, nullptr);
    return now;
}

// Date and time to the second, then the milliseconds of a second reading of the clock.
void FormatTimestamp(Text& text) {
    const time_t seconds = std::time(nullptr);
    std::tm local{};
    tzset();  // what localtime does; localtime_r need not
    localtime_r(&seconds, &local);
    const int milliseconds = static_cast<int>(Now().tv_usec / 1000);
    std::snprintf(text, sizeof text, "%d%02d%02d%02d%02d%02d%03d", local.tm_year + 1900,
                  local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec,
                  milliseconds);
}

// Nothing when a factor makes no sense or the product does not fit an int.
size_t DumpBytes(int pitch, int height) {
    int bytes = 0;
    if (pitch < 1 || height < 1 || __builtin_mul_overflow(pitch, height, &bytes)) return 0;
    return static_cast<size_t>(bytes);
}

}  // namespace

int64_t TarnSolution::impl::getCurrentTimeMilli() {
    const timeval now = Now();
    return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_usec / 1000;
}

void TarnSolution::impl::DumpImage(const char* tag, unsigned char* buffer, int pitch,
                                   int height) const {
    if (debugLevel < 2) return;
    const tarn::ErrnoKept errnoKept;

    Text timestamp;
    FormatTimestamp(timestamp);
    Text path = {};
    const int length = std::snprintf(path, sizeof path, "/data/vendor/camera/Tarn_%s_%s_%dx%d.raw",
                                     tag, timestamp, pitch, height);
    if (length < 0) return;  // a name that is too long is cut and used

    std::FILE* file = std::fopen(path, "wb");
    if (!file) {
        __android_log_print(ANDROID_LOG_ERROR, tarn::kLogTag, "%s: cannot open %s", "DumpImage",
                            path);
        return;
    }
    if (tarn::VerboseCheck()) {
        __android_log_print(ANDROID_LOG_DEBUG, tarn::kLogTag,
                            "%s: DumpImage (%s)  pitch = %d   height = %d", "DumpImage", tag, pitch,
                            height);
    }
    std::fwrite(buffer, 1, DumpBytes(pitch, height), file);
    std::fclose(file);
}
