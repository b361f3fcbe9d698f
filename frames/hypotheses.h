// What the bytes of a dump may be, and how well each of it explains them.
#ifndef TARN_FRAMES_HYPOTHESES_H_
#define TARN_FRAMES_HYPOTHESES_H_

#include <optional>
#include <vector>

#include "frames/bytes.h"
#include "frames/likeness.h"
#include "frames/packed_frame.h"

namespace tarn::frames {

// What is known beforehand.
struct Known {
    std::optional<Layout> layout;
    std::optional<int64_t> pitch;
    std::optional<int> width;
    std::optional<int> height;
    std::optional<int> cell;
};

struct Hypothesis {
    PackedFrame frame;
    int cell;
    double cost;  // bits per pixel, a little added for what is rarely seen
};

// The frames of a usual shape that these may be and that agree with what is known, the likeliest
// first; `costs` tells which layouts are worth trying.
std::vector<Hypothesis> Ranked(const Bytes& bytes, const LayoutShares& costs, const Known& known);

}  // namespace tarn::frames

#endif  // TARN_FRAMES_HYPOTHESES_H_
