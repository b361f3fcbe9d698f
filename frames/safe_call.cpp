#include "frames/safe_call.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "TarnChecked.h"
#include "engines/TarnQCEngine.h"
#include "engines/TarnVXEngine.h"
#include "frames/message.h"

namespace tarn::frames {
namespace {

using Source = std::span<const uint8_t>;
using Destination = std::span<uint8_t>;

TarnCall Check(const BinTask& task, const BufferInfo& info, int64_t srcBytes, int64_t dstBytes) {
    return TarnCheckEngine(IsVX(task.in.layout) ? 1 : 0, task.cell, Shape(task.in.layout).bits,
                           Shape(task.out.layout).bits, info, srcBytes, dstBytes);
}

// The operation itself, not Process, which would choose the pattern by the width.
void Call(TarnOperation operation, uint8_t* src, uint8_t* dst, const BufferInfo& info, float gain,
          int outFormat) {
    const SensorInfo sensor{1.0f, gain};
    TarnQCEngine qc;
    TarnVXEngine vx;
    switch (operation) {
        case TarnOperation::QCEVComp10: qc.EVComp_10bit(src, dst, info, sensor); break;
        case TarnOperation::QCEVComp12: qc.EVComp_12bit(src, dst, info, sensor); break;
        case TarnOperation::QCTetra10: qc.Binning_10bit_Tetra(src, dst, info, sensor); break;
        case TarnOperation::QCTetra12: qc.Binning_12bit_Tetra(src, dst, info, sensor); break;
        case TarnOperation::QCNona: qc.Binning_10bit_Nona(src, dst, info, sensor); break;
        case TarnOperation::QCHexadeca: qc.Binning_10bit_Hexadeca(src, dst, info, sensor); break;
        case TarnOperation::VXEVComp10: vx.EVComp_10bit(src, dst, info, sensor, outFormat); break;
        case TarnOperation::VXEVComp12: vx.EVComp_12bit(src, dst, info, sensor, outFormat); break;
        case TarnOperation::VXTetra10:
            vx.Binning_10bit_Tetra(src, dst, info, sensor, outFormat);
            break;
        case TarnOperation::VXTetra12:
            vx.Binning_12bit_Tetra(src, dst, info, sensor, outFormat);
            break;
        case TarnOperation::VXNona: vx.Binning_10bit_Nona(src, dst, info, sensor, outFormat); break;
        case TarnOperation::VXHexadeca:
            vx.Binning_10bit_Hexadeca(src, dst, info, sensor, outFormat);
            break;
        case TarnOperation::None:
        case TarnOperation::NEONTetra10:
        case TarnOperation::NEONHexadeca: break;
    }
}

// The first call of those that do a task.
BufferInfo FirstCall(const BinTask& task) {
    const int inPitch = static_cast<int>(task.in.pitch);
    const int outPitch = static_cast<int>(task.out.pitch);
    int rows = task.out.height;
    if (task.cell == 1) {
        // One pitch serves both buffers, and row padding is taken for pixels: unless all rows are
        // whole groups and nothing else, they go one by one.
        const int pitch = static_cast<int>(task.in.RowBytes());
        if (inPitch != pitch || outPitch != pitch) rows = std::min(rows, 1);
        return {task.in.width, pitch, rows, task.out.width, pitch, rows};
    }
    // A pitch that equals a width or a height counts as missing. No packed row is as short as its
    // width. Of the input's rows there may be one more than are read; of the output's, the last one
    // goes alone.
    if (rows == outPitch && rows > 1) --rows;
    const int inRows = task.in.height + (task.in.height == inPitch);
    return {task.in.width, inPitch, inRows, task.out.width, outPitch, rows};
}

void RunCalls(const BinTask& task, Source src, Destination dst) {
    for (int64_t y = 0; y < task.out.height;) {
        const BinTask left = RowsOf(task, y, task.out.height - y);
        const BufferInfo info = FirstCall(left);
        const Source from = src.subspan(size_t(y * task.cell * task.in.pitch));
        const Destination to = dst.subspan(size_t(y * task.out.pitch));
        const TarnCall call = Check(left, info, int64_t(from.size()), int64_t(to.size()));
        if (call.problem != TarnProblem::None) throw UserError(call.sentence);
        // Sources are not const in the interface, but none is written.
        Call(call.operation, const_cast<uint8_t*>(from.data()), to.data(), info, task.gain,
             Shape(task.out.layout).bits == 12 ? 10 : 0);
        y += info.outHeight;
    }
}

// Nona reads whole steps of four output pixels: the last ones, where the row ends before their step
// does, are made of a copy that does not.
constexpr int kStep = 4, kStepBytes = 15;

bool ReadsPastTheRow(const BinTask& task) {
    return task.cell == 3 &&
           (int64_t{task.out.width} + kStep - 1) / kStep * kStepBytes > task.in.RowBytes();
}

void RunLastStep(BinTask task, Source src, Destination dst) {
    const int64_t steps = task.out.width / kStep, at = steps * kStepBytes;
    const int64_t bytes = task.in.RowBytes() - at;
    const int64_t rows = int64_t{task.cell} * task.out.height;
    std::vector<uint8_t> copy(size_t(rows * kStepBytes));
    for (int64_t y = 0; y < rows; ++y) {
        std::memcpy(copy.data() + y * kStepBytes, src.data() + y * task.in.pitch + at,
                    size_t(bytes));
    }
    task.in.width -= static_cast<int>(steps) * kStep * task.cell;
    task.in.pitch = kStepBytes;
    task.out.width %= kStep;
    RunCalls(task, copy, dst.subspan(size_t(steps * Shape(task.out.layout).bytes)));
}

}  // namespace

BinTask MakeTask(const PackedFrame& in, Layout out, int cell, float gain) {
    BinTask task{in, {out, in.width / cell, in.height / cell, 0}, cell, gain};
    task.out.pitch = task.out.RowBytes();
    return task;
}

void CheckTask(const std::string& name, const BinTask& task) {
    // What is read past the last row will be a copy's.
    const int64_t past = ReadsPastTheRow(task) ? kStepBytes : 0;
    const TarnCall call =
        Check(task, FirstCall(task), task.in.LeastBytes() + past, task.out.LeastBytes());
    if (call.problem != TarnProblem::None) throw UserError(Text(name, ": ", call.sentence));
}

BinTask RowsOf(const BinTask& task, int64_t row, int64_t rows) {
    BinTask part = task;
    part.out.height = static_cast<int>(std::min(rows, task.out.height - row));
    part.in.height = part.out.height * task.cell;
    return part;
}

void RunTask(const BinTask& task, Source src, Destination dst) {
    if (!ReadsPastTheRow(task)) return RunCalls(task, src, dst);
    RunLastStep(task, src, dst);
    BinTask steps = task;
    steps.out.width -= task.out.width % kStep;
    steps.in.width = steps.out.width * task.cell;
    if (steps.out.width > 0) RunCalls(steps, src, dst);
}

}  // namespace tarn::frames
