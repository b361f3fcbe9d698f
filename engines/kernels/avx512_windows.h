// Where the bits of pixels lie in the 64-bit lanes of a vector, as tables made by the compiler from
// the definition of a layout. Included by avx512.cpp only.
//
// Two instructions take pixels apart for all layouts. A byte permutation puts the bytes of four
// pixels (of six for cells of 3x3, they fit too) into each 64-bit lane; then a multishift fills
// each byte with any eight neighbouring bits of its lane, a window. Putting pixels together is the
// same the other way round.
#ifndef TARN_ENGINES_KERNELS_AVX512_WINDOWS_H_
#define TARN_ENGINES_KERNELS_AVX512_WINDOWS_H_

#include <cstdint>

#include "layout/packed_layouts.h"

namespace tarn {

// A pixel is its eight high bits, the high part, and the low part below them. QC keeps the low
// parts of a group in a place of their own, VX both in one piece.
template <class L>
inline constexpr bool kLowPartsApart = false;
template <>
inline constexpr bool kLowPartsApart<QCRaw10> = true;
template <>
inline constexpr bool kLowPartsApart<QCRaw12> = true;

template <class L>
inline constexpr int kLowBits = L::kBits - 8;

// The first bit of the part of pixel k, in bits from the start of the row.
template <class L>
constexpr int HighAt(int k) {
    if (!kLowPartsApart<L>) return k * L::kBits + kLowBits<L>;
    return (k / L::kGroupPixels * L::kGroupBytes + k % L::kGroupPixels) * 8;
}
template <class L>
constexpr int LowAt(int k) {
    if (!kLowPartsApart<L>) return k * L::kBits;
    return (k / L::kGroupPixels * L::kGroupBytes + L::kGroupPixels) * 8 +
           k % L::kGroupPixels * kLowBits<L>;
}

// A vector, byte by byte.
struct Table {
    uint8_t byte[64];

    constexpr long long Lane(int i) const {
        uint64_t lane = 0;
        for (int k = 7; k >= 0; --k) lane = lane << 8 | byte[8 * i + k];
        return static_cast<long long>(lane);
    }
};

// The bytes that hold `count` pixels, in the order of the row: at most eight.
struct LaneBytes {
    int byte[8];

    // Where a bit of the row is found in the lane.
    constexpr int Find(int rowBit) const {
        int at = 0;
        while (byte[at] != rowBit / 8) ++at;
        return 8 * at + rowBit % 8;
    }
};

template <class L>
constexpr bool Holds(int byte, int pixel) {
    const int high = HighAt<L>(pixel);
    return byte == high / 8 || byte == (high + 7) / 8 || byte == LowAt<L>(pixel) / 8;
}

template <class L>
constexpr LaneBytes BytesOf(int firstPixel, int count) {
    LaneBytes lane{};
    int found = 0;
    for (int byte = 0; byte < 64; ++byte) {
        bool holds = false;
        for (int k = 0; k < count; ++k) holds = holds || Holds<L>(byte, firstPixel + k);
        if (holds) lane.byte[found++] = byte;
    }
    return lane;
}

// The permutation that gives lane i pixels i x count and on, from a vector that has the first of
// them at byte `offset`.
template <class L>
constexpr Table Spread(int count, int offset) {
    Table table{};
    for (int i = 0; i < 64; ++i) {
        table.byte[i] = static_cast<uint8_t>(BytesOf<L>(i / 8 * count, count).byte[i % 8] + offset);
    }
    return table;
}

// What a byte of a lane is to hold: one part of one of the lane's pixels, or nothing. A low part
// stands `lowAt` bits up in its byte.
enum class Part { None, High, Low };
struct Field {
    int pixel;
    Part part;
};
struct Fields {
    int pixels;  // in a lane
    int lowAt;
    Field byte[8];
};

// The windows of fields, from lanes that Spread has made. What surrounds a low part is masked away.
template <class L>
constexpr Table Windows(const Fields& fields) {
    Table table{};
    for (int i = 0; i < 64; i += 8) {
        const int first = i / 8 * fields.pixels;
        const LaneBytes lane = BytesOf<L>(first, fields.pixels);
        for (int k = 0; k < 8; ++k) {
            const int pixel = first + fields.byte[k].pixel;
            const int at = fields.byte[k].part == Part::Low
                               ? lane.Find(LowAt<L>(pixel)) - fields.lowAt
                               : lane.Find(HighAt<L>(pixel));
            table.byte[i + k] = static_cast<uint8_t>(at & 63);
        }
    }
    return table;
}

// The same number for every field of a kind.
constexpr Table PerPart(const Fields& fields, int high, int low) {
    Table table{};
    for (int i = 0; i < 64; ++i) {
        const Part part = fields.byte[i % 8].part;
        table.byte[i] = static_cast<uint8_t>(part == Part::High  ? high
                                             : part == Part::Low ? low
                                                                 : 0);
    }
    return table;
}

// What surrounds high parts is nothing, or bytes that weigh nothing.
constexpr bool NeedMask(const Fields& fields) {
    bool need = false;
    for (const Field& field : fields.byte) need = need || field.part == Part::Low;
    return need;
}

template <class L>
constexpr Table PartMask(const Fields& fields) {
    return PerPart(fields, 0xFF, ((1 << kLowBits<L>)-1) << fields.lowAt);
}

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_AVX512_WINDOWS_H_
