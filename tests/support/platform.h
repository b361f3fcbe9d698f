// Stands in for the platform: the shared library's calls come here instead of the system, from any
// thread.
#ifndef TARN_TESTS_SUPPORT_PLATFORM_H_
#define TARN_TESTS_SUPPORT_PLATFORM_H_

#include <sys/time.h>

#include <optional>
#include <string>
#include <vector>

namespace tarn_test {

struct Platform {
    // What the library did, in order: "get" (property), "clock" (gettimeofday), "time",
    // "open <path>", "close", and log lines as "<priority> <text>".
    std::vector<std::string> events;

    std::optional<std::string> property;  // the verbosity property; none: unset
    time_t time = 1706745599;             // 2024-01-31 23:59:59 UTC
    std::vector<timeval> clocks;          // successive readings, then over again
    enum class Disk { Fine, NoFolder, Full, NotClosing } disk = Disk::Fine;
    std::vector<std::string> dumps;  // where the dumps went

    int allocations = 0;  // of the library; the one numbered allocationToFail fails
    int allocationToFail = -1;
    int unfreed = 0;

    size_t clocksTaken = 0;
};

Platform& ThePlatform();

std::string Joined(const std::vector<std::string>& lines);

// From on to off the library runs in this thread: what comes in is its doing. errno, the rounding
// mode (which is not the usual one then) and what the process does about signals must survive it.
void Watch(bool on);

// What a call of the library did to the platform, one event per line.
template <class Call>
std::string EventsOf(Call call) {
    ThePlatform().events.clear();
    Watch(true);
    call();
    Watch(false);
    return Joined(ThePlatform().events);
}

}  // namespace tarn_test

#endif  // TARN_TESTS_SUPPORT_PLATFORM_H_
