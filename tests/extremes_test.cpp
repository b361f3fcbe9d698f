// Pitches, and the edges that random frames do not reach: sizes past 2 GiB, frames of nothing,
// small stacks.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/mman.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <ctime>
#include <stdexcept>

#include "TarnChecked.h"
#include "engines/TarnQCEngine.h"
#include "engines/TarnQCNEONEngine.h"
#include "engines/TarnVXEngine.h"
#include "engines/ev_frame.h"
#include "tests/support/operations.h"

namespace tarn_test {
namespace {

using tarn_reference::Geometry;
using Bytes = std::vector<uint8_t>;

TEST(Pitches, SinglePrecisionAndNegativeWidths) {
    const int known[][3] = {// width, QC, VX
                            {0, 0, 0},
                            {1, 80, 40},
                            {33, 80, 80},
                            {64, 80, 80},
                            {65, 160, 120},
                            {4000, 5040, 5000},
                            {4001, 5040, 5040},
                            {9248, 11600, 11560},
                            {-1, 0, 0},
                            {-128, -160, -160},
                            {16777217, 20971520, 20971520}};
    for (const auto& [width, qc, vx] : known) {
        EXPECT_EQ(TarnQCEngine().CalcStride(width), qc);
        EXPECT_EQ(TarnQCNEONEngine().CalcStride(width), qc);
        EXPECT_EQ(TarnVXEngine().CalcStride(width), vx);
    }
    for (const int width : {INT_MIN, -65, -33, 16777279, 16777281, 33554433, INT_MAX}) {
        EXPECT_EQ(TarnQCEngine().CalcStride(width), tarn_reference::Pitch(width, 64)) << width;
        EXPECT_EQ(tarn_checked::FilledPitch(width), tarn_reference::Pitch(width, 64)) << width;
        EXPECT_EQ(TarnVXEngine().CalcStride(width), tarn_reference::Pitch(width, 32)) << width;
    }
}

TEST(Pitches, OnlyMissingOnesAreReplaced) {
    const int cases[][6] = {// given in and out, QC's, VX's; of 4000 x 3000 and 2000 x 1500
                            {0, 2000, 5040, 2560, 5000, 2520},
                            {5000, 1500, 5000, 2560, 5000, 2520},
                            {4000, 0, 5040, 2560, 5000, 2520},
                            {3000, 1, 5040, 1, 5000, 1}};
    for (const auto& [in, out, qcIn, qcOut, vxIn, vxOut] : cases) {
        const BufferInfo given{4000, in, 3000, 2000, out, 1500};
        BufferInfo qc = given, neon = given, vx = given;
        EXPECT_EQ(TarnQCEngine().CheckStride(&qc), 0);
        EXPECT_EQ(TarnQCNEONEngine().CheckStride(&neon), 0);
        EXPECT_EQ(TarnVXEngine().CheckStride(&vx), 0);
        const BufferInfo qcWanted{4000, qcIn, 3000, 2000, qcOut, 1500};
        const BufferInfo vxWanted{4000, vxIn, 3000, 2000, vxOut, 1500};
        EXPECT_EQ(std::memcmp(&qc, &qcWanted, sizeof qc), 0);
        EXPECT_EQ(std::memcmp(&neon, &qcWanted, sizeof qc), 0);
        EXPECT_EQ(std::memcmp(&vx, &vxWanted, sizeof vx), 0);
    }
}

// Rows further apart than 31 bits can say: only the rows' own pages exist.
uint8_t* FarRows(int rows, ptrdiff_t pitch) {
    constexpr int kFlags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE;
    void* all = mmap(nullptr, static_cast<size_t>(rows * pitch), PROT_NONE, kFlags, -1, 0);
    if (all == MAP_FAILED) throw std::runtime_error("mmap");
    auto* first = static_cast<uint8_t*>(all);
    for (int y = 0; y < rows; ++y) mprotect(first + y * pitch, 8192, PROT_READ | PROT_WRITE);
    return first;
}

TEST(Extremes, OffsetsPastTwoGigabytes) {
    constexpr ptrdiff_t kPitch = 1 << 30;
    uint8_t* source = FarRows(12, kPitch);
    uint8_t* destination = FarRows(3, kPitch);
    for (const TestedOperation& operation : SelectedOperations()) {
        if (operation.IsEv()) continue;
        const int cell = operation.rule->cell;
        for (int y = 0; y < 3 * cell; ++y) std::memset(source + y * kPitch, 64 + y, 100);
        const Geometry geometry{-1, 1 << 30, -1, 5, 1 << 30, 3};
        RunFrame({"engine", nullptr}, operation, source, destination, geometry, 1.37f);
        for (int y = 0; y < 3; ++y) {
            const ptrdiff_t at = y * kPitch;
            Bytes expected(8192);
            Geometry row = geometry;
            row.outHeight = 1;
            tarn_reference::Run(*operation.rule, source + at * cell, expected.data(), row, 1.37f);
            EXPECT_EQ(std::memcmp(destination + at, expected.data(), 5120), 0)
                << operation.rule->name << " row " << y;
            std::memset(destination + at, 0, 8192);
        }
    }

    // A compensated row is as long as its pitch: here the rows are only asked for, not walked.
    static std::vector<const uint8_t*> rows;
    tarn::RowKernels recording{};
    recording.ev[0] = [](const uint8_t* src, uint8_t*, ptrdiff_t, const tarn::EvRule&) {
        rows.push_back(src);
    };
    uint8_t* first = source;
    tarn::EvFrame(tarn::Layout::QCRaw10, recording, first, first, 4, INT_MAX, 1.0f);
    const ptrdiff_t pitch = INT_MAX;
    EXPECT_EQ(rows, (std::vector<const uint8_t*>{first, first + pitch, first + 2 * pitch,
                                                 first + 3 * pitch}));
}

TEST(Extremes, NothingToDoReturnsAtOnce) {
    const std::clock_t start = std::clock();  // of this process, whatever else the machine does
    for (const TestedOperation& operation : SelectedOperations()) {
        if (operation.rule->lineBytes > 0) continue;  // delivers its empty lines
        for (const int none : {0, -1, INT_MIN}) {
            const Geometry noWidth{8,    operation.IsEv() ? 2 : 40, INT_MAX,
                                   none, operation.IsEv() ? 2 : 40, INT_MAX};
            const Geometry noHeight{8, 40, none, 8, 40, none};
            const Geometry noPitch{8, none, INT_MAX, 9, none, operation.IsEv() ? INT_MAX : 0};
            for (const Geometry& geometry : {noWidth, noHeight, noPitch}) {
                EXPECT_EQ(
                    RunFrame({"engine", nullptr}, operation, nullptr, nullptr, geometry, 2.0f), 0);
            }
        }
    }
    EXPECT_LT(std::clock() - start, CLOCKS_PER_SEC);
}

// Runs `work` on a painted stack of its own; returns how deep the paint was scratched.
template <class Work>
size_t StackUsed(Work work) {
    constexpr size_t kBytes = 1 << 18;
    std::vector<uint8_t> stack(kBytes + 4096, 0x5A);
    uint8_t* base = stack.data() + (4096 - reinterpret_cast<uintptr_t>(stack.data()) % 4096);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, base, kBytes);
    pthread_t thread{};
    const auto start = [](void* argument) -> void* {
        (*static_cast<Work*>(argument))();
        return nullptr;
    };
    EXPECT_EQ(pthread_create(&thread, &attributes, start, &work), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    return static_cast<size_t>(
        base + kBytes - std::find_if(base, base + kBytes, [](uint8_t b) { return b != 0x5A; }));
}

TEST(Extremes, SmallStacks) {
#if defined(__SANITIZE_ADDRESS__) || TARN_SANITIZED
    GTEST_SKIP() << "SKIPPED: sanitizers enlarge stack frames";
#endif
    Bytes source(1 << 17), destination(1 << 16);
    StackUsed([] {});  // the first thread also pays for what is set up once
    const size_t thread = StackUsed([] {});
    for (const TestedOperation& operation : SelectedOperations()) {
        const auto run = [&] {
            operation.engine(source.data(), destination.data(), {8000, 12000, 2, 333, 6000, 2},
                             {1.0f, 2.0f});
        };
        run();
        EXPECT_LE(StackUsed(run), thread + (16u << 10)) << operation.rule->name;
    }
    for (const int option : {0, 1}) {
        TarnSolution solution;
        solution.Init(option);
        const auto run = [&] {
            solution.Process(source.data(), destination.data(), {16000, 12000, 2, 333, 6000, 2});
        };
        EXPECT_LE(StackUsed(run), thread + (32u << 10));
    }
}

}  // namespace
}  // namespace tarn_test
