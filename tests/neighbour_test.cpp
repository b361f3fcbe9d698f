// Bytes beside a row belong to somebody else, who writes them while the row is read or made: under
// the thread sanitizer any touch of them is a race, and one that puts back what it found too.
#include <gtest/gtest.h>

#include <thread>

#include "tests/support/operations.h"

namespace tarn_test {
namespace {

using tarn_reference::Extent;
using tarn_reference::Footprint;
using tarn_reference::Geometry;

constexpr int kRows = 2;
constexpr int kGap = 40;  // between rows, and before the first and after the last

// Rows of exactly the bytes an operation may touch, with gaps between.
class Frame {
 public:
    explicit Frame(const Extent& extent)
        : extent_(extent), bytes_(static_cast<size_t>(extent.rows * extent.pitch + 2 * kGap)) {}
    uint8_t* Row(int64_t y) { return bytes_.data() + kGap + y * extent_.pitch; }

    // What the neighbours do.
    void WriteGaps() {
        uint8_t* byte = Row(0) - kGap;
        for (int64_t y = 0; y < extent_.rows; ++y, byte = Row(y - 1) + extent_.bytes) {
            while (byte < Row(y)) *byte++ = 7;
        }
        while (byte < bytes_.data() + bytes_.size()) *byte++ = 7;
    }

 private:
    Extent extent_;
    std::vector<uint8_t> bytes_;
};

Geometry GeometryFor(const TestedOperation& operation, int width) {
    const tarn_reference::Operation& rule = *operation.rule;
    Geometry geometry{-1, 1 << 20, kRows, width, 1 << 20, kRows};
    if (operation.IsEv()) {
        geometry.inStride = geometry.outStride = width;  // the rows' bytes follow from the pitch
        return geometry;
    }
    const Footprint footprint = FootprintOf(rule, geometry);
    geometry.inStride = static_cast<int>(footprint.read.bytes) + kGap;
    geometry.outStride = static_cast<int>(footprint.written.bytes) + kGap;
    return geometry;
}

void RunBesideNeighbours(const Runner& runner, const TestedOperation& operation, int width,
                         float gain) {
    const Geometry geometry = GeometryFor(operation, width);
    const Footprint footprint = FootprintOf(*operation.rule, geometry);
    Frame source(footprint.read), destination(footprint.written);
    std::thread neighbours([&] {
        source.WriteGaps();
        destination.WriteGaps();
    });
    EXPECT_EQ(RunFrame(runner, operation, source.Row(0), destination.Row(0), geometry, gain), 0);
    neighbours.join();
}

TEST(Neighbours, ShareNoByteWithAFrame) {
    for (const TestedOperation& operation : SelectedOperations()) {
        for (const Runner& runner : SelectedRunners()) {
            if (!Serves(runner, operation)) continue;
            for (const float gain : {1.0f, 1.37f}) {
                for (int width = 1; width <= 150; width += width < 72 ? 1 : 7) {
                    RunBesideNeighbours(runner, operation, width, gain);
                }
            }
        }
    }
}

}  // namespace
}  // namespace tarn_test
