#include "engines/engine_parts.h"

#include <algorithm>

#include "engines/kernels/levels.h"
#include "platform/log.h"

namespace tarn {

int CheckStride(PitchUnit unit, BufferInfo* info) {
    FillMissingPitches(unit, info);
    if (VerboseCheck()) {
        __android_log_print(ANDROID_LOG_DEBUG, kLogTag, "%s: %s Stride : %d, %d", "CheckStride",
                            "CheckStride", info->inStride, info->outStride);
    }
    return 0;
}

int PackValues(Layout layout, const uint16_t* src, uint8_t* dst, int count, int bitDepth) {
    if (count < 1) return 0;
    const GroupShape& shape = Shape(layout);
    // The top bits are kept. A depth that makes no sense still gives a shift that is defined.
    const int shift = std::clamp(bitDepth, shape.bits, 16) - shape.bits;
    const ptrdiff_t groups = (ptrdiff_t{count} + shape.pixels - 1) / shape.pixels;
    BestKernels().Pack(layout)(src, dst, groups, shift);
    return 0;
}

int CompensateValues(uint16_t* values, int count, int bitDepth, float gain) {
    if (count < 1) return 0;
    BestKernels().EvValues()(values, count, EvRuleOfDepth(bitDepth, gain));
    return 0;
}

}  // namespace tarn
