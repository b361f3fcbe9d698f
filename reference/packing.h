#ifndef TARN_REFERENCE_PACKING_H_
#define TARN_REFERENCE_PACKING_H_

#include <cstddef>
#include <cstdint>

/// Packed pixels, read and written one bit at a time. Slow on purpose: every rule can be checked
/// by eye against the bit drawing of its layout.
namespace tarn_reference {

enum class Packing { QCRaw10, QCRaw12, VXRaw10, VXRaw12 };

constexpr unsigned BitsPerPixel(Packing packing) {
    return packing == Packing::QCRaw10 || packing == Packing::VXRaw10 ? 10 : 12;
}

/// The smallest number of pixels that fills whole bytes, and those bytes.
constexpr int GroupPixels(Packing packing) {
    return BitsPerPixel(packing) == 10 ? 4 : 2;
}
constexpr int GroupBytes(Packing packing) {
    return BitsPerPixel(packing) == 10 ? 5 : 3;
}

/// Where one bit of one pixel lies within its row.
struct Place {
    std::size_t byte;
    unsigned bit;
};

template <Packing P>
constexpr Place PlaceOf(std::size_t x, unsigned bit) {
    if constexpr (P == Packing::QCRaw10) {  // a byte of high bits per pixel, then all low pairs
        const std::size_t group = x / 4 * 5;
        const auto k = static_cast<unsigned>(x % 4);
        return bit >= 2 ? Place{group + k, bit - 2} : Place{group + 4, 2 * k + bit};
    } else if constexpr (P == Packing::QCRaw12) {  // likewise, then both low nibbles
        const std::size_t group = x / 2 * 3;
        const auto k = static_cast<unsigned>(x % 2);
        return bit >= 4 ? Place{group + k, bit - 4} : Place{group + 2, 4 * k + bit};
    } else {  // one stream of bits, the least significant first
        const std::size_t position = static_cast<std::size_t>(BitsPerPixel(P)) * x + bit;
        return {position / 8, static_cast<unsigned>(position % 8)};
    }
}

template <Packing P>
constexpr unsigned ReadBits(const std::uint8_t* row, std::size_t x) {
    unsigned value = 0;
    for (unsigned bit = 0; bit < BitsPerPixel(P); ++bit) {
        const Place place = PlaceOf<P>(x, bit);
        value |= (row[place.byte] >> place.bit) % 2U << bit;
    }
    return value;
}

/// Sets exactly the bits of this pixel; its neighbours in the same bytes stay as they are.
template <Packing P>
constexpr void WriteBits(std::uint8_t* row, std::size_t x, unsigned value) {
    for (unsigned bit = 0; bit < BitsPerPixel(P); ++bit) {
        const Place place = PlaceOf<P>(x, bit);
        const unsigned others = row[place.byte] & ~(1U << place.bit);
        row[place.byte] = static_cast<std::uint8_t>(others | (value >> bit) % 2U << place.bit);
    }
}

constexpr unsigned ReadPixel(Packing packing, const std::uint8_t* row, std::size_t x) {
    switch (packing) {
        case Packing::QCRaw10: return ReadBits<Packing::QCRaw10>(row, x);
        case Packing::QCRaw12: return ReadBits<Packing::QCRaw12>(row, x);
        case Packing::VXRaw10: return ReadBits<Packing::VXRaw10>(row, x);
        case Packing::VXRaw12: return ReadBits<Packing::VXRaw12>(row, x);
    }
    return 0;
}

constexpr void WritePixel(Packing packing, std::uint8_t* row, std::size_t x, unsigned value) {
    switch (packing) {
        case Packing::QCRaw10: return WriteBits<Packing::QCRaw10>(row, x, value);
        case Packing::QCRaw12: return WriteBits<Packing::QCRaw12>(row, x, value);
        case Packing::VXRaw10: return WriteBits<Packing::VXRaw10>(row, x, value);
        case Packing::VXRaw12: return WriteBits<Packing::VXRaw12>(row, x, value);
    }
}

}  // namespace tarn_reference

#endif  // TARN_REFERENCE_PACKING_H_
