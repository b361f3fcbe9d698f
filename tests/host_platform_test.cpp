// The shipped library as it stands on a host: its own log and property functions, which every other
// test replaces.
#include <android/log.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/system_properties.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include "TarnSolution.h"

namespace {

template <class Call>
std::string ErrorOutputOf(Call call) {
    testing::internal::CaptureStderr();
    call();
    return testing::internal::GetCapturedStderr();
}

void SetVerbosity(const char* text) {
    text ? setenv("TARN_VERBOSE", text, 1) : unsetenv("TARN_VERBOSE");
}

// What Init and a frame without pixels write under a text of the property.
std::string LinesUnder(const char* text) {
    SetVerbosity(text);
    return ErrorOutputOf([] {
        TarnSolution solution;
        EXPECT_EQ(solution.Init(0), 0);
        EXPECT_EQ(solution.Process(nullptr, nullptr, {8, 10, 0, 4, 5, 0}), 0);
    });
}

TEST(HostPlatform, VerbosityIsReadFromTheEnvironment) {
    const std::string init = "I/TarnSolution: initialize E (1.0.12), opt = 0 ";
    const std::string frame =
        "D/TarnSolution: Process: Process opt: 0, BR: 1.000000, infmt: 1, outfmt: 0\n"
        "D/TarnSolution: Process: Process 8, 10, 0, 4, 5, 0\n"
        "D/TarnSolution: CheckStride: CheckStride Stride : 10, 5\n";
    for (const char* silent : {static_cast<const char*>(nullptr), "", "0", "abc"}) {
        EXPECT_EQ(LinesUnder(silent), init + "0\n");
    }
    EXPECT_EQ(LinesUnder("-4"), init + "-4\n" + frame);
    const std::string timed = LinesUnder((std::string(90, '0') + "1").c_str());
    EXPECT_EQ(timed.substr(0, timed.find("D/TarnSolution: Process: Processing Time is ")),
              init + "1\n" + frame);
    EXPECT_EQ(LinesUnder((std::string(91, '0') + "1").c_str()), init + "0\n");  // cut
}

TEST(HostPlatform, PropertiesAreCutAndTerminated) {
    char value[PROP_VALUE_MAX + 1];
    SetVerbosity(std::string(200, '7').c_str());
    std::memset(value, 'x', sizeof value);
    EXPECT_EQ(__system_property_get("persist.log.tag.tarn.verbose", value), PROP_VALUE_MAX - 1);
    EXPECT_EQ(std::string(value), std::string(PROP_VALUE_MAX - 1, '7'));
    EXPECT_EQ(value[PROP_VALUE_MAX], 'x');
    EXPECT_EQ(__system_property_get("persist.log.tag", value), 0);
    EXPECT_STREQ(value, "");
    SetVerbosity("1");
    EXPECT_EQ(__system_property_get("persist.log.tag.tarn.verbose", value), 1);
    EXPECT_STREQ(value, "1");
}

TEST(HostPlatform, LinesCarryThePriorityAndEndWithinTheirBuffer) {
    std::string letters;
    for (int priority = -1; priority <= 8; ++priority) {
        letters +=
            ErrorOutputOf([&] { EXPECT_EQ(__android_log_print(priority, "T", "%d", 5), 7); })[0];
    }
    EXPECT_EQ(letters, "???VDIWEF?");
    const std::string text(2000, 'a');
    const std::string line =
        ErrorOutputOf([&] { __android_log_print(3, "T", "%s", text.c_str()); });
    EXPECT_EQ(line, "D/T: " + text.substr(0, 1023) + "\n");
}

TEST(HostPlatform, ALineThatCannotBeWrittenLeavesErrno) {
    const int standardError = dup(2), full = open("/dev/full", O_WRONLY);
    dup2(full, 2);
    errno = 77;
    const int written = __android_log_print(3, "T", "lost");
    const int after = errno;
    dup2(standardError, 2);
    close(full);
    EXPECT_LT(written, 0);
    EXPECT_EQ(after, 77);
}

}  // namespace
