#include "engines/ev_frame.h"

namespace tarn {

void EvFrame(Layout layout, const RowKernels& kernels, const uint8_t* src, uint8_t* dst, int height,
             int pitch, float gain) {
    const GroupShape& shape = Shape(layout);
    const int groups = pitch / shape.bytes;
    if (groups < 1) return;  // before the loop: height may be huge

    const EvRowKernel evRow = kernels.Ev(layout);
    const EvRule rule = EvRuleOfDepth(shape.bits, gain);
    for (ptrdiff_t y = 0; y < height; ++y) evRow(src + y * pitch, dst + y * pitch, groups, rule);
}

}  // namespace tarn
