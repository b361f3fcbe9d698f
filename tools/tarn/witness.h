// What others make of the same frame: the plain reference of every operation, and LibRaw, which
// unpacks two of the layouts.
#ifndef TARN_TOOL_WITNESS_H_
#define TARN_TOOL_WITNESS_H_

#include <vector>

#include "tools/tarn/input.h"
#include "tools/tarn/safe_call.h"

namespace tarn::tool {

// The task's output by the plain reference, on so many threads: tight rows, whole groups.
Bytes ReferenceRows(const BinTask& task, const uint8_t* src, int threads);

// Whether LibRaw can unpack such a frame: qc10 or vx12, its sides within its limit.
inline constexpr int kLibRawLongestSide = 65000;
bool LibRawUnpacks(const PackedFrame& frame);

// The codes of such a frame, row by row. Throws RunError when LibRaw refuses it.
std::vector<uint16_t> LibRawCodes(const PackedFrame& frame, const uint8_t* bytes);

}  // namespace tarn::tool

#endif  // TARN_TOOL_WITNESS_H_
