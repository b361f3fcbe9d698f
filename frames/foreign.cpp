#include "frames/foreign.h"

#include <algorithm>

#include "frames/layout_cost.h"

namespace tarn::frames {
namespace {

// A stream of bits, the most significant first: TIFF, DNG, Y10BPACK.
struct MsbFirst10 {
    static constexpr int kBits = 10, kGroupPixels = 4, kGroupBytes = 5;
    static void Unpack(const uint8_t* group, uint16_t* pixel) {
        for (int k = 0; k < 4; ++k) {
            const unsigned two = unsigned{group[k]} << 8 | group[k + 1];
            pixel[k] = static_cast<uint16_t>(two >> (6 - 2 * k) & 1023);
        }
    }
};
struct MsbFirst12 {
    static constexpr int kBits = 12, kGroupPixels = 2, kGroupBytes = 3;
    static void Unpack(const uint8_t* group, uint16_t* pixel) {
        pixel[0] = static_cast<uint16_t>(group[0] << 4 | group[1] >> 4);
        pixel[1] = static_cast<uint16_t>((group[1] & 15) << 8 | group[2]);
    }
};

// High byte, both low nibbles, high byte: GigE Vision Mono12Packed.
struct LowNibblesAmid {
    static constexpr int kBits = 12, kGroupPixels = 2, kGroupBytes = 3;
    static void Unpack(const uint8_t* group, uint16_t* pixel) {
        pixel[0] = static_cast<uint16_t>(group[0] << 4 | (group[1] & 15));
        pixel[1] = static_cast<uint16_t>(group[2] << 4 | group[1] >> 4);
    }
};

// Pixels of 10 bits, the least significant first, as many as a word of so many bytes holds whole.
template <int Pixels, int Bytes>
struct Words10 {
    static constexpr int kBits = 10, kGroupPixels = Pixels, kGroupBytes = Bytes;
    static void Unpack(const uint8_t* group, uint16_t* pixel) {
        for (int k = 0; k < Pixels; ++k) {
            const uint8_t* at = group + 10 * k / 8;
            const unsigned two = at[0] | unsigned{at[1]} << 8;
            pixel[k] = static_cast<uint16_t>(two >> (10 * k % 8) & 1023);
        }
    }
};

// Samples of one byte each, grey or in colour: then bytes one or three apart are alike wherever
// they lie, while packed rows have a byte of low bits in every group of three or five.
double OneByteCost(const Bytes& bytes) {
    constexpr int kWindows = 600;
    constexpr int64_t kLength = 240;
    Mean cost[3];
    for (const int64_t at : Positions(kWindows, 0, int64_t(bytes.size()) - kLength)) {
        const uint8_t* window = bytes.data() + at;
        if (IsFlat(window, kLength)) continue;
        for (int64_t distance = 1; distance <= 3; ++distance) {
            double worst = 0;
            for (const int64_t group : {3, 5}) {
                Mean ofPlace[5];
                for (int64_t i = distance; i < kLength; ++i) {
                    ofPlace[i % group].Add(Bits(window[i], window[i - distance]));
                }
                for (const Mean& mean : ofPlace) worst = std::max(worst, mean.Value());
            }
            cost[distance - 1].Add(worst);
        }
    }
    if (cost[0].Empty()) return 1;
    return std::min({cost[0].Value(), cost[1].Value(), cost[2].Value()}) / 8;
}

// Samples in 16-bit words leave bits unused, in every second byte alone.
bool AreWords(const Bytes& bytes) {
    int used[2] = {0, 0};
    for (size_t i = 0; i < bytes.size(); ++i) used[i % 2] |= bytes[i];
    const auto unused = [](int bits) { return (bits & 0xC0) == 0 || (bits & 0x0F) == 0; };
    return used[0] != 0 && used[1] != 0 && unused(used[0]) != unused(used[1]);
}

}  // namespace

Foreign LikeliestForeign(const Bytes& bytes) {
    constexpr double kLead = 0.02;
    // Takes the high bytes of QC rows for what they are, and only mixes up the nibbles.
    constexpr double kNibblesLead = 0.002;
    if (AreWords(bytes)) return {"samples in 16-bit words", 0, kLead};
    const Foreign all[] = {
        {"samples of one byte each", OneByteCost(bytes), kLead},
        {"10-bit samples packed most significant bit first", LayoutCost<MsbFirst10>(bytes), kLead},
        {"12-bit samples packed most significant bit first", LayoutCost<MsbFirst12>(bytes), kLead},
        {"Mono12Packed, with the low nibbles in the middle byte", LayoutCost<LowNibblesAmid>(bytes),
         kNibblesLead},
        {"loose RAW10, six samples in eight bytes", LayoutCost<Words10<6, 8>>(bytes), kLead},
        {"IPU3 samples, 25 in 32 bytes", LayoutCost<Words10<25, 32>>(bytes), kLead},
    };
    return *std::min_element(std::begin(all), std::end(all),
                             [](const Foreign& a, const Foreign& b) { return a.cost < b.cost; });
}

}  // namespace tarn::frames
