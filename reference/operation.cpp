#include "reference/operation.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace tarn_reference {
namespace {

using enum Packing;
using enum Compensation;

// clang-format off
// name, in, out, cell, step, quarters, divisor, pedestal, maximum, compensation, fills, input, line
constexpr Operation kOperations[] = {
    {"QC_Tetra10",        QCRaw10,  QCRaw10,  2, 2, false, 4,  256,  4095,  AboveOne,    true,  false, 0},
    {"QC_Tetra12",        QCRaw12,  QCRaw12,  2, 1, false, 4,  1024, 16383, AboveOne,    true,  false, 0},
    {"QC_Nona10",         QCRaw10,  QCRaw10,  3, 4, false, 9,  576,  9215,  WithinWidth, false, false, 0},
    {"QC_Hexadeca10",     QCRaw10,  QCRaw10,  4, 1, true,  4,  256,  4095,  AboveOne,    true,  false, 0},
    {"VX_Tetra10",        VXRaw10,  VXRaw10,  2, 2, false, 4,  256,  4095,  AboveOne,    false, false, 0},
    {"VX_Tetra10to12",    VXRaw10,  VXRaw12,  2, 2, false, 1,  256,  4095,  AboveOne,    false, false, 0},
    {"VX_Tetra12to10",    VXRaw12,  VXRaw10,  2, 1, false, 16, 1024, 16383, AboveOne,    false, false, 0},
    {"VX_Tetra12",        VXRaw12,  VXRaw12,  2, 1, false, 4,  1024, 16383, AboveOne,    false, false, 0},
    {"VX_Nona10",         VXRaw10,  VXRaw10,  3, 4, false, 9,  576,  9215,  WithinWidth, false, false, 0},
    {"VX_Hexadeca10",     VXRaw10,  VXRaw10,  4, 1, false, 16, 1024, 16383, AboveOne,    false, false, 0},
    {"VX_Hexadeca10to12", VXRaw10,  VXRaw12,  4, 1, false, 4,  1024, 16383, AboveOne,    false, false, 0},
    {"QC_EV10",           QCRaw10,  QCRaw10,  1, 0, false, 1,  64,   1023,  Always,      false, false, 0},
    {"QC_EV12",           QCRaw12,  QCRaw12,  1, 0, false, 1,  256,  4095,  Always,      false, false, 0},
    {"VX_EV10",           VXRaw10,  VXRaw10,  1, 0, false, 1,  64,   1023,  Always,      false, true,  0},
    {"VX_EV12",           VXRaw12,  VXRaw12,  1, 0, false, 1,  256,  4095,  Always,      false, true,  0},
    {"NEON_Tetra10",      QCRaw10,  QCRaw10,  2, 4, false, 4,  0,    0,     Never,       false, false, 5120},
    {"NEON_Hexadeca10",   QCRaw10,  QCRaw10,  4, 4, true,  4,  0,    0,     Never,       false, false, 5120},
};
// clang-format on

std::int64_t RoundUp(std::int64_t value, int unit) {
    return (value + unit - 1) / unit * unit;
}

std::int64_t PackedBytes(Packing packing, std::int64_t pixels) {
    return RoundUp(pixels, GroupPixels(packing)) / GroupPixels(packing) * GroupBytes(packing);
}

unsigned CellSum(const Operation& operation, const std::uint8_t* rows, std::int64_t pitch,
                 std::int64_t x) {
    unsigned sum = 0;
    for (int j = 0; j < operation.cell; ++j) {
        unsigned ofRow = 0;
        for (int i = 0; i < operation.cell; ++i) {
            ofRow += ReadPixel(operation.in, rows + j * pitch,
                               static_cast<std::size_t>(x * operation.cell + i));
        }
        sum += operation.quartersRows ? ofRow / 4 : ofRow;
    }
    return sum;
}

unsigned BinnedPixel(const Operation& operation, const std::uint8_t* rows, std::int64_t pitch,
                     std::int64_t x, int outWidth, float gain) {
    const bool isRead = x < RoundUp(outWidth, operation.columnStep);
    const unsigned sum = isRead ? CellSum(operation, rows, pitch, x) : 0;
    const bool compensated =
        gain > 1.0F && (operation.compensation == AboveOne ||
                        (operation.compensation == WithinWidth && x < outWidth));
    const unsigned value =
        compensated ? Compensate(sum, operation.pedestal, operation.maximum, gain) : sum;
    return value / static_cast<unsigned>(operation.divisor);
}

void Bin(const Operation& operation, const std::uint8_t* source, std::uint8_t* destination,
         const Footprint& footprint, int outWidth, float gain) {
    const std::int64_t packed = PackedBytes(operation.out, outWidth);
    std::vector<std::uint8_t> line(
        static_cast<std::size_t>(std::max<std::int64_t>(packed, operation.lineBytes)));
    for (std::int64_t y = 0; y < footprint.written.rows; ++y) {
        const std::uint8_t* rows = source + y * operation.cell * footprint.read.pitch;
        for (std::int64_t x = 0; x < RoundUp(outWidth, GroupPixels(operation.out)); ++x) {
            WritePixel(operation.out, line.data(), static_cast<std::size_t>(x),
                       BinnedPixel(operation, rows, footprint.read.pitch, x, outWidth, gain));
        }
        std::copy_n(line.data(), footprint.written.bytes,
                    destination + y * footprint.written.pitch);
    }
}

void CompensateFrame(const Operation& operation, const std::uint8_t* source,
                     std::uint8_t* destination, const Extent& extent, float gain) {
    const std::int64_t pixels = extent.bytes / GroupBytes(operation.in) * GroupPixels(operation.in);
    for (std::int64_t y = 0; y < extent.rows; ++y) {
        for (std::size_t x = 0; x < static_cast<std::size_t>(pixels); ++x) {
            const unsigned value = ReadPixel(operation.in, source + y * extent.pitch, x);
            WritePixel(operation.out, destination + y * extent.pitch, x,
                       Compensate(value, operation.pedestal, operation.maximum, gain));
        }
    }
}

Footprint PitchWalk(const Operation& operation, const Geometry& geometry) {
    const int rows = operation.followsInput ? geometry.inHeight : geometry.outHeight;
    const int pitch = operation.followsInput ? geometry.inStride : geometry.outStride;
    if (rows < 1 || pitch < 1) return {};
    const Extent walked{
        rows, std::int64_t{pitch} / GroupBytes(operation.in) * GroupBytes(operation.in), pitch};
    return {0, walked, walked};
}

bool Missing(int pitch, int width, int height) {
    return pitch == 0 || pitch == width || pitch == height;
}

// A pitch that is filled in knows nothing of depths: 12-bit rows that do not fit it are refused.
bool Refused(const Geometry& given, const Geometry& filled, std::int64_t needed,
             std::int64_t packed) {
    return (Missing(given.inStride, given.inWidth, given.inHeight) && filled.inStride < needed) ||
           (Missing(given.outStride, given.outWidth, given.outHeight) && filled.outStride < packed);
}

}  // namespace

