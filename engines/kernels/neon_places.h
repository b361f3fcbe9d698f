// VX 10-bit blocks by place, for exposure compensation, which takes pixels in any order: bytes are
// made with fewer instructions when the pixels of one place in their groups share a vector.
// Included by neon.cpp only.
#ifndef TARN_ENGINES_KERNELS_NEON_PLACES_H_
#define TARN_ENGINES_KERNELS_NEON_PLACES_H_

#include "engines/kernels/neon_layouts.h"

namespace tarn {

// Sixteen groups. Of two vectors in turn the lower halves hold one place, the upper halves the
// next:
//
//   v[4h], v[4h+1]      p0 p0 p0 p0 p1 p1 p1 p1   of groups 8h to 8h+3, of groups 8h+4 to 8h+7
//   v[4h+2], v[4h+3]    p2 p2 p2 p2 p3 p3 p3 p3   likewise
//
// Packing wants place k of groups 8h to 8h+7 in v[4h+k]: the lower halves of both in the first, the
// upper halves in the second. CompensatedHalves leads from the one to the other at no cost.
struct VXRaw10ByPlace {
    static constexpr int kPixels = 64;
    using Block = Lanes<kPixels / kLanes>;

    TARN_INLINE Block Unpack(const uint8_t*& src) {
        Block pixels;
        const EightyBytes bytes = EightyBytes::Load(src);
        ForEach<8>([&](auto i) TARN_INLINE_LAMBDA {
            constexpr int kQuarter = i / 4 * 2 + i % 2;  // of the groups
            constexpr int kFirst = 20 * kQuarter / 16;
            constexpr int kPlace = i / 2 % 2 * 2;
            const auto pixelOf = [](int lane) {
                return 16 * kQuarter + 4 * (lane % 4) + kPlace + lane / 4;
            };
            const auto pattern = Bytes([=](int k) {
                return PixelLanes<VXRaw10>::Byte(pixelOf(k / 2), k % 2) - 16 * kFirst;
            });
            const auto lanes =
                PixelLanes<VXRaw10>::ToTop(EightyBytes::Pick<kFirst>(bytes, pattern), pixelOf);
            pixels.v[i] = vandq_u16(lanes, Words(0xFFC0));
        });
        return pixels;
    }

    // Bits below the upper ten of a lane are dropped. A word ends with the bits of the pixels
    // before.
    template <int below>
    TARN_INLINE void Pack(const Block& pixels, uint8_t* dst) {
        static_assert(below == 6);
        uint8x16_t first[4];
        ForEach<2>([&](auto h) TARN_INLINE_LAMBDA {
            const uint16x8_t* p = pixels.v + 4 * h;
            const uint16x8_t low = vsriq_n_u16(vshlq_n_u16(p[1], 4), p[0], 6);
            const uint16x8_t end = vsriq_n_u16(vshlq_n_u16(p[3], 8), p[2], 2);
            const uint16x8_t high = vsriq_n_u16(end, p[1], 12);
            first[2 * h] = vreinterpretq_u8_u16(vzip1q_u16(low, high));
            first[2 * h + 1] = vreinterpretq_u8_u16(vzip2q_u16(low, high));
        });
        StoreGroups(dst, first, Narrow<8>(pixels.v[3], pixels.v[7]));
    }
};

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_NEON_PLACES_H_
