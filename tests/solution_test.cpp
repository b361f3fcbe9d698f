// The shipped library through its front end: life cycle, dispatch, and everything it does to the
// platform, in order.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <thread>

#include "TarnSolution.h"
#include "reference/operation.h"
#include "tests/support/platform.h"

namespace tarn_test {
namespace {

using Strings = std::vector<std::string>;

struct Destroy {
    void operator()(TarnBinningAbstract* solution) const { TarnSolution_destroy(solution); }
};
using Solution = std::unique_ptr<TarnBinningAbstract, Destroy>;

class Front : public testing::Test {
 protected:
    Front() {
        platform = Platform{};
        platform.clocks = {{1000, 999999}, {1000, 123000}, {1001, 500999}, {1002, 1000}};
        for (size_t i = 0; i < sizeof source; ++i) source[i] = static_cast<uint8_t>(i * 73 + i / 7);
        setenv("TZ", "UTC", 1);
    }

    ~Front() override {
        for (const std::string& dump : platform.dumps) std::remove(dump.c_str());
    }

    int Process(TarnBinningAbstract& tested, const BufferInfo& info) {
        std::memset(destination, 0xA5, sizeof destination);
        return tested.Process(source, destination, info);
    }
    std::string ProcessEvents(TarnBinningAbstract& tested, const BufferInfo& info) {
        return EventsOf([&] { EXPECT_EQ(Process(tested, info), 0); });
    }
    bool Untouched() const {
        for (const uint8_t byte : destination) {
            if (byte != 0xA5) return false;
        }
        return true;
    }
    static std::string InitLine(int option, int level) {
        return "4 initialize E (1.0.12), opt = " + std::to_string(option) + " " +
               std::to_string(level);
    }

