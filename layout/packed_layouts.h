// The four packed layouts as types: how a group of pixels lies in its bytes.
//
// A row is a sequence of groups without gaps, from byte 0. docs/layouts.md draws them.
#ifndef TARN_LAYOUT_PACKED_LAYOUTS_H_
#define TARN_LAYOUT_PACKED_LAYOUTS_H_

#include <cstdint>

// No out-of-line copy may remain of anything that files with their own instruction-set flags use.
#define TARN_INLINE [[gnu::always_inline]] static inline

namespace tarn {

enum class Layout { QCRaw10, QCRaw12, VXRaw10, VXRaw12 };
inline constexpr int kLayoutCount = 4;

// MIPI CSI-2 RAW10: bits 9..2 of four pixels, a byte each, then their bits 1..0, pixel 0 lowest.
struct QCRaw10 {
    static constexpr int kBits = 10;
    static constexpr int kGroupPixels = 4;
    static constexpr int kGroupBytes = 5;

    TARN_INLINE void Unpack(const uint8_t* group, uint16_t* pixel) {
        for (int k = 0; k < 4; ++k) {
            pixel[k] = static_cast<uint16_t>(group[k] << 2 | (group[4] >> 2 * k & 3));
        }
    }
    TARN_INLINE void Pack(const uint16_t* pixel, uint8_t* group) {
        unsigned low = 0;
        for (int k = 0; k < 4; ++k) {
            group[k] = static_cast<uint8_t>(pixel[k] >> 2);
            low |= (pixel[k] & 3u) << 2 * k;
        }
        group[4] = static_cast<uint8_t>(low);
    }
};

// MIPI CSI-2 RAW12: bits 11..4 of two pixels, a byte each, then their bits 3..0, pixel 0 lowest.
struct QCRaw12 {
    static constexpr int kBits = 12;
    static constexpr int kGroupPixels = 2;
    static constexpr int kGroupBytes = 3;

    TARN_INLINE void Unpack(const uint8_t* group, uint16_t* pixel) {
        pixel[0] = static_cast<uint16_t>(group[0] << 4 | (group[2] & 0x0F));
        pixel[1] = static_cast<uint16_t>(group[1] << 4 | group[2] >> 4);
    }
    TARN_INLINE void Pack(const uint16_t* pixel, uint8_t* group) {
        group[0] = static_cast<uint8_t>(pixel[0] >> 4);
        group[1] = static_cast<uint8_t>(pixel[1] >> 4);
        group[2] = static_cast<uint8_t>((pixel[0] & 0x0F) | (pixel[1] & 0x0F) << 4);
    }
};

// Four pixels as one 40-bit little-endian number, pixel 0 lowest (GenICam PFNC "10p").
struct VXRaw10 {
    static constexpr int kBits = 10;
    static constexpr int kGroupPixels = 4;
    static constexpr int kGroupBytes = 5;

    TARN_INLINE void Unpack(const uint8_t* group, uint16_t* pixel) {
        pixel[0] = static_cast<uint16_t>(group[0] | (group[1] & 0x03) << 8);
        pixel[1] = static_cast<uint16_t>(group[1] >> 2 | (group[2] & 0x0F) << 6);
        pixel[2] = static_cast<uint16_t>(group[2] >> 4 | (group[3] & 0x3F) << 4);
        pixel[3] = static_cast<uint16_t>(group[3] >> 6 | group[4] << 2);
    }
    TARN_INLINE void Pack(const uint16_t* pixel, uint8_t* group) {
        group[0] = static_cast<uint8_t>(pixel[0]);
        group[1] = static_cast<uint8_t>(pixel[0] >> 8 | pixel[1] << 2);
        group[2] = static_cast<uint8_t>(pixel[1] >> 6 | pixel[2] << 4);
        group[3] = static_cast<uint8_t>(pixel[2] >> 4 | pixel[3] << 6);
        group[4] = static_cast<uint8_t>(pixel[3] >> 2);
    }
};

// Two pixels as one 24-bit little-endian number, pixel 0 lowest (GenICam PFNC "12p").
struct VXRaw12 {
    static constexpr int kBits = 12;
    static constexpr int kGroupPixels = 2;
    static constexpr int kGroupBytes = 3;

    TARN_INLINE void Unpack(const uint8_t* group, uint16_t* pixel) {
        pixel[0] = static_cast<uint16_t>(group[0] | (group[1] & 0x0F) << 8);
        pixel[1] = static_cast<uint16_t>(group[1] >> 4 | group[2] << 4);
    }
    TARN_INLINE void Pack(const uint16_t* pixel, uint8_t* group) {
        group[0] = static_cast<uint8_t>(pixel[0]);
        group[1] = static_cast<uint8_t>((pixel[0] >> 8 & 0x0F) | pixel[1] << 4);
        group[2] = static_cast<uint8_t>(pixel[1] >> 4);
    }
};

// The type of a layout's name.
template <Layout>
struct LayoutTypeOf;
template <>
struct LayoutTypeOf<Layout::QCRaw10> {
    using type = QCRaw10;
};
template <>
struct LayoutTypeOf<Layout::QCRaw12> {
    using type = QCRaw12;
};
template <>
struct LayoutTypeOf<Layout::VXRaw10> {
    using type = VXRaw10;
};
template <>
struct LayoutTypeOf<Layout::VXRaw12> {
    using type = VXRaw12;
};
template <Layout L>
using LayoutType = typename LayoutTypeOf<L>::type;

// The constants of a layout that is known at run time only.
struct GroupShape {
    int bits;
    int pixels;
    int bytes;
};

template <class L>
inline constexpr GroupShape kShapeOf{L::kBits, L::kGroupPixels, L::kGroupBytes};

inline constexpr GroupShape kGroupShapes[kLayoutCount] = {kShapeOf<QCRaw10>, kShapeOf<QCRaw12>,
                                                          kShapeOf<VXRaw10>, kShapeOf<VXRaw12>};

constexpr const GroupShape& Shape(Layout layout) {
    return kGroupShapes[static_cast<int>(layout)];
}

}  // namespace tarn

#endif  // TARN_LAYOUT_PACKED_LAYOUTS_H_
