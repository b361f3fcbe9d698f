// A block of each layout, read and written. Included by neon.cpp only.
#ifndef TARN_ENGINES_KERNELS_NEON_LAYOUTS_H_
#define TARN_ENGINES_KERNELS_NEON_LAYOUTS_H_

#include "engines/kernels/neon_vector.h"

namespace tarn {

// Pixels of the 10-bit layouts one by one: a lane takes the two bytes that hold its pixel, and a
// shift moves it to the top.
template <class L>
struct PixelLanes;

// The byte of low bits 33221100, whose field k goes to bits 7..6, below pixel k's own byte.
template <>
struct PixelLanes<QCRaw10> {
    static constexpr int Byte(int pixel, int half) {
        return pixel / 4 * 5 + (half ? pixel % 4 : 4);
    }

    template <class PixelOf>
    TARN_INLINE uint16x8_t ToTop(uint8x16_t bytes, PixelOf pixelOf) {
        const auto shift = Bytes([=](int i) { return i % 2 ? 0 : 6 - 2 * (pixelOf(i / 2) % 4); });
        return vreinterpretq_u16_u8(vshlq_u8(bytes, vreinterpretq_s8_u8(shift)));
    }
};

// Pixel k starts at bit 2k of byte k.
template <>
struct PixelLanes<VXRaw10> {
    static constexpr int Byte(int pixel, int half) { return pixel / 4 * 5 + pixel % 4 + half; }

    template <class PixelOf>
    TARN_INLINE uint16x8_t ToTop(uint8x16_t bytes, PixelOf pixelOf) {
        const auto shift = Bytes([=](int i) { return i % 2 ? 0 : 6 - 2 * (pixelOf(i / 2) % 4); });
        return vshlq_u16(vreinterpretq_u16_u8(bytes), vreinterpretq_s16_u8(shift));
    }
};

// 64 pixels of a 10-bit layout, 80 bytes. No table look-up takes more than two registers.
struct EightyBytes {
    uint8x16x4_t begin;
    uint8x16x2_t end;  // from byte 48

    TARN_INLINE EightyBytes Load(const uint8_t*& src) {
        EightyBytes bytes;
        bytes.begin = vld1q_u8_x4(src);
        MoveOn<48>(src);
        bytes.end = vld1q_u8_x2(src);
        src += 32;
        return bytes;
    }
    // Bytes at pattern, counted from byte 16 x first, out of two registers from there.
    template <int first>
    TARN_INLINE uint8x16_t Pick(const EightyBytes& bytes, uint8x16_t pattern) {
        if constexpr (first == 3) {
            return vqtbl2q_u8(bytes.end, pattern);
        } else {
            return vqtbl2q_u8({{bytes.begin.val[first], bytes.begin.val[first + 1]}}, pattern);
        }
    }
};

// Pixels 8i to 8i+7 at the top of their lanes, other bits below them.
template <class L, int i>
TARN_INLINE uint16x8_t EightPixels(const EightyBytes& bytes) {
    constexpr int kFirst = i == 7 ? 3 : 10 * i / 16;
    const auto pattern =
        Bytes([](int k) { return PixelLanes<L>::Byte(8 * i + k / 2, k % 2) - 16 * kFirst; });
    return PixelLanes<L>::ToTop(EightyBytes::Pick<kFirst>(bytes, pattern),
                                [](int lane) { return lane; });
}

// 16 groups of five bytes: the first four of each, and the last of all.
struct SixteenGroups {
    uint8x16_t first[4];
    uint8x16_t last;

    TARN_INLINE SixteenGroups Load(const uint8_t*& src) {
        const EightyBytes bytes = EightyBytes::Load(src);
        SixteenGroups groups;
        groups.first[0] = EightyBytes::Pick<0>(bytes, FirstFrom(0));
        groups.first[1] = EightyBytes::Pick<1>(bytes, FirstFrom(4));
        groups.first[2] = EightyBytes::Pick<2>(bytes, FirstFrom(8));
        groups.first[3] = EightyBytes::Pick<3>(bytes, FirstFrom(12));
        // Indices out of range give zero, or leave what is there.
        const auto last = [](int from) { return Bytes([=](int i) { return 5 * i + 4 - from; }); };
        groups.last = EightyBytes::Pick<0>(bytes, last(0));
        groups.last = vqtbx2q_u8(groups.last, {{bytes.begin.val[2], bytes.begin.val[3]}}, last(32));
        groups.last = vqtbx1q_u8(groups.last, bytes.end.val[1], last(64));
        return groups;
    }

