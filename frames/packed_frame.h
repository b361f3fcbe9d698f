// One packed frame's geometry.
#ifndef TARN_FRAMES_PACKED_FRAME_H_
#define TARN_FRAMES_PACKED_FRAME_H_

#include <cstdint>

#include "layout/packed_layouts.h"

namespace tarn::frames {

struct PackedFrame {
    Layout layout;
    int width;      // pixels
    int height;     // rows
    int64_t pitch;  // bytes from one row to the next

    // The groups that hold the row's pixels; the last one may hold more than the row needs.
    int64_t RowBytes() const {
        const GroupShape& shape = Shape(layout);
        return (int64_t{width} + shape.pixels - 1) / shape.pixels * shape.bytes;
    }
    int64_t Bytes() const { return pitch * height; }
    // Without the padding of the last row, which no operation needs.
    int64_t LeastBytes() const { return pitch * (height - 1) + RowBytes(); }
};

inline bool IsVX(Layout layout) {
    return layout == Layout::VXRaw10 || layout == Layout::VXRaw12;
}

}  // namespace tarn::frames

#endif  // TARN_FRAMES_PACKED_FRAME_H_
