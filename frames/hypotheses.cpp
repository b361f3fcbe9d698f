#include "frames/hypotheses.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>

#include "frames/picture.h"

namespace tarn::frames {
namespace {

// Costs are shares of a layout's bits, so that layouts compare.
constexpr double kLayoutSlack = 0.06;   // layouts this near to the best are tried too
constexpr double kNotWholeRows = 0.03;  // added when the file is no whole number of rows
constexpr double kRareShape = 0.01;     // added when one side is more than twice the other
constexpr double kNoContrast = 0.03;    // added when a step into another colour costs no more
constexpr double kLongestShape = 4;     // one side over the other, at most
constexpr size_t kFinalists = 64;       // pitches measured in full

struct Range {
    int64_t least;
    int64_t most;
};

// Pitches at which the frame's sides differ by no more than they ever do.
Range PitchRange(Layout layout, int64_t bytes) {
    const GroupShape& shape = Shape(layout);
    const double squared = double(bytes) * shape.bytes / shape.pixels;
    const auto pitch = [&](double aspect) { return int64_t(std::sqrt(squared * aspect)); };
    return {std::max<int64_t>(pitch(1 / kLongestShape), int64_t{4} * shape.bytes),
            std::min<int64_t>(pitch(kLongestShape), bytes / 6)};
}

std::vector<int64_t> Candidates(const Bytes& bytes, Layout layout, const Known& known) {
    const int64_t size = static_cast<int64_t>(bytes.size());
    if (known.pitch) return {*known.pitch};
    if (known.height && size % *known.height == 0) return {size / *known.height};
    const Range range = PitchRange(layout, size);
    if (range.most < range.least) return {};
    std::vector<double> costs = PitchCosts(bytes, layout, range.least, range.most);
    for (size_t i = 0; i < costs.size(); ++i) {
        if (size % (range.least + int64_t(i)) != 0) {
            costs[i] += kNotWholeRows * Shape(layout).bits;
        }
    }
    std::vector<int64_t> pitches(costs.size());
    std::iota(pitches.begin(), pitches.end(), range.least);
    const auto end = pitches.begin() + int64_t(std::min(kFinalists, pitches.size()));
    std::partial_sort(pitches.begin(), end, pitches.end(), [&](int64_t a, int64_t b) {
        return costs[size_t(a - range.least)] < costs[size_t(b - range.least)];
    });
    pitches.erase(end, pitches.end());
    return pitches;
}

// The row's pixels: up to the last one that is not the same in all rows.
int WidthOf(const Bytes& bytes, Layout layout, int64_t pitch) {
    constexpr int64_t kRows = 64;
    const GroupShape& shape = Shape(layout);
    const int64_t rows = static_cast<int64_t>(bytes.size()) / pitch;
    const int64_t step = std::max<int64_t>(1, rows / kRows);
    const auto isConstant = [&](int64_t x) {
        const PackedFrame group{layout, shape.pixels, 1, shape.bytes};
        const uint8_t* at = bytes.data() + x / shape.pixels * shape.bytes;
        const size_t pixel = size_t(x % shape.pixels);
        const uint16_t first = Unpack(group, at)[pixel];
        for (int64_t y = step; y < rows; y += step) {
            if (Unpack(group, at + y * pitch)[pixel] != first) return false;
        }
        return true;
    };
    int64_t width = pitch / shape.bytes * shape.pixels;
    while (width > 1 && isConstant(width - 1)) --width;
    return static_cast<int>(width);
}

PackedFrame FrameOf(const Bytes& bytes, Layout layout, int64_t pitch, const Known& known) {
    const int64_t size = static_cast<int64_t>(bytes.size());
    PackedFrame frame{layout, 0, 0, pitch};
    frame.width = known.width ? *known.width : WidthOf(bytes, layout, pitch);
    const int64_t rest = size % pitch;
    const bool lastRowCut = rest > 0 && rest >= frame.RowBytes();
    frame.height = known.height ? *known.height : static_cast<int>(size / pitch + lastRowCut);
    return frame;
}

void AddHypotheses(const Bytes& bytes, Layout layout, int64_t pitch, const Known& known,
                   std::vector<Hypothesis>* hypotheses) {
    const int64_t size = static_cast<int64_t>(bytes.size());
    const int bits = Shape(layout).bits;
    if (pitch < Shape(layout).bytes || pitch > size) return;
    const PackedFrame frame = FrameOf(bytes, layout, pitch, known);
    if (frame.RowBytes() > pitch || frame.height < 1 || frame.LeastBytes() > size) return;
    const CellCosts costs = MeasureCells(bytes, layout, pitch);
    const double sides = double(frame.width) / frame.height;
    double added = std::max(sides, 1 / sides) > 2.1 ? kRareShape : 0;
    if (size % pitch != 0) added += kNotWholeRows;
    for (int cell = 1; cell <= (bits == 12 ? 2 : 4); ++cell) {
        if (known.cell && *known.cell != cell) continue;
        hypotheses->push_back(
            {frame, cell,
             costs.of[cell] / bits + added + (costs.contrast[cell] > 0 ? 0 : kNoContrast)});
    }
}

}  // namespace

std::vector<Hypothesis> Ranked(const Bytes& bytes, const LayoutShares& costs, const Known& known) {
    const double best = *std::min_element(costs.begin(), costs.end());
    std::vector<Hypothesis> ranked;
    for (int i = 0; i < kLayoutCount; ++i) {
        const auto layout = static_cast<Layout>(i);
        if (known.layout ? layout != *known.layout : costs[size_t(i)] > best + kLayoutSlack) {
            continue;
        }
        for (const int64_t pitch : Candidates(bytes, layout, known)) {
            AddHypotheses(bytes, layout, pitch, known, &ranked);
        }
    }
    std::sort(ranked.begin(), ranked.end(), [](const Hypothesis& a, const Hypothesis& b) {
        return std::tie(a.cost, a.frame.pitch, a.cell) < std::tie(b.cost, b.frame.pitch, b.cell);
    });
    return ranked;
}

}  // namespace tarn::frames
