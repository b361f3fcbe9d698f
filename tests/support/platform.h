// Stands in for the platform: the shared library's calls come here instead of the system.
#ifndef TARN_TESTS_SUPPORT_PLATFORM_H_
#define TARN_TESTS_SUPPORT_PLATFORM_H_

#include <sys/time.h>

#include <optional>
#include <string>
#include <vector>

namespace tarn_test {

struct Platform {
    // What the library did, in order: "get" (property), "clock" (gettimeofday), "time",
    // "open <path>", and log lines as "<priority> <text>".
    std::vector<std::string> events;

    std::optional<std::string> property;  // the verbosity property; none: unset
    time_t time = 1706745599;             // 2024-01-31 23:59:59 UTC
    std::vector<timeval> clocks;          // successive readings, then over again
    bool dumpDirectoryExists = true;
    std::vector<std::string> dumps;  // where the dumps went

    int allocations = 0;  // of the library; the one numbered allocationToFail fails
    int allocationToFail = -1;
    int unfreed = 0;

    bool watching = false;  // the library runs: what comes in is its doing
    size_t clocksTaken = 0;
};

Platform& ThePlatform();

// What a call of the library did to the platform, one event per line; errno must survive it.
template <class Call>
std::string EventsOf(Call call);

std::string Joined(const std::vector<std::string>& lines);
void Watch(bool on);

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
