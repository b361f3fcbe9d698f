#include "layout/pitch.h"

namespace tarn {

int CalcPitch(PitchUnit unit, int width) {
    const float quotient = static_cast<float>(width) / static_cast<float>(unit.pixels);
    int units = static_cast<int>(quotient);
    if (static_cast<float>(units) < quotient) ++units;
    return static_cast<int>(static_cast<unsigned>(units) * static_cast<unsigned>(unit.bytes));
}

bool PitchMissing(int stride, int width, int height) {
    return stride == 0 || stride == width || stride == height;
}

void FillMissingPitches(PitchUnit unit, BufferInfo* info) {
    if (PitchMissing(info->inStride, info->inWidth, info->inHeight)) {
        info->inStride = CalcPitch(unit, info->inWidth);
    }
    if (PitchMissing(info->outStride, info->outWidth, info->outHeight)) {
        info->outStride = CalcPitch(unit, info->outWidth);
    }
}

}  // namespace tarn
