#ifndef TARN_REFERENCE_OPERATION_H_
#define TARN_REFERENCE_OPERATION_H_

#include "reference/packing.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace tarn_reference {

/// When a value is compensated for the gain.
enum class Compensation {
    Always,       // whatever the gain
    AboveOne,     // gain > 1: every position written
    WithinWidth,  // gain > 1: only positions below the output width
    Never
};

/// One frame operation, described by data.
struct Operation {
    const char* name;
    Packing in;
    Packing out;
    int cell;        // n x n pixels make one; 1: no binning, the pitch is walked instead of a width
    int columnStep;  // output columns whose cells are read together (a partial step is read whole)
    bool quartersRows;  // each row of a cell is divided by four before the rows are added
    int divisor;        // of the cell's sum on its way out
    int pedestal;       // at the scale of the sum
    int maximum;        // likewise
    Compensation compensation;
    bool fillsPitches;  // missing pitches are replaced first
    bool followsInput;  // without binning: rows and pitch are the input's, else the output's
    int lineBytes;      // bytes delivered per output row whatever the width; 0: the groups alone
};

/// All frame operations: the binning and EV operations of both families, then the NEON engine's.
std::span<const Operation> Operations();

struct Geometry {
    int inWidth, inStride, inHeight, outWidth, outStride, outHeight;
};

/// What one frame touches: so many bytes from the start of so many rows, `pitch` apart.
struct Extent {
    std::int64_t rows = 0;
    std::int64_t bytes = 0;
    std::int64_t pitch = 0;
};

struct Footprint {
    int result = 0;  // what the operation answers; a refusal touches nothing
    Extent read;
    Extent written;
};

/// Everything a call may read or write; nothing else may be touched.
Footprint FootprintOf(const Operation& operation, Geometry geometry);

/// Makes `destination` what the operation must make of it; returns what it must return.
int Run(const Operation& operation, const std::uint8_t* source, std::uint8_t* destination,
        const Geometry& geometry, float gain);

/// trunc(pedestal + gain * (value - pedestal)) with a single rounding, held within the bounds.
unsigned Compensate(unsigned value, int pedestal, int maximum, float gain);

/// ceil(width / unit) * unit * 5 / 4, the quotient in single precision. unit: QC 64, VX 32.
int Pitch(int width, int unit);

/// Replaces a pitch that is 0 or equals its width or height.
Geometry WithPitches(Geometry geometry, int unit);

}  // namespace tarn_reference

#endif  // TARN_REFERENCE_OPERATION_H_
