// Figures that are known by hand, and the operations on plain values, depths that make no sense
// included.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <numeric>

#include "engines/TarnQCEngine.h"
#include "engines/TarnQCNEONEngine.h"
#include "engines/TarnVXEngine.h"
#include "engines/ev_frame.h"
#include "tests/support/guarded_frame.h"
#include "tests/support/operations.h"

namespace tarn_test {
namespace {

using tarn_reference::Geometry;
using tarn_reference::Packing;
using Bytes = std::vector<uint8_t>;
using Pixels = std::vector<unsigned>;

const Pixels kRamp = {100, 101, 102, 103, 104, 105, 106, 107,
                      108, 109, 110, 111, 112, 113, 114, 115};
const Pixels kThirds = {0, 1, 1, 1, 0, 1, 1, 1, 0, 1, 1, 1, 1, 2, 2, 2};

struct Figure {
    const char* operation;
    float gain;
    Pixels cell;  // row by row
    unsigned result;
};
const Figure kFigures[] = {
    {"QC_Tetra10", 0.5f, {100, 101, 102, 104}, 101},
    {"QC_Tetra10", 1.5f, {100, 101, 102, 104}, 120},
    {"QC_Tetra10", 2.0f, {50, 50, 50, 50}, 64},
    {"QC_Tetra12", 1.25f, {1000, 1001, 1002, 1003}, 1187},
    {"VX_Tetra10to12", 1.0f, {100, 101, 102, 104}, 407},
    {"VX_Tetra10to12", 1.5f, {100, 101, 102, 104}, 482},
    {"VX_Tetra12", 1.25f, {1000, 1001, 1002, 1003}, 1187},
    {"VX_Tetra12to10", 1.0f, {1000, 1001, 1002, 1003}, 250},
    {"VX_Tetra12to10", 1.25f, {1000, 1001, 1002, 1003}, 296},
    {"QC_Nona10", 1.0f, {60, 70, 80, 90, 100, 110, 64, 64, 64}, 78},
    {"VX_Nona10", 1.5f, {60, 70, 80, 90, 100, 110, 64, 64, 64}, 85},
    {"QC_Hexadeca10", 1.5f, kRamp, 128},
    {"QC_Hexadeca10", 1.0f, kThirds, 0},
    {"VX_Hexadeca10", 1.5f, kRamp, 129},
    {"VX_Hexadeca10", 1.0f, kThirds, 1},
    {"VX_Hexadeca10to12", 1.0f, kRamp, 430},
    {"VX_Hexadeca10to12", 1.5f, kRamp, 517},
    {"NEON_Tetra10", 1.5f, {100, 101, 102, 104}, 101},
    {"NEON_Hexadeca10", 2.0f, kThirds, 0},
    {"QC_EV10", 1.5f, {65}, 65},
    {"QC_EV10", -1.0f, {0}, 128},
    {"VX_EV12", 0.5f, {4095}, 2175},
};

// The library and the reference, each by itself.
TEST(Figures, CellsByHand) {
    for (const Figure& figure : kFigures) {
        const auto operations = SelectedOperations();
        const auto operation = std::find_if(operations.begin(), operations.end(), [&](auto& o) {
            return o.rule->name == std::string(figure.operation);
        });
        if (operation == operations.end()) {
            EXPECT_TRUE(std::getenv("TARN_TEST_OPERATION")) << "no " << figure.operation;
            continue;
        }
        const tarn_reference::Operation& rule = *operation->rule;
        const int pitch = rule.cell == 1 ? 15 : 64;
        Bytes source(1024), ours(6000), reference(6000);
        for (size_t i = 0; i < figure.cell.size(); ++i) {
            const size_t cell = static_cast<size_t>(rule.cell);
            WritePixel(rule.in, source.data() + i / cell * 64, i % cell, figure.cell[i]);
        }
        const Geometry geometry{-1, pitch, 1, 1, rule.lineBytes > 0 ? 5120 : pitch, 1};
        RunFrame({"engine", nullptr}, *operation, source.data(), ours.data(), geometry,
                 figure.gain);
        tarn_reference::Run(rule, source.data(), reference.data(), geometry, figure.gain);
        EXPECT_EQ(ReadPixel(rule.out, ours.data(), 0), figure.result) << figure.operation;
        EXPECT_EQ(ReadPixel(rule.out, reference.data(), 0), figure.result) << figure.operation;
    }
}

TEST(Levels, TheHighestSupportedRuns) {
    const tarn::RowKernels* best = nullptr;
    for (const tarn::Level& level : tarn::Levels()) {
        if (level.supported()) best = level.kernels;
    }
    EXPECT_EQ(&tarn::BestKernels(), best);
}

constexpr Packing kPackings[] = {Packing::QCRaw10, Packing::QCRaw12, Packing::VXRaw10,
                                 Packing::VXRaw12};

TEST(Figures, GroupsByHand) {
    const struct {
        Packing packing;
        std::vector<uint16_t> pixels;
        Bytes bytes;
    } groups[] = {{Packing::QCRaw10, {1023, 0, 341, 682}, {0xFF, 0x00, 0x55, 0xAA, 0x93}},
                  {Packing::VXRaw10, {1023, 0, 341, 682}, {0xFF, 0x03, 0x50, 0x95, 0xAA}},
                  {Packing::QCRaw12, {0xABC, 0x123}, {0xAB, 0x12, 0x3C}},
                  {Packing::VXRaw12, {0xABC, 0x123}, {0xBC, 0x3A, 0x12}}};
    for (const auto& group : groups) {
        auto pixels = group.pixels;
        const auto count = static_cast<int>(pixels.size());
        const auto bits = static_cast<int>(BitsPerPixel(group.packing));
        Bytes bytes(group.bytes.size());
        EXPECT_EQ(PackByEngine(group.packing, pixels.data(), bytes.data(), count, bits), 0);
        EXPECT_EQ(bytes, group.bytes);
        for (size_t k = 0; k < pixels.size(); ++k) {
            EXPECT_EQ(ReadPixel(group.packing, group.bytes.data(), k), pixels[k]);
        }
    }
}

constexpr int kSenselessDepths[] = {INT_MIN, -1, 0, 3, 9, 17, 31, 64, INT_MAX};

// Pack, and compensate, `count` values between protected pages.
class Values : public testing::Test {
 protected:
    uint16_t* Place(size_t count) {
        auto* values =
            values_.Place({1, static_cast<int64_t>(2 * count), 0}, GuardedFrame::Edge::End);
        auto* own = reinterpret_cast<uint16_t*>(values_.Own(values));
        for (size_t i = 0; i < count; ++i) own[i] = static_cast<uint16_t>(40503u * (i + 1 + count));
        return reinterpret_cast<uint16_t*>(values);
    }

