#include "pictures/witness.h"

#include <libraw/libraw.h>

#include <algorithm>
#include <memory>
#include <string_view>
#include <vector>

#include "frames/message.h"
#include "pictures/parallel.h"
#include "reference/operation.h"

namespace tarn::pictures {
namespace {

namespace ref = tarn_reference;

// In the order of Layout.
constexpr ref::Packing kPackings[] = {ref::Packing::QCRaw10, ref::Packing::QCRaw12,
                                      ref::Packing::VXRaw10, ref::Packing::VXRaw12};
static_assert(std::size(kPackings) == kLayoutCount);

const ref::Operation& FindOperation(const BinTask& task) {
    for (const ref::Operation& operation : ref::Operations()) {
        if (operation.in == kPackings[static_cast<int>(task.in.layout)] &&
            operation.out == kPackings[static_cast<int>(task.out.layout)] &&
            operation.cell == task.cell && operation.lineBytes == 0) {
            return operation;
        }
    }
    throw RunError("the reference has no such operation");
}

// Rows at a pitch of their own, zero past their groups.
Bytes CopyRows(const PackedFrame& frame, const uint8_t* bytes, int64_t pitch) {
    Bytes rows(static_cast<size_t>(pitch * frame.height));
    for (int64_t y = 0; y < frame.height; ++y) {
        std::copy_n(bytes + y * frame.pitch, frame.RowBytes(), rows.data() + y * pitch);
    }
    return rows;
}

// open_bayer tells the layouts by these (its otherflags).
constexpr unsigned kRaw10Groups = 1;
constexpr unsigned kLittleEndianPairs = 80;

}  // namespace

Bytes ReferenceRows(const BinTask& task, const uint8_t* src, int threads) {
    const ref::Operation& operation = FindOperation(task);
    const int rowBytes = static_cast<int>(task.out.RowBytes());
    Bytes result(static_cast<size_t>(int64_t{rowBytes} * task.out.height));
    // One output row after another: widths, heights and pitches that could be mistaken for one
    // another do not meet, and one row's worth of input is copied at a time. A whole step of four
    // output pixels is there to be read.
    PackedFrame strip = task.in;
    strip.height = task.cell;
    const int pitch = task.cell == 1
                          ? rowBytes
                          : static_cast<int>((int64_t{task.out.width} + 3) / 4 * 5 * task.cell +
                                             task.in.RowBytes());
    const ref::Geometry geometry{task.cell == 1 ? task.in.width : -1,
                                 pitch,
                                 task.cell == 1 ? 1 : -1,
                                 task.out.width,
                                 rowBytes,
                                 1};
    ParallelFor(task.out.height, threads, [&](int64_t y, int) {
        const Bytes rows = CopyRows(strip, src + y * task.cell * task.in.pitch, pitch);
        ref::Run(operation, rows.data(), result.data() + y * rowBytes, geometry, task.gain);
        return true;
    });
    return result;
}

bool LibRawUnpacks(const PackedFrame& frame) {
    return (frame.layout == Layout::QCRaw10 || frame.layout == Layout::VXRaw12) &&
           std::max(frame.width, frame.height) <= kLibRawLongestSide;
}

std::vector<uint16_t> LibRawCodes(const PackedFrame& frame, const uint8_t* bytes) {
    // It wants rows of whole units, whatever part of them is shown.
    const GroupShape& shape = Shape(frame.layout);
    const int unit = frame.layout == Layout::QCRaw10 ? 40 : 6;
    const int64_t pitch = (frame.RowBytes() + unit - 1) / unit * unit;
    const int rawWidth = static_cast<int>(pitch / shape.bytes * shape.pixels);
    Bytes rows = CopyRows(frame, bytes, pitch);

    const auto raw = std::make_unique<LibRaw>();  // too large for the stack
    int error =
        raw->open_bayer(rows.data(), static_cast<unsigned>(rows.size()),
                        static_cast<ushort>(rawWidth), static_cast<ushort>(frame.height), 0, 0,
                        static_cast<ushort>(rawWidth - frame.width), 0, 0, LIBRAW_OPENBAYER_RGGB, 0,
                        frame.layout == Layout::QCRaw10 ? kRaw10Groups : kLittleEndianPairs, 0);
    if (error == LIBRAW_SUCCESS) error = raw->unpack();
    if (error != LIBRAW_SUCCESS) {
        throw RunError(Text("LibRaw refuses the frame: ", libraw_strerror(error)));
    }
    std::vector<uint16_t> codes;
    codes.reserve(static_cast<size_t>(int64_t{frame.width} * frame.height));
    for (int y = 0; y < frame.height; ++y) {
        const ushort* row = raw->imgdata.rawdata.raw_image + int64_t{rawWidth} * y;
        codes.insert(codes.end(), row, row + frame.width);
    }
    return codes;
}

}  // namespace tarn::pictures
