#include "frames/likeness.h"

#include <algorithm>
#include <vector>

#include "frames/layout_cost.h"

namespace tarn::frames {
namespace {

constexpr int kMostGroupPixels = 4;
// Every cell's borders lie at the same places every so many pixels.
constexpr int kPhases = 12;
constexpr int kReach = 5;  // the nearest neighbour of one's own colour, across a 4x4 cell

template <class L>
struct Measure {
    using Group = std::array<uint16_t, kMostGroupPixels>;
    static constexpr int kPixels = L::kGroupPixels;
    static constexpr int kBytes = L::kGroupBytes;

    static Group At(const uint8_t* bytes) {
        Group group{};
        L::Unpack(bytes, group.data());
        return group;
    }

    // Position by position and not pitch by pitch, to read the file in order.
    static std::vector<double> PitchCosts(const Bytes& bytes, int64_t least, int64_t most) {
        constexpr int kPositions = 700;
        const size_t pitches = static_cast<size_t>(most - least + 1);
        std::vector<Mean> one(pitches), two(pitches);
        const auto last = static_cast<int64_t>(bytes.size()) - kBytes;
        for (const int64_t at : Positions(kPositions, 2 * most + kBytes, last)) {
            for (int64_t pitch = least; pitch <= most; ++pitch) {
                const uint8_t* here = bytes.data() + at - at % pitch % kBytes;
                const Group mine = At(here), above = At(here - pitch), next = At(here - 2 * pitch);
                for (int k = 0; k < kPixels; ++k) {
                    one[size_t(pitch - least)].Add(Bits(mine[k], above[k]));
                    two[size_t(pitch - least)].Add(Bits(mine[k], next[k]));
                }
            }
        }
        std::vector<double> costs(pitches);
        for (size_t i = 0; i < pitches; ++i) costs[i] = std::min(one[i].Value(), two[i].Value());
        return costs;
    }

    // Cost by place in the pattern and by distance.
    using Profile = std::array<std::array<Mean, kReach + 1>, kPhases>;

    static void AddColumn(const uint8_t* here, int64_t pitch, int64_t y, Profile* columns) {
        const Group mine = At(here);
        for (int distance = 1; distance <= kReach; ++distance) {
            const Group above = At(here - distance * pitch);
            for (int k = 0; k < kPixels; ++k) {
                (*columns)[size_t(y % kPhases)][size_t(distance)].Add(Bits(mine[k], above[k]));
            }
        }
    }

    static void AddRow(const uint8_t* here, int64_t x, Profile* rows) {
        constexpr size_t kRun = 16;
        const auto run = UnpackRun<L, kRun>(here);
        for (size_t i = kReach; i < kRun; ++i) {
            for (size_t distance = 1; distance <= kReach; ++distance) {
                (*rows)[(size_t(x) + i) % kPhases][distance].Add(Bits(run[i], run[i - distance]));
            }
        }
    }

    // What neighbours of one colour cost, the nearest before each pixel.
    static double SameColour(const Profile& profile, int cell) {
        Mean cost;
        for (int phase = 0; phase < kPhases; ++phase) {
            const bool inside = phase % cell > 0;
            const int distance = cell == 1 ? 2 : inside ? 1 : cell + 1;
            cost.Add(profile[size_t(phase)][size_t(distance)].Value());
        }
        return cost.Value();
    }

    // By how much a step into the next colour costs more than one that stays.
    static double Contrast(const Profile& profile, int cell) {
        Mean across, within;
        for (size_t phase = 0; phase < kPhases; ++phase) {
            const bool border = phase % size_t(cell) == 0;
            (border ? across : within).Add(profile[phase][1].Value());
            if (cell == 1) within.Add(profile[phase][2].Value());
        }
        return across.Value() - within.Value();
    }

    static CellCosts MeasureCells(const Bytes& bytes, int64_t pitch) {
        constexpr int kPositions = 12000;
        constexpr int64_t kRunBytes = int64_t{16} / kPixels * kBytes;
        Profile columns{}, rows{};
        const int64_t last = static_cast<int64_t>(bytes.size()) - kRunBytes;
        for (const int64_t at : Positions(kPositions, kReach * pitch, last)) {
            const int64_t y = at / pitch;
            const int64_t column = at % pitch / kBytes;
            const uint8_t* here = bytes.data() + y * pitch + column * kBytes;
            AddColumn(here, pitch, y, &columns);
            if (column * kBytes + kRunBytes <= pitch) AddRow(here, column * kPixels, &rows);
        }
        CellCosts costs{};
        for (int cell = 1; cell <= 4; ++cell) {
            costs.of[cell] = (SameColour(columns, cell) + SameColour(rows, cell)) / 2;
            costs.contrast[cell] = std::min(Contrast(columns, cell), Contrast(rows, cell));
        }
        return costs;
    }
};

// Calls a functor with the layout's Measure.
template <class F>
auto With(Layout layout, const F& measure) {
    switch (layout) {
        case Layout::QCRaw10: return measure(Measure<QCRaw10>());
        case Layout::QCRaw12: return measure(Measure<QCRaw12>());
        case Layout::VXRaw10: return measure(Measure<VXRaw10>());
        case Layout::VXRaw12: break;
    }
    return measure(Measure<VXRaw12>());
}

}  // namespace

std::vector<int64_t> Positions(int count, int64_t least, int64_t most) {
    std::mt19937_64 random(1);
    std::vector<int64_t> positions;
    if (most < least) return positions;
    count = static_cast<int>(std::min<int64_t>(count, most - least + 1));
    const double step = double(most - least + 1) / count;
    for (int i = 0; i < count; ++i) {
        const double within = double(random() >> 11) * 0x1p-53;
        positions.push_back(least + static_cast<int64_t>((i + within) * step));
    }
    return positions;
}

LayoutShares LayoutCosts(const Bytes& bytes) {
    return {LayoutCost<QCRaw10>(bytes), LayoutCost<QCRaw12>(bytes), LayoutCost<VXRaw10>(bytes),
            LayoutCost<VXRaw12>(bytes)};
}

std::vector<double> PitchCosts(const Bytes& bytes, Layout layout, int64_t least, int64_t most) {
    return With(layout, [&](auto measure) { return measure.PitchCosts(bytes, least, most); });
}

CellCosts MeasureCells(const Bytes& bytes, Layout layout, int64_t pitch) {
    return With(layout, [&](auto measure) { return measure.MeasureCells(bytes, pitch); });
}

}  // namespace tarn::frames