    Platform& platform = ThePlatform();
    Solution solution{TarnSolution_initialize()};
    uint8_t source[4096];
    uint8_t destination[4096];
    const BufferInfo tetra{16, 21, 8, 8, 11, 4};
};

// One frame of each dispatch row and of its borders: what comes out, and what its operation logs.
struct Road {
    int option, inWidth, outWidth;
    float inFormat, outFormat;
    const char* operation;
    const char* entry;  // the operation's own line
    bool checksStride;
};
const char kVX10[] = "3 Binning_10bit_Tetra: VX Binning_10bit_Tetra E";
const char kVX12[] = "3 Binning_12bit_Tetra: VX Binning_12bit_Tetra E";
const Road kRoads[] = {
    {0, 16, 8, 1, 0, "QC_Tetra10", "", true},
    {0, -9, 8, 12, 9, "QC_Tetra10", "", true},
    {0, 16, 8, 10, 19, "QC_Tetra12", "3 Binning_12bit_Tetra: Binning_12bit_Tetra S", true},
    {0, 11999, 8, 20, 12, "QC_Tetra10", "", true},
    {0, 12000, 8, 12, 12, "QC_Nona10", "", false},
    {0, 15999, 8, 1, 0, "QC_Nona10", "", false},
    {0, 16000, 8, 12, 12, "QC_Hexadeca10", "", true},
    {0, 20, 20, 9, 12, "QC_EV10", "", false},
    {0, 16000, 16000, 19, 10, "QC_EV12", "", false},
    {1, 16, 8, 9, 11, "VX_Tetra10", kVX10, false},
    {1, 11999, 8, -3e9f, 10, "VX_Tetra10to12", kVX10, false},
    {1, 16, 8, 10, 0, "VX_Tetra12to10", kVX12, false},
    {1, 11999, 8, 19, 10, "VX_Tetra12", kVX12, false},
    {1, 12000, 8, 12, 10, "VX_Nona10", "", false},
    {1, 15999, 8, 12, 10, "VX_Nona10", "", false},
    {1, 16000, 8, 12, 12, "VX_Hexadeca10", "", false},
    {1, 16000, 8, 12, 10, "VX_Hexadeca10to12", "", false},
    {1, 20, 20, 3e9f, 10, "VX_EV10", "", false},
    {1, 12000, 12000, 10, 0, "VX_EV12", "", false},
};

// The events of one such frame at debug level 2 and with the property set.
Strings EventsOfRoad(const Road& road) {
    char settings[128], geometry[128];
    std::snprintf(settings, sizeof settings,
                  "3 Process: Process opt: %d, BR: 1.500000, infmt: %lld, outfmt: %d", road.option,
                  std::clamp<long long>(static_cast<long long>(road.inFormat), INT_MIN, INT_MAX),
                  static_cast<int>(road.outFormat));
    std::snprintf(geometry, sizeof geometry, "3 Process: Process %d, 120, 8, %d, 60, 2",
                  road.inWidth, road.outWidth);
    const std::string open = "open /data/vendor/camera/Tarn_";
    const std::string dump = "3 DumpImage: DumpImage ";
    Strings events = {"get", settings, "get", geometry, "clock"};
    events.insert(events.end(),
                  {"time", "clock", open + "srcTetraInput_20240131235959123_120x8.raw", "get",
                   dump + "(srcTetraInput)  pitch = 120   height = 8", "close"});
    if (*road.entry) events.insert(events.end(), {"get", road.entry});
    if (road.checksStride) {
        events.insert(events.end(), {"get", "3 CheckStride: CheckStride Stride : 120, 60"});
    }
    events.insert(events.end(),
                  {"time", "clock", open + "finalPackOutput_20240131235959500_60x2.raw", "get",
                   dump + "(finalPackOutput)  pitch = 60   height = 2", "close"});
    events.insert(events.end(), {"clock", "get", "3 Process: Processing Time is 1002"});
    return events;
}

TEST_F(Front, EveryRoadOfAFrame) {
    for (const Road& road : kRoads) {
        SCOPED_TRACE(road.operation);
        platform.property = std::string("2");
        solution.reset(TarnSolution_initialize());
        EXPECT_EQ(solution->Init(road.option), 0);
        solution->SetParam(PROP_INPUT_FORMAT, road.inFormat);
        solution->SetParam(PROP_OUTPUT_FORMAT, road.outFormat);
        solution->SetParam(PROP_BRIGHTNESS_RATIO, 1.5f);
        solution->SetParam(PROP_AUX_RATIO, 4.0f);
        const BufferInfo info{road.inWidth, 120, 8, road.outWidth, 60, 2};
        Strings events = EventsOfRoad(road);
        platform.clocksTaken = 0;
        EXPECT_EQ(ProcessEvents(*solution, info), Joined(events));

        // Without the property the same reads and clocks happen, and no line is written.
        std::erase_if(events, [](const std::string& event) { return event[0] == '3'; });
        platform.property.reset();
        platform.clocksTaken = 0;
        EXPECT_EQ(ProcessEvents(*solution, info), Joined(events));

        std::vector<uint8_t> expected(sizeof destination, 0xA5);
        for (const tarn_reference::Operation& rule : tarn_reference::Operations()) {
            if (rule.name != std::string(road.operation)) continue;
            tarn_reference::Run(rule, source, expected.data(),
                                {road.inWidth, 120, 8, road.outWidth, 60, 2}, 1.5f);
        }
        EXPECT_EQ(std::memcmp(destination, expected.data(), sizeof destination), 0);
        EXPECT_FALSE(Untouched());
    }
}

TEST_F(Front, DebugLevelFollowsThePropertyAtInit) {
    const std::pair<const char*, int> texts[] = {
        {"0", 0},   {"7", 3},  {"2", 2},     {"", 2},   {"-4", -4},
        {"abc", 0}, {"3x", 3}, {nullptr, 3}, {" 1", 1}, {"99999999999999999999", -1}};
    for (const auto& [text, level] : texts) {
        platform.property.reset();
        if (text) platform.property = text;
        EXPECT_EQ(EventsOf([&] { EXPECT_EQ(solution->Init(2), -1); }),
                  Joined({"get", InitLine(2, level), "6 Please check to the solution option!"}));
    }
    platform.property = std::string(90, '0') + "1";  // the longest text there is
    EXPECT_EQ(EventsOf([&] { EXPECT_EQ(solution->Init(1), 0); }), Joined({"get", InitLine(1, 1)}));
}

// Whatever the level was fixed to at Init, the lines follow the property of the moment.
TEST_F(Front, StopwatchAndDumpsFollowTheDebugLevel) {
    for (const int level : {-1, 0, 1, 2, 3}) {
        platform.property = std::to_string(level);
        solution.reset(TarnSolution_initialize());
        solution->Init(0);
        platform.property = std::string("0");
        const std::string events = ProcessEvents(*solution, tetra);
        const std::string dump = "time\nclock\nopen ";
        EXPECT_EQ(events.find("clock\n") != std::string::npos, level >= 1) << level;
        EXPECT_EQ(events.find(dump) != std::string::npos, level >= 2) << level;
        EXPECT_EQ(events.find("3 "), std::string::npos) << level;
    }
    EXPECT_EQ(platform.dumps.size(), 4u);
}

TEST_F(Front, InitOnceAndRefusals) {
    EXPECT_EQ(solution->Init(1), 0);
    EXPECT_EQ(EventsOf([&] { EXPECT_EQ(solution->Init(0), -1); }),
              Joined({"get", InitLine(0, 0), "6 TarnSolution is already initialized!"}));
    // The option stays changed: the QC family serves, whose engine was never made.
    platform.property = std::string("1");
    EXPECT_NE(ProcessEvents(*solution, tetra).find("CheckStride"), std::string::npos);
    EXPECT_FALSE(Untouched());

    solution.reset(TarnSolution_initialize());  // never initialised: the QC family as well
    const std::string untold = ProcessEvents(*solution, tetra);
    EXPECT_NE(untold.find("opt: 0, BR: 1.000000, infmt: 1, outfmt: 0"), std::string::npos);
    EXPECT_EQ(untold.find("clock"), std::string::npos);
    EXPECT_FALSE(Untouched());

    EXPECT_EQ(solution->Init(2), -1);
    EXPECT_NE(ProcessEvents(*solution, tetra).find("opt: 2"), std::string::npos);
    EXPECT_TRUE(Untouched());
    EXPECT_EQ(solution->Init(1), 0);
}

TEST_F(Front, SettingsAreConvertedTowardZeroAndSaturate) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const std::pair<float, int> codes[] = {{12.9f, 12},
                                           {-0.5f, 0},
                                           {-2.7f, -2},
                                           {std::numeric_limits<float>::quiet_NaN(), 0},
                                           {3e9f, 2147483647},
                                           {2147483648.0f, 2147483647},
                                           {2147483520.0f, 2147483520},
                                           {-3e9f, -2147483647 - 1},
                                           {kInfinity, 2147483647},
                                           {-kInfinity, -2147483647 - 1}};
    platform.property = std::string("1");
    const BufferInfo nothing{16, 21, 8, 8, 11, 0};
    for (const auto& [value, code] : codes) {
        EXPECT_EQ(solution->SetParam(PROP_INPUT_FORMAT, value), 0);
        EXPECT_EQ(solution->SetParam(PROP_OUTPUT_FORMAT, value), 0);
        EXPECT_EQ(solution->SetParam(PROP_BRIGHTNESS_RATIO, value), 0);
        for (const int unknown : {5, -1, 11, 2147483647}) {
            EXPECT_EQ(solution->SetParam(static_cast<CameraProperty>(unknown), 99.0f), 0);
        }
        char line[160];
        std::snprintf(line, sizeof line, "BR: %f, infmt: %d, outfmt: %d\n",
                      static_cast<double>(value), code, code);
        EXPECT_NE(ProcessEvents(*solution, nothing).find(line), std::string::npos) << line;
    }
}

TEST_F(Front, AfterReleaseEverythingIsRefusedAndNothingTouched) {
    solution->Init(0);
    solution->Release();
    EXPECT_EQ(EventsOf([&] {
                  EXPECT_EQ(solution->Init(0), -1);
                  EXPECT_EQ(solution->SetParam(PROP_INPUT_FORMAT, 12.0f), -1);
                  EXPECT_EQ(Process(*solution, tetra), -1);
                  solution->Release();
              }),
              "");
    EXPECT_TRUE(Untouched());
    TarnSolution_destroy(nullptr);
}

TEST_F(Front, EveryAllocationMayFail) {
    for (int failing = 0; failing < 4; ++failing) {
        platform.allocations = 0;
        platform.unfreed = 0;
        platform.allocationToFail = failing;
        EventsOf([&] {
            const Solution made{TarnSolution_initialize()};
            EXPECT_EQ(made == nullptr, failing < 2);
            if (!made) return;
            EXPECT_EQ(made->Init(1), failing == 2 ? -1 : 0);
            EXPECT_EQ(made->Init(1), failing == 2 ? 0 : -1);
        });
        EXPECT_EQ(platform.unfreed, 0);
    }
    platform.allocations = 0;
    platform.allocationToFail = 0;
    EventsOf([&] {
        TarnSolution direct;
        EXPECT_EQ(direct.Init(0), -1);
        EXPECT_EQ(direct.SetParam(PROP_AUX_RATIO, 1.0f), -1);
        EXPECT_EQ(Process(direct, tetra), -1);
        direct.Release();
    });
    EXPECT_TRUE(Untouched());
}

TEST_F(Front, AFrameTakesNoMemory) {
    solution->Init(0);
    platform.allocations = 0;
    ProcessEvents(*solution, tetra);
    EXPECT_EQ(platform.allocations, 0);
}

// Dump sizes that make no sense give an empty file, a directory that is missing one error line, and
// a disk that takes nothing is not the frame's affair.
TEST_F(Front, Dumps) {
    platform.property = std::string("2");
    solution->Init(5);  // no operation: the geometry is for the dumps alone
    platform.property.reset();
    const auto size = [&](int pitch, int height) {
        ProcessEvents(*solution, {16, pitch, height, 8, pitch, height});
        std::ifstream file(platform.dumps.back(), std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), reinterpret_cast<char*>(destination)));
        return bytes.size();
    };
    EXPECT_EQ(size(21, 8), 21u * 8u);
    const std::pair<int, int> senseless[] = {
        {0, 8}, {21, 0}, {-21, 8}, {-21, -8}, {65536, 65537}, {46341, 46341}, {65536, 32768}};
    for (const auto& [pitch, height] : senseless) EXPECT_EQ(size(pitch, height), 0u) << pitch;

    setenv("TZ", "XXX-2", 1);  // the zone may change between frames
    platform.disk = Platform::Disk::NoFolder;
    platform.property = std::string("1");
    const std::string events = ProcessEvents(*solution, tetra);
    const std::string path = "/data/vendor/camera/Tarn_srcTetraInput_20240201015959";
    EXPECT_NE(events.find("open " + path), std::string::npos) << events;
    EXPECT_NE(events.find("6 DumpImage: cannot open " + path), std::string::npos) << events;
    EXPECT_EQ(events.find("DumpImage ("), std::string::npos) << events;
    // Two lines of Process, two failed dumps, the timing line: no read of the property in between.
    std::string kinds;
    for (const std::string& event : platform.events) kinds += event[0];
    EXPECT_EQ(kinds, "g3g3ctco6tco6cg3");

    platform.property.reset();
    std::string fine;
    using enum Platform::Disk;
    for (const auto disk : {Fine, Full, NotClosing}) {
        platform.disk = disk;
        platform.clocksTaken = 0;
        const std::string same = ProcessEvents(*solution, {16, 4096, 1, 8, 4096, 1});
        if (disk == Fine) fine = same;
        EXPECT_EQ(same, fine);
    }
}

