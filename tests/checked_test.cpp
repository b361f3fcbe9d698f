// The checked companion header says what the library does: the operation, the bytes, what is wrong.
#include "TarnChecked.h"

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <random>
#include <string>

#include "reference/operation.h"
#include "solution/dispatch.h"

namespace {

constexpr long long kPlenty = 1LL << 60;

struct Pair {
    TarnOperation checked;
    int outFormat;
    const char* reference;
};
constexpr Pair kPairs[] = {
    {TarnOperation::QCTetra10, 0, "QC_Tetra10"},
    {TarnOperation::QCTetra12, 0, "QC_Tetra12"},
    {TarnOperation::QCNona, 0, "QC_Nona10"},
    {TarnOperation::QCHexadeca, 0, "QC_Hexadeca10"},
    {TarnOperation::VXTetra10, 1, "VX_Tetra10"},
    {TarnOperation::VXTetra10, 10, "VX_Tetra10to12"},
    {TarnOperation::VXTetra12, 11, "VX_Tetra12to10"},
    {TarnOperation::VXTetra12, 10, "VX_Tetra12"},
    {TarnOperation::VXNona, 10, "VX_Nona10"},
    {TarnOperation::VXHexadeca, 0, "VX_Hexadeca10"},
    {TarnOperation::VXHexadeca, 10, "VX_Hexadeca10to12"},
    {TarnOperation::QCEVComp10, 0, "QC_EV10"},
    {TarnOperation::QCEVComp12, 0, "QC_EV12"},
    {TarnOperation::VXEVComp10, 0, "VX_EV10"},
    {TarnOperation::VXEVComp12, 0, "VX_EV12"},
    {TarnOperation::NEONTetra10, 0, "NEON_Tetra10"},
    {TarnOperation::NEONHexadeca, 0, "NEON_Hexadeca10"},
};

const tarn_reference::Operation& Rule(const std::string& name) {
    for (const tarn_reference::Operation& operation : tarn_reference::Operations()) {
        if (operation.name == name) return operation;
    }
    throw std::logic_error(name);
}

long long Bytes(const tarn_reference::Extent& extent) {
    return extent.rows < 1 || extent.bytes < 1 ? 0
                                               : (extent.rows - 1) * extent.pitch + extent.bytes;
}

// A geometry without objection, or nearly: missing pitches, tight, odd and generous ones.
BufferInfo RandomGeometry(std::mt19937& random, int cell) {
    const auto upTo = [&](unsigned most) { return static_cast<int>(random() % most); };
    const int width = 1 + upTo(300), height = 1 + upTo(9);
    const int pitches[] = {0, width * cell * 2 + upTo(40), 6000 + upTo(400)};
    BufferInfo info = {width * cell + upTo(cell),  pitches[upTo(3)],
                       height * cell + upTo(cell), width,
                       pitches[upTo(3)],           height};
    if (cell == 1) info.outStride = info.inStride;
    return info;
}

TEST(Checked, ChoosesWhatTheDispatcherChooses) {
    const int widths[] = {1, 8000, 11999, 12000, 15999, 16000, 20000};
    const int formats[] = {-5, 0, 1, 9, 10, 12, 19, 20};
    const int options[] = {-1, 0, 1, 2};
    for (const int option : options) {
        for (const int inWidth : widths) {
            for (const int outWidth : {inWidth, inWidth / 2}) {
                for (const int in : formats) {
                    for (const int out : formats) {
                        const BufferInfo info = {inWidth, 0, 2, outWidth, 0, 1};
                        EXPECT_EQ(static_cast<int>(
                                      TarnCheckProcess(option, in, out, info, 0, 0).operation),
                                  static_cast<int>(
                                      tarn::ChooseOperation(option, inWidth, outWidth, in, out)))
                            << option << ' ' << inWidth << ' ' << outWidth << ' ' << in << ' '
                            << out;
                    }
                }
            }
        }
    }
}

// A family has an operation for a cell and depths exactly where the reference has one.
TEST(Checked, FindsWhatTheEnginesHave) {
    using tarn_reference::Packing;
    const auto isVX = [](Packing p) { return p == Packing::VXRaw10 || p == Packing::VXRaw12; };
    const auto bits = [](Packing p) { return static_cast<int>(tarn_reference::BitsPerPixel(p)); };
    std::map<std::array<int, 4>, TarnOperation> operations;
    for (const Pair& pair : kPairs) {
        const tarn_reference::Operation& rule = Rule(pair.reference);
        if (rule.lineBytes != 0) continue;  // the NEON engine, of neither family
        operations[{isVX(rule.in), rule.cell, bits(rule.in), bits(rule.out)}] = pair.checked;
    }
    ASSERT_EQ(operations.size(), 15u);
    for (int i = 0; i < 4 * 6 * 3 * 3; ++i) {
        const int option = i % 4 - 1, cell = i / 4 % 6, in = 10 + i / 24 % 3, out = 10 + i / 72;
        const auto found = operations.find({option, cell, in, out});
        const BufferInfo info = {48, 60, 12, 12, 60, 3};
        const TarnCall call = TarnCheckEngine(option, cell, in, out, info, kPlenty, kPlenty);
        EXPECT_EQ(call.operation, found == operations.end() ? TarnOperation::None : found->second);
        EXPECT_EQ(
            call.operation == TarnOperation::None,
            call.problem == TarnProblem::NoOperation || call.problem == TarnProblem::UnknownOption)
            << call.sentence;
    }
}

TEST(Checked, NamesTheBytesThatAreTouched) {
    std::mt19937 random(20);
    int accepted = 0;
    for (const Pair& pair : kPairs) {
        const tarn_reference::Operation& rule = Rule(pair.reference);
        for (int i = 0; i < 2000; ++i) {
            const BufferInfo info = RandomGeometry(random, rule.cell);
            const TarnCall call =
                TarnCheckOperation(pair.checked, pair.outFormat, info, kPlenty, kPlenty);
            if (call.problem != TarnProblem::None) continue;
            ++accepted;
            const auto touched =
                tarn_reference::FootprintOf(rule, {info.inWidth, info.inStride, info.inHeight,
                                                   info.outWidth, info.outStride, info.outHeight});
            ASSERT_EQ(touched.result, 0) << call.name;
            ASSERT_EQ(call.srcBytes, Bytes(touched.read)) << call.name;
            ASSERT_EQ(call.dstBytes, Bytes(touched.written)) << call.name;

            const auto problem = [&](long long src, long long dst) {
                return TarnCheckOperation(pair.checked, pair.outFormat, info, src, dst).problem;
            };
            ASSERT_EQ(problem(call.srcBytes, call.dstBytes), TarnProblem::None);
            ASSERT_EQ(problem(call.srcBytes - 1, call.dstBytes), TarnProblem::SourceTooSmall);
            ASSERT_EQ(problem(call.srcBytes, call.dstBytes - 1), TarnProblem::DestinationTooSmall);
        }
    }
    EXPECT_GT(accepted, 5000);
}

TEST(Checked, SaysTheFirstThingWrong) {
    const struct {
        int option, in, out;
        BufferInfo info;
        TarnProblem problem;
        const char* words;
    } cases[] = {
        {2, 1, 0, {8, 10, 2, 4, 5, 1}, TarnProblem::UnknownOption, "0 is QC, 1 is VX"},
        {0, 1, 0, {8, 10, 2, 4, 5, 0}, TarnProblem::EmptyFrame, "start at 1"},
        {0, 12, 0, {8, 12, 2, 4, 5, 1}, TarnProblem::FormatMismatch, "reads 10 bits"},
        {1, 12, 12, {8, 12, 2, 4, 6, 1}, TarnProblem::FormatMismatch, "only 10 gives 12 bits"},
        {1, 0, 10, {12000, 15000, 3, 4000, 5000, 1}, TarnProblem::FormatMismatch, "writes 10 bits"},
        {0, 1, 0, {8, 10, 2, 5, 10, 1}, TarnProblem::WidthMismatch, "at most 4x1"},
        {0, 1, 0, {4000, 5000, 5000, 2000, 2560, 2500}, TarnProblem::PitchReplaced, "by 5040"},
        {0, 1, 0, {8000, 10000, 10000, 4000, 5040, 5000}, TarnProblem::None, ""},  // the same
        {0, 12, 12, {4000, 0, 2, 2000, 3000, 1}, TarnProblem::PitchTooShort, "takes 6000 bytes"},
        {1, 0, 0, {8, 9, 2, 4, 5, 1}, TarnProblem::PitchTooShort, "takes 10 bytes"},
        {1, 0, 0, {8, 10, 2, 8, 15, 2}, TarnProblem::PitchesDiffer, "uses 10 for both"},
        {0, 1, 0, {4000, 5056, 2, 4000, 5056, 2}, TarnProblem::PitchNotWholeGroups, "last 1 of"},
    };
    for (const auto& c : cases) {
        const TarnCall call = TarnCheckProcess(c.option, c.in, c.out, c.info, kPlenty, kPlenty);
        EXPECT_EQ(call.problem, c.problem) << call.sentence;
        EXPECT_EQ(call.sentence[0] == '\0', c.problem == TarnProblem::None);
        EXPECT_NE(std::string(call.sentence).find(c.words), std::string::npos) << call.sentence;
    }
    const TarnCall neon = TarnCheckOperation(TarnOperation::NEONTetra10, 0,
                                             {8200, 10250, 2, 4100, 5125, 1}, kPlenty, kPlenty);
    EXPECT_EQ(neon.problem, TarnProblem::WidthOverLine);
    const TarnCall deep = TarnCheckEngine(1, 3, 12, 12, {9, 24, 3, 3, 6, 1}, kPlenty, kPlenty);
    EXPECT_EQ(deep.problem, TarnProblem::NoOperation);
    EXPECT_STREQ(deep.sentence,
                 "12-bit frames can be binned 2x2 only; 3x3 binning exists for 10 bits");
    const TarnCall small =
        TarnCheckOperation(TarnOperation::VXTetra10, 0, {8, 10, 2, 4, 5, 1}, 19, 5);
    EXPECT_STREQ(small.sentence,
                 "the source holds 19 bytes; TarnVXEngine::Binning_10bit_Tetra reads 20");
}

}  // namespace
