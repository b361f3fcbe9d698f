// What a layout would leave to be written of a file, window by window: a layout's type is enough.
#ifndef TARN_FRAMES_LAYOUT_COST_H_
#define TARN_FRAMES_LAYOUT_COST_H_

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <vector>

#include "frames/bytes.h"

namespace tarn::frames {

// About the bits that a difference takes.
inline double Bits(int a, int b) {
    static const auto kTable = [] {
        std::array<float, 4096> bits{};
        for (size_t i = 0; i < bits.size(); ++i) bits[i] = std::log2(float(i) + 1);
        return bits;
    }();
    return double(kTable[static_cast<size_t>(std::abs(a - b))]);
}

class Mean {
 public:
    void Add(double value) {
        sum_ += value;
        ++count_;
    }
    double Value() const { return count_ > 0 ? sum_ / double(count_) : 0; }
    bool Empty() const { return count_ == 0; }

 private:
    double sum_ = 0;
    int64_t count_ = 0;
};

// Positions spread evenly over a file, the same ones every time; each of them once, if they are
// fewer than `count`.
std::vector<int64_t> Positions(int count, int64_t least, int64_t most);

// Nothing can be told by a window of equal bytes.
inline bool IsFlat(const uint8_t* window, int64_t bytes) {
    return std::all_of(window, window + bytes, [&](uint8_t byte) { return byte == *window; });
}

template <class L, size_t N>
std::array<uint16_t, N> UnpackRun(const uint8_t* bytes) {
    static_assert(N % L::kGroupPixels == 0);
    std::array<uint16_t, N> run;
    for (size_t i = 0; i < N; i += L::kGroupPixels, bytes += L::kGroupBytes) {
        L::Unpack(bytes, run.data() + i);
    }
    return run;
}

template <class L>
inline constexpr size_t kWindowPixels = size_t{64} / L::kGroupPixels* L::kGroupPixels;

// One group more than the pixels need: room for every position of the groups.
template <class L>
inline constexpr int64_t kWindowBytes =
    (int64_t{kWindowPixels<L>} / L::kGroupPixels + 1) * L::kGroupBytes;

// The cost of a window at the best one of its groups' possible positions.
template <class L>
double WindowCost(const uint8_t* window, size_t distance) {
    double best = std::numeric_limits<double>::infinity();
    for (int position = 0; position < L::kGroupBytes; ++position) {
        const auto run = UnpackRun<L, kWindowPixels<L>>(window + position);
        Mean cost;
        for (size_t x = distance; x < run.size(); ++x) cost.Add(Bits(run[x], run[x - distance]));
        best = std::min(best, cost.Value());
    }
    return best;
}

// Bits per pixel, as a share of the layout's bits, at the best distance of one to three. 1 when the
// bytes are too few, or all alike.
template <class L>
double LayoutCost(const Bytes& bytes) {
    constexpr int kWindows = 600;
    Mean cost[3];
    const auto last = static_cast<int64_t>(bytes.size()) - kWindowBytes<L>;
    for (const int64_t at : Positions(kWindows, 0, last)) {
        const uint8_t* window = bytes.data() + at;
        if (IsFlat(window, kWindowBytes<L>)) continue;
        for (size_t i = 0; i < 3; ++i) cost[i].Add(WindowCost<L>(window, i + 1));
    }
    if (cost[0].Empty()) return 1;
    return std::min({cost[0].Value(), cost[1].Value(), cost[2].Value()}) / L::kBits;
}

}  // namespace tarn::frames

#endif  // TARN_FRAMES_LAYOUT_COST_H_