TEST_F(Front, TwoSolutionsDumpAtOnce) {
    platform.property = std::string("2");
    constexpr int kFrames = 20, kPitch = 2000;
    const auto work = [](uint8_t content) {
        const Solution own{TarnSolution_initialize()};
        std::vector<uint8_t> frame(2 * kPitch, content);
        Watch(true);
        own->Init(0);
        for (int i = 0; i < kFrames; ++i) {
            own->Process(frame.data(), frame.data(), {8, kPitch, 2, 8, kPitch, 0});
        }
        Watch(false);
    };
    std::thread other(work, 1);
    work(2);
    other.join();
    ASSERT_EQ(platform.dumps.size(), 4u * kFrames);
    for (const std::string& dump : platform.dumps) {
        std::ifstream file(dump, std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        const auto of = [&](char content) {
            return static_cast<size_t>(std::count(bytes.begin(), bytes.end(), content));
        };
        const bool whole = bytes.empty() || bytes.size() == 2 * kPitch;
        EXPECT_TRUE(whole && (of(1) == bytes.size() || of(2) == bytes.size())) << dump;
    }
}

TEST_F(Front, SourceDumpHoldsTheSource) {
    platform.property = std::string("3");
    solution->Init(0);
    ProcessEvents(*solution, tetra);
    std::ifstream file(platform.dumps.front(), std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    ASSERT_EQ(bytes.size(), 21u * 8u);
    EXPECT_EQ(std::memcmp(bytes.data(), source, bytes.size()), 0);
}

}  // namespace
}  // namespace tarn_test