 private:
    // Four groups that begin `start` bytes on.
    TARN_INLINE uint8x16_t FirstFrom(int start) {
        return Bytes([=](int i) { return start + i / 4 * 5 + i % 4; });
    }
};

// Bytes `start` to start+15 of 16 groups of five, from `bytes`, which come after the first
// `skipped` of those that are not their group's last, and the last ones.
template <int start, int skipped>
TARN_INLINE void StorePart(uint8_t* dst, uint8x16_t bytes, uint8x16_t last) {
    const auto pattern = Bytes([](int i) {
        const int at = start + i;
        return at % 5 == 4 ? 16 + at / 5 : at / 5 * 4 + at % 5 - skipped;
    });
    vst1q_u8(dst + start, vqtbl2q_u8({{bytes, last}}, pattern));
}

// Writes 16 groups of five bytes: the first four of each from `first`, the last from `last`.
TARN_INLINE void StoreGroups(uint8_t* dst, const uint8x16_t (&first)[4], uint8x16_t last) {
    StorePart<0, 0>(dst, first[0], last);
    StorePart<16, 13>(dst, vextq_u8(first[0], first[1], 13), last);
    StorePart<32, 26>(dst, vextq_u8(first[1], first[2], 10), last);
    StorePart<48, 39>(dst, vextq_u8(first[2], first[3], 7), last);
    StorePart<64, 48>(dst, first[3], last);
}

// Layouts, as blocks of kPixels in an order of their own:
//   Unpack       pixels at the top of their lanes, zeros below; moves src on. VX 10-bit: see
//                VXRaw10ByPlace
//   Arranged     pixels in the row's order, brought to the layout's
//   Pack<below>  takes the pixels above the lowest `below` bits of each lane; bits above them only
//                where they end at the top
template <class L>
struct NeonLayout;

// The row's order.
struct NeonTenBits {
    static constexpr int kPixels = 64;
    using Block = Lanes<kPixels / kLanes>;

    TARN_INLINE Block Arranged(const Block& pixels) { return pixels; }
};

template <>
struct NeonLayout<QCRaw10> : NeonTenBits {
    TARN_INLINE Block Unpack(const uint8_t*& src) {
        Block pixels;
        const EightyBytes bytes = EightyBytes::Load(src);
        ForEach<8>([&](auto i) TARN_INLINE_LAMBDA {
            pixels.v[i] = vandq_u16(EightPixels<QCRaw10, i>(bytes), Words(0xFFC0));
        });
        return pixels;
    }
    // A field of two bits is taken with bits above it from the bottom of a byte, or with bits below
    // it from the top: joining drops them.
    template <int below>
    TARN_INLINE void Pack(const Block& pixels, uint8_t* dst) {
        constexpr bool kAtTop = below == 6;
        constexpr int kFields = kAtTop ? 0 : below;
        uint8x16_t high[4], low[4];
        ForEach<4>([&](auto i) TARN_INLINE_LAMBDA {
            const uint16x8_t a = pixels.v[2 * i], b = pixels.v[2 * i + 1];
            high[i] = Narrow<below + 2>(a, b);
            low[i] = Narrow<kFields>(a, b);
        });
        const uint8x16_t begin = Joined<kAtTop, 2>(low[0], low[1]);
        const uint8x16_t end = Joined<kAtTop, 2>(low[2], low[3]);
        StoreGroups(dst, high, Joined<kAtTop, 4>(begin, end));
    }