    GuardedFrame values_{GuardedFrame::Access::Writable, 1, 1 << 18};
    GuardedFrame packed_{GuardedFrame::Access::Writable, 1, 1 << 18};
};

TEST_F(Values, PackersKeepTheTopBitsInWholeGroups) {
    for (const Packing packing : kPackings) {
        const auto bits = static_cast<int>(BitsPerPixel(packing));
        const int group = GroupPixels(packing);
        for (int count = -1; count < 300; count += count < 140 ? 1 : 13) {
            const int depth = bits + std::max(count, 0) % (17 - bits);
            const int groups = count < 1 ? 0 : (count + group - 1) / group;
            uint16_t* values = Place(static_cast<size_t>(groups * group));
            Bytes expected(static_cast<size_t>(groups * GroupBytes(packing)));
            for (int x = 0; x < groups * group; ++x) {
                values[x] = static_cast<uint16_t>(values[x] >> (16 - depth));
                WritePixel(packing, expected.data(), static_cast<size_t>(x),
                           static_cast<unsigned>(values[x] >> (depth - bits)));
            }
            const auto check = [&](const char* who, auto pack) {
                uint8_t* bytes =
                    packed_.Place({1, static_cast<int64_t>(expected.size()), 0},
                                  count % 2 ? GuardedFrame::Edge::End : GuardedFrame::Edge::Begin);
                pack(bytes);
                EXPECT_EQ(packed_.Difference(expected), "") << who << count << " at " << depth;
                packed_.Clear();
            };
            check("engine", [&](uint8_t* bytes) {
                EXPECT_EQ(PackByEngine(packing, values, bytes, count, depth), 0);
            });
            for (const Runner& runner : SelectedRunners()) {
                if (!runner.kernels || groups == 0) continue;
                check(runner.name.c_str(), [&](uint8_t* bytes) {
                    const auto layout = static_cast<tarn::Layout>(packing);
                    runner.kernels->Pack(layout)(values, bytes, groups, depth - bits);
                });
            }
            for (const int senseless : kSenselessDepths) {
                const auto bytes = static_cast<int64_t>(expected.size());
                uint8_t* anything = packed_.Place({1, bytes, 0}, GuardedFrame::Edge::End);
                PackByEngine(packing, values, anything, count, senseless);  // must not crash
                packed_.Clear();
            }
        }
    }
}

void Compensate(const Runner& runner, uint16_t* values, int count, int depth, float gain) {
    if (runner.kernels) {
        runner.kernels->EvValues()(values, count, tarn::EvRuleOfDepth(depth, gain));
    } else {
        EXPECT_EQ(TarnQCEngine().EVComp(values, count, depth, gain), 0);
        EXPECT_EQ(TarnVXEngine().EVComp(values, 0, depth, gain), 0);
    }
}
uint16_t Compensated(unsigned value, int depth, float gain) {
    const int pedestal = 1 << (depth - 4), maximum = (1 << depth) - 1;
    return static_cast<uint16_t>(tarn_reference::Compensate(value, pedestal, maximum, gain));
}

TEST_F(Values, CompensationIsFusedForEveryValueDepthAndGain) {
    std::vector<uint16_t> all(65536), expected(65536);
    std::iota(all.begin(), all.end(), uint16_t{0});
    const std::vector<float> gains = ManyGains();
    std::printf("%zu gains x %zu levels\n", gains.size(), SelectedRunners().size());
    for (const float gain : gains) {
        for (int depth = 10; depth <= 16; ++depth) {
            for (const uint16_t v : all) expected[v] = Compensated(v, depth, gain);
            for (const Runner& runner : SelectedRunners()) {
                auto made = all;
                Compensate(runner, made.data(), 65536, depth, gain);
                ASSERT_EQ(made, expected) << runner.name << " depth " << depth << " gain " << gain;
            }
        }
    }
}

TEST_F(Values, CompensationStaysWithinItsValues) {
    for (int count = -1; count < 150; ++count) {
        const auto valid = static_cast<size_t>(std::max(count, 0));
        uint16_t* values = Place(valid);
        const Bytes before = values_.Content();
        for (size_t i = 0; i < valid; ++i) values[i] = Compensated(values[i], 12, 1.37f);
        const Bytes after = values_.Content();
        for (const Runner& runner : SelectedRunners()) {
            values_.SetContent(before);
            Compensate(runner, values, count, 12, 1.37f);
            EXPECT_EQ(values_.Difference(after), "") << runner.name << " count " << count;
        }
        for (const int senseless : kSenselessDepths) {
            TarnQCEngine().EVComp(values, count, senseless, 1e30f);  // must not crash
        }
    }
}

TEST_F(Values, MemcpyTakesItsSourceFirst) {
    for (const int size : {INT_MIN, -5, 0, 1, 10, 15, 16, 37, 5120}) {
        const auto bytes = static_cast<size_t>(std::max(size, 0));
        uint16_t* source = Place((bytes + 1) / 2);
        const Bytes expected(reinterpret_cast<uint8_t*>(source),
                             reinterpret_cast<uint8_t*>(source) + bytes);
        uint8_t* to = packed_.Place({1, static_cast<int64_t>(bytes), 0}, GuardedFrame::Edge::End);
        TarnQCNEONEngine().neon_Memcpy(source, to, size);
        EXPECT_EQ(packed_.Difference(expected), "") << size;
        packed_.Clear();
    }
}

}  // namespace
}  // namespace tarn_test
