// The library on any geometry, each call checked before it is made.
//
// The engine operations validate nothing, and some of them take a pitch that equals a width or a
// height for a missing one, read past a tight row, or walk the row padding. A task says what is
// wanted; it is done by one or more calls whose geometry holds no such surprise.
#ifndef TARN_FRAMES_SAFE_CALL_H_
#define TARN_FRAMES_SAFE_CALL_H_

#include <span>
#include <string>

#include "frames/packed_frame.h"

namespace tarn::frames {

struct BinTask {
    PackedFrame in;
    PackedFrame out;
    int cell;    // pixels per side that become one; 1: no binning, gain only
    float gain;  // around the black level; binning applies it above 1.0 only
};

// The frame made of the whole cells of `in`, in its layout or one of its family, at a tight pitch.
BinTask MakeTask(const PackedFrame& in, Layout out, int cell, float gain);

// Throws UserError, "name: " and the library's sentence, when the task cannot be done.
void CheckTask(const std::string& name, const BinTask& task);

// The part of a task that makes so many output rows from `row` on.
BinTask RowsOf(const BinTask& task, int64_t row, int64_t rows);

// Does a task, on this thread. src holds in.LeastBytes(), dst out.LeastBytes(); row padding of dst
// is left as it is. Positions past the width in a row's last group depend on that row's own groups
// only: what Nona reads past them is zero, whatever the padding holds. Throws UserError, as above.
void RunTask(const BinTask& task, std::span<const uint8_t> src, std::span<uint8_t> dst);

}  // namespace tarn::frames

#endif  // TARN_FRAMES_SAFE_CALL_H_
