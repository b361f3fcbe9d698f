// What the codes of a frame are like: by colour position, in cells, in the row padding.
#ifndef TARN_FRAMES_STATISTICS_H_
#define TARN_FRAMES_STATISTICS_H_

#include <string>
#include <vector>

#include "frames/bytes.h"
#include "frames/packed_frame.h"

namespace tarn::frames {

// The codes of one colour position, the cell at row r and column c of each 2x2 of cells.
struct Tones {
    std::vector<int64_t> histogram;  // by code

    int64_t Count() const;
    double Mean() const;
    int Percentile(double percent) const;  // the least code that so many are not above; 0: least
};

struct Statistics {
    Tones position[4];     // 2r + c
    double clippedPixels;  // shares; clipped: at the highest code
    double clippedCells;   // whole cells with a clipped pixel: their sum is too low
    double belowBlack;     // pixels
    double imbalance;      // the largest deviation of a place inside the cell from the cell's mean
    int imbalanceColumn;   // that place
    int imbalanceRow;
    std::string padding;  // what the bytes past the rows' groups hold
};

Statistics MeasureFrame(const PackedFrame& frame, const Bytes& bytes, int cell);

// Share of binned pixels at the highest code after that gain.
double ClippedByGain(const PackedFrame& frame, const Bytes& bytes, int cell, float gain);

}  // namespace tarn::frames

#endif  // TARN_FRAMES_STATISTICS_H_
