// Row pitches: the rule that computes one, and the rule that fills in missing ones.
#ifndef TARN_LAYOUT_PITCH_H_
#define TARN_LAYOUT_PITCH_H_

#include "TarnSolution.h"

namespace tarn {

// A row is reserved in whole units. The rule knows no bit depth: units hold 10-bit pixels.
struct PitchUnit {
    int pixels;
    int bytes;
};
inline constexpr PitchUnit kQCPitchUnit{64, 80};
inline constexpr PitchUnit kVXPitchUnit{32, 40};

// ceil(width / unit) units in bytes. The quotient is taken in single precision, so widths from
// 16,777,217 on are rounded first; negative widths round toward zero; the product wraps.
int CalcPitch(PitchUnit unit, int width);

// A pitch of 0, or one that equals the width or the height, counts as left out.
bool PitchMissing(int stride, int width, int height);

void FillMissingPitches(PitchUnit unit, BufferInfo* info);

}  // namespace tarn

#endif  // TARN_LAYOUT_PITCH_H_
