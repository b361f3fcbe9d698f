// What the engine classes have in common: the stride check with its log line, the packers and the
// value kernel behind their int-counted interface.
#ifndef TARN_ENGINES_ENGINE_PARTS_H_
#define TARN_ENGINES_ENGINE_PARTS_H_

#include "TarnSolution.h"
#include "layout/packed_layouts.h"
#include "layout/pitch.h"

namespace tarn {

// Fills in missing pitches and logs both. Returns 0.
int CheckStride(PitchUnit unit, BufferInfo* info);

// Packs count values of bitDepth significant bits, in whole groups. Returns 0.
int PackValues(Layout layout, const uint16_t* src, uint8_t* dst, int count, int bitDepth);

// Compensates count values in place. Returns 0.
int CompensateValues(uint16_t* values, int count, int bitDepth, float gain);

}  // namespace tarn

#endif  // TARN_ENGINES_ENGINE_PARTS_H_
