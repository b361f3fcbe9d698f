// What others make of the same frame: the plain reference of every operation, and LibRaw, which
// unpacks two of the layouts.
#ifndef TARN_PICTURES_WITNESS_H_
#define TARN_PICTURES_WITNESS_H_

#include <vector>

#include "frames/safe_call.h"
#include "pictures/input.h"

namespace tarn::pictures {

// The task's output by the plain reference, on so many threads: tight rows, whole groups.
Bytes ReferenceRows(const BinTask& task, const uint8_t* src, int threads);

// Whether LibRaw can unpack such a frame: qc10 or vx12, its sides within its limit.
inline constexpr int kLibRawLongestSide = 65000;
bool LibRawUnpacks(const PackedFrame& frame);

// The codes of such a frame, row by row. Throws RunError when LibRaw refuses it.
std::vector<uint16_t> LibRawCodes(const PackedFrame& frame, const uint8_t* bytes);

}  // namespace tarn::pictures

#endif  // TARN_PICTURES_WITNESS_H_