 private:
    // Fields of neighbouring bytes, the first one's below the second's.
    template <bool atTop, int bits>
    TARN_INLINE uint8x16_t Joined(uint8x16_t a, uint8x16_t b) {
        const uint8x16_t even = vuzp1q_u8(a, b), odd = vuzp2q_u8(a, b);
        if constexpr (atTop) {
            return vsriq_n_u8(odd, even, bits);
        } else {
            return vsliq_n_u8(even, odd, bits);
        }
    }
};

template <>
struct NeonLayout<VXRaw10> : NeonTenBits {
    // Pixel k moved up by 2k bits covers its bits of bytes k and k+1. There the second byte's bits
    // replace what was below the next pixel.
    template <int below>
    TARN_INLINE void Pack(const Block& pixels, uint8_t* dst) {
        const auto shift = Bytes([](int i) { return i % 2 ? 0 : i % 8 - below; });
        const auto carried = Bytes([](int i) { return (1 << 2 * (i % 4)) - 1; });
        uint8x16_t first[4], high[4];
        ForEach<4>([&](auto i) TARN_INLINE_LAMBDA {
            const uint16x8_t a = vshlq_u16(pixels.v[2 * i], vreinterpretq_s16_u8(shift));
            const uint16x8_t b = vshlq_u16(pixels.v[2 * i + 1], vreinterpretq_s16_u8(shift));
            high[i] = Narrow<8>(a, b);
            const uint32x4_t next = vshlq_n_u32(vreinterpretq_u32_u8(high[i]), 8);
            first[i] = vbslq_u8(carried, vreinterpretq_u8_u32(next), Narrow<0>(a, b));
        });
        const uint8x16_t last = vuzp2q_u8(vuzp2q_u8(high[0], high[1]), vuzp2q_u8(high[2], high[3]));
        StoreGroups(dst, first, last);
    }
};

// 16 groups of three bytes: the first, the second and the third of each.
TARN_INLINE uint8x16x3_t NextGroups(const uint8_t*& src) {
    const uint8x16x3_t bytes = vld3q_u8(src);
    src += 48;
    return bytes;
}

// First the groups' first pixels, then the second ones.
struct NeonTwelveBits {
    static constexpr int kPixels = 32;
    using Block = Lanes<kPixels / kLanes>;

    TARN_INLINE Block Arranged(const Block& p) {
        return {{vuzp1q_u16(p.v[0], p.v[1]), vuzp1q_u16(p.v[2], p.v[3]), vuzp2q_u16(p.v[0], p.v[1]),
                 vuzp2q_u16(p.v[2], p.v[3])}};
    }

 protected:
    // 16 lanes from their low and high bytes.
    TARN_INLINE Lanes<2> Widened(uint8x16_t low, uint8x16_t high) {
        return {{vreinterpretq_u16_u8(vzip1q_u8(low, high)),
                 vreinterpretq_u16_u8(vzip2q_u8(low, high))}};
    }
    TARN_INLINE Block Both(const Lanes<2>& a, const Lanes<2>& b) {
        return {{a.v[0], a.v[1], b.v[0], b.v[1]}};
    }
};

template <>
struct NeonLayout<QCRaw12> : NeonTwelveBits {
    TARN_INLINE Block Unpack(const uint8_t*& src) {
        const uint8x16x3_t g = NextGroups(src);
        return Both(Widened(vshlq_n_u8(g.val[2], 4), g.val[0]),
                    Widened(vandq_u8(g.val[2], Bytes(0xF0)), g.val[1]));
    }
    template <int below>
    TARN_INLINE void Pack(const Block& p, uint8_t* dst) {
        uint8x16x3_t g;
        g.val[0] = Narrow<below + 4>(p.v[0], p.v[1]);
        g.val[1] = Narrow<below + 4>(p.v[2], p.v[3]);
        if constexpr (below == 4) {
            g.val[2] = vsriq_n_u8(Narrow<0>(p.v[2], p.v[3]), Narrow<0>(p.v[0], p.v[1]), 4);
        } else {
            g.val[2] = vsliq_n_u8(Narrow<below>(p.v[0], p.v[1]), Narrow<below>(p.v[2], p.v[3]), 4);
        }
        vst3q_u8(dst, g);
    }
};

template <>
struct NeonLayout<VXRaw12> : NeonTwelveBits {
    TARN_INLINE Block Unpack(const uint8_t*& src) {
        const uint8x16x3_t g = NextGroups(src);
        const uint8x16_t high = vsliq_n_u8(vshrq_n_u8(g.val[0], 4), g.val[1], 4);
        return Both(Widened(vshlq_n_u8(g.val[0], 4), high),
                    Widened(vandq_u8(g.val[1], Bytes(0xF0)), g.val[2]));
    }
    template <int below>
    TARN_INLINE void Pack(const Block& p, uint8_t* dst) {
        uint8x16x3_t g;
        g.val[0] = Narrow<below>(p.v[0], p.v[1]);
        if constexpr (below == 4) {
            g.val[1] = vsriq_n_u8(Narrow<0>(p.v[2], p.v[3]), Narrow<8>(p.v[0], p.v[1]), 4);
        } else {
            g.val[1] =
                vsliq_n_u8(Narrow<below + 8>(p.v[0], p.v[1]), Narrow<below>(p.v[2], p.v[3]), 4);
        }
        g.val[2] = Narrow<below + 4>(p.v[2], p.v[3]);
        vst3q_u8(dst, g);
    }
};

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_NEON_LAYOUTS_H_