std::span<const Operation> Operations() {
    return kOperations;
}

Footprint FootprintOf(const Operation& operation, Geometry geometry) {
    if (operation.cell == 1) return PitchWalk(operation, geometry);
    const Geometry given = geometry;
    if (operation.fillsPitches) geometry = WithPitches(geometry, 64);
    if (geometry.outHeight < 1) return {};
    if (operation.lineBytes > 0 &&
        PackedBytes(operation.out, geometry.outWidth) > operation.lineBytes)
        return {-1, {}, {}};

    const std::int64_t width = std::max(geometry.outWidth, 0);
    const std::int64_t cells = RoundUp(width, operation.columnStep);
    const std::int64_t needed = PackedBytes(operation.in, cells * operation.cell);
    const std::int64_t packed = PackedBytes(operation.out, width);
    if (operation.in == QCRaw12 && width > 0 && Refused(given, geometry, needed, packed))
        return {-1, {}, {}};
    const std::int64_t delivered =
        operation.lineBytes > 0 ? std::clamp(geometry.outStride, 0, operation.lineBytes) : packed;
    const std::int64_t rows = geometry.outHeight;
    return {0,
            {rows * operation.cell, needed, geometry.inStride},
            {rows, delivered, geometry.outStride}};
}

int Run(const Operation& operation, const std::uint8_t* source, std::uint8_t* destination,
        const Geometry& geometry, float gain) {
    const Footprint footprint = FootprintOf(operation, geometry);
    if (footprint.written.rows == 0 || footprint.written.bytes == 0) return footprint.result;
    if (operation.cell == 1) {
        CompensateFrame(operation, source, destination, footprint.read, gain);
    } else {
        Bin(operation, source, destination, footprint, std::max(geometry.outWidth, 0), gain);
    }
    return footprint.result;
}

unsigned Compensate(unsigned value, int pedestal, int maximum, float gain) {
    const auto distance = static_cast<float>(static_cast<int>(value) - pedestal);
    const float result = std::fmaf(gain, distance, static_cast<float>(pedestal));
    if (std::isnan(result) || result < static_cast<float>(pedestal))
        return static_cast<unsigned>(pedestal);
    if (result > static_cast<float>(maximum)) return static_cast<unsigned>(maximum);
    return static_cast<unsigned>(result);
}

int Pitch(int width, int unit) {
    const float quotient = static_cast<float>(width) / static_cast<float>(unit);
    const auto bytes =
        static_cast<std::int64_t>(std::ceil(quotient)) * (std::int64_t{unit} / 4 * 5);
    return static_cast<int>(static_cast<std::uint32_t>(bytes));  // wraps where it must
}

Geometry WithPitches(Geometry geometry, int unit) {
    if (Missing(geometry.inStride, geometry.inWidth, geometry.inHeight)) {
        geometry.inStride = Pitch(geometry.inWidth, unit);
    }
    if (Missing(geometry.outStride, geometry.outWidth, geometry.outHeight)) {
        geometry.outStride = Pitch(geometry.outWidth, unit);
    }
    return geometry;
}

}  // namespace tarn_reference
