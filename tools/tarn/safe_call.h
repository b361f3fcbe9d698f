// A call of the library for any geometry, checked and exact.
//
// The engine operations validate nothing, and some of them take a pitch that equals a width or a
// height for a missing one, read past a tight row, or walk the row padding. BinTask says what is
// wanted; Objection says why it cannot be, and RunTask does it without such surprises.
#ifndef TARN_TOOL_SAFE_CALL_H_
#define TARN_TOOL_SAFE_CALL_H_

#include <algorithm>
#include <chrono>
#include <climits>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "TarnQCEngine.h"
#include "TarnVXEngine.h"
#include "layout/packed_layouts.h"

namespace tarn {

struct PackedFrame {
    Layout layout;
    int width;      // pixels
    int height;     // rows
    int64_t pitch;  // bytes from one row to the next

    // The groups that hold the row's pixels; the last one may hold more than the row needs.
    int64_t RowBytes() const {
        const GroupShape& shape = Shape(layout);
        return (int64_t{width} + shape.pixels - 1) / shape.pixels * shape.bytes;
    }
    int64_t Bytes() const { return pitch * height; }
    // Without the padding of the last row, which no operation needs.
    int64_t LeastBytes() const { return pitch * (height - 1) + RowBytes(); }
};

struct BinTask {
    PackedFrame in;
    PackedFrame out;
    int cell;    // pixels per side that become one; 1: no binning, gain only
    float gain;  // around the black level; binning applies it above 1.0 only
};

inline bool IsVX(Layout layout) {
    return layout == Layout::VXRaw10 || layout == Layout::VXRaw12;
}

// Why a frame's geometry cannot be; empty when it can.
inline std::string Objection(const PackedFrame& frame) {
    if (frame.width < 1 || frame.height < 1) return "width and height must be at least 1";
    if (frame.pitch < frame.RowBytes()) {
        return "a row of " + std::to_string(frame.width) + " pixels takes " +
               std::to_string(frame.RowBytes()) + " bytes, more than the pitch of " +
               std::to_string(frame.pitch);
    }
    // Room for the few bytes by which Nona's reading may pass a row.
    if (frame.pitch > INT_MAX - 16) return "a pitch must stay below 2,147,483,632 bytes";
    return "";
}

// Why a task cannot be run; empty when it can.
inline std::string Objection(const BinTask& task) {
    const int inBits = Shape(task.in.layout).bits;
    const int outBits = Shape(task.out.layout).bits;
    if (task.cell < 1 || task.cell > 4) return "the cell must be 1, 2, 3 or 4";
    if (inBits == 12 && task.cell > 2) {
        return "12-bit frames can be binned 2x2 only: 3x3 and 4x4 binning exists for 10 bits";
    }
    const bool bothDepths = IsVX(task.in.layout) && (task.cell == 2 || task.cell == 4);
    if (IsVX(task.in.layout) != IsVX(task.out.layout) || (inBits != outBits && !bothDepths)) {
        return "the output has the input's family and depth; only VX frames binned 2x2 or 4x4 have "
               "a choice of 10 or 12 bits";
    }
    if (!std::isfinite(task.gain)) return "the gain must be a finite number";
    if (task.out.width != task.in.width / task.cell ||
        task.out.height != task.in.height / task.cell) {
        return "the output must be the input's size divided by the cell";
    }
    const std::string objection = Objection(task.in);
    return objection.empty() ? Objection(task.out) : objection;
}

namespace safe_call {

inline void CallQC(const BinTask& task, uint8_t* src, uint8_t* dst, const BufferInfo& info) {
    TarnQCEngine engine;
    const SensorInfo sensor{1.0f, task.gain};
    const bool twelve = task.in.layout == Layout::QCRaw12;
    switch (task.cell) {
        case 1:
            twelve ? engine.EVComp_12bit(src, dst, info, sensor)
                   : engine.EVComp_10bit(src, dst, info, sensor);
            break;
        case 2:
            twelve ? engine.Binning_12bit_Tetra(src, dst, info, sensor)
                   : engine.Binning_10bit_Tetra(src, dst, info, sensor);
            break;
        case 3: engine.Binning_10bit_Nona(src, dst, info, sensor); break;
        case 4: engine.Binning_10bit_Hexadeca(src, dst, info, sensor); break;
    }
}

inline void CallVX(const BinTask& task, uint8_t* src, uint8_t* dst, const BufferInfo& info) {
    TarnVXEngine engine;
    const SensorInfo sensor{1.0f, task.gain};
    const bool twelve = task.in.layout == Layout::VXRaw12;
    const int outFormat = task.out.layout == Layout::VXRaw12 ? 10 : 0;
    switch (task.cell) {
        case 1:
            twelve ? engine.EVComp_12bit(src, dst, info, sensor, outFormat)
                   : engine.EVComp_10bit(src, dst, info, sensor, outFormat);
            break;
        case 2:
            twelve ? engine.Binning_12bit_Tetra(src, dst, info, sensor, outFormat)
                   : engine.Binning_10bit_Tetra(src, dst, info, sensor, outFormat);
            break;
        case 3: engine.Binning_10bit_Nona(src, dst, info, sensor, outFormat); break;
        case 4: engine.Binning_10bit_Hexadeca(src, dst, info, sensor, outFormat); break;
    }
}

// Calls the operation itself, not Process, which would choose the pattern by the width. Returns
// milliseconds.
inline double Call(const BinTask& task, uint8_t* src, uint8_t* dst, const BufferInfo& info) {
    const auto start = std::chrono::steady_clock::now();
    (IsVX(task.in.layout) ? CallVX : CallQC)(task, src, dst, info);
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

inline void CopyRows(const uint8_t* src, int64_t srcPitch, uint8_t* dst, int64_t dstPitch,
                     int64_t bytes, int64_t rows) {
    for (int64_t y = 0; y < rows; ++y) {
        std::memcpy(dst + y * dstPitch, src + y * srcPitch, static_cast<size_t>(bytes));
    }
}

// The EV operations have one pitch for both buffers and take row padding for pixels: they get rows
// that are whole groups and nothing else.
inline double RunGain(const BinTask& task, const uint8_t* src, uint8_t* dst) {
    const int64_t rowBytes = task.in.RowBytes();
    const int rows = task.in.height;
    const int pitch = static_cast<int>(rowBytes);
    std::vector<uint8_t> frame(static_cast<size_t>(rowBytes * rows));
    CopyRows(src, task.in.pitch, frame.data(), rowBytes, rowBytes, rows);
    const BufferInfo info{task.in.width, pitch, rows, task.in.width, pitch, rows};
    const double milliseconds = Call(task, frame.data(), frame.data(), info);
    CopyRows(frame.data(), rowBytes, dst, task.out.pitch, rowBytes, rows);
    return milliseconds;
}

// Runs a binning operation on source rows that it may read as far as it likes.
inline double RunBinning(const BinTask& task, const uint8_t* src, int64_t srcPitch, uint8_t* dst) {
    const int outPitch = static_cast<int>(task.out.pitch);
    double milliseconds = 0;
    for (int64_t y = 0, rows = 0; y < task.out.height; y += rows) {
        // A pitch that equals a width or a height counts as missing. No packed row is as short as
        // its width, and the input's are read for nothing else, so they can be impossible ones; but
        // the output's height is what the loop runs to: where it would be mistaken, the last row
        // goes alone.
        rows = task.out.height - y;
        if (rows == outPitch) --rows;
        const BufferInfo info{-1,       static_cast<int>(srcPitch), -1, task.out.width,
                              outPitch, static_cast<int>(rows)};
        // Sources are not const in the interface, but none is written.
        milliseconds += Call(task, const_cast<uint8_t*>(src) + y * task.cell * srcPitch,
                             dst + y * outPitch, info);
    }
    return milliseconds;
}

}  // namespace safe_call

// Runs a task without objection. src holds in.LeastBytes(), dst out.LeastBytes(); row padding of
// dst is left as it is. Positions past the width in a row's last group depend on that row's own
// groups only: what Nona reads past them is zero, whatever the padding holds. Returns the
// milliseconds spent in the library.
inline double RunTask(const BinTask& task, const uint8_t* src, uint8_t* dst) {
    if (task.cell == 1) return safe_call::RunGain(task, src, dst);

    // Nona reads whole steps of four output pixels. The others stay within the row's groups.
    const int64_t rowBytes = task.in.RowBytes();
    const int64_t read = task.cell == 3 ? (int64_t{task.out.width} + 3) / 4 * 15 : rowBytes;
    if (read <= rowBytes) return safe_call::RunBinning(task, src, task.in.pitch, dst);

    const int64_t rows = int64_t{task.cell} * task.out.height;
    std::vector<uint8_t> wide(static_cast<size_t>(read * rows));
    safe_call::CopyRows(src, task.in.pitch, wide.data(), read, rowBytes, rows);
    return safe_call::RunBinning(task, wide.data(), read, dst);
}

}  // namespace tarn

#endif  // TARN_TOOL_SAFE_CALL_H_
