// How alike the pixels of a packed frame are under a hypothesis: the measurements behind a guess.
#ifndef TARN_FRAMES_LIKENESS_H_
#define TARN_FRAMES_LIKENESS_H_

#include <array>
#include <vector>

#include "frames/bytes.h"
#include "frames/packed_frame.h"

namespace tarn::frames {

// Bits per pixel, and as a share of the layout's bits, that neighbours one or two apart leave to be
// written: of each layout, in windows all over the file, at the best position of the groups. All 1
// when the bytes are too few, or all alike.
using LayoutShares = std::array<double, kLayoutCount>;
LayoutShares LayoutCosts(const Bytes& bytes);

// The same between rows, for each pitch from `least` on: the better of one row and two rows apart.
std::vector<double> PitchCosts(const Bytes& bytes, Layout layout, int64_t least, int64_t most);

// The same between neighbours of one colour, along rows and columns, if the cells are n x n.
struct CellCosts {
    double of[5];        // by n, from 1
    double contrast[5];  // by n: by how much other colours cost more, in the weaker direction
};
CellCosts MeasureCells(const Bytes& bytes, Layout layout, int64_t pitch);

}  // namespace tarn::frames

#endif  // TARN_FRAMES_LIKENESS_H_
