#include "pictures/mosaic.h"

#include <libraw/libraw.h>

#include <memory>

#include "frames/geometry.h"
#include "frames/pnm.h"

namespace tarn::pictures {
namespace {

constexpr int64_t kMostFileBytes = int64_t{1} << 31;

Mosaic ReadPgm(const std::string& name, const Bytes& bytes) {
    Pnm pgm = DecodePnm(name, bytes);
    Mosaic mosaic;
    mosaic.width = pgm.width;
    mosaic.height = pgm.height;
    mosaic.white = pgm.maximum;
    mosaic.samples = std::move(pgm.samples);
    return mosaic;
}

// The colour letters of the top left 2x2, or nothing when the sensor has another pattern.
std::string BayerColours(LibRaw* raw) {
    if (raw->imgdata.idata.filters < 1000 || raw->imgdata.idata.colors != 3) return "";
    std::string colours;
    for (int i = 0; i < 4; ++i) colours += raw->imgdata.idata.cdesc[raw->COLOR(i / 2, i % 2)];
    for (const char* order : kColourOrders) {
        if (colours == order) return colours;
    }
    return "";
}

void TakeLevels(LibRaw* raw, Mosaic* mosaic) {
    const libraw_colordata_t& colour = raw->imgdata.color;
    const uint64_t patternRows = colour.cblack[4];
    const uint64_t patternColumns = colour.cblack[5];
    const bool hasPattern = patternRows > 0 && patternColumns > 0 &&
                            patternRows * patternColumns <= std::size(colour.cblack) - 6;
    for (unsigned i = 0; i < 4; ++i) {
        const int row = static_cast<int>(i / 2), column = static_cast<int>(i % 2);
        unsigned black = colour.black + colour.cblack[raw->COLOR(row, column)];
        if (hasPattern) {
            black +=
                colour.cblack[6 + i / 2 % patternRows * patternColumns + i % 2 % patternColumns];
        }
        mosaic->black[i] = black;
    }
    mosaic->white = colour.maximum;
    const float* shot = colour.cam_mul;
    if (!(shot[0] > 0 && shot[1] > 0 && shot[2] > 0)) return;
    for (int i = 0; i < 3; ++i) mosaic->balance[i] = double(shot[i]) / double(shot[1]);
}

// A header can claim any size. No compression packs more pixels than these into a byte.
void CheckSizes(const std::string& name, size_t bytes, const libraw_image_sizes_t& sizes) {
    constexpr int64_t kMostPixelsPerByte = 32;
    const int64_t pixels = int64_t{sizes.raw_width} * sizes.raw_height;
    if (pixels > int64_t(bytes) * kMostPixelsPerByte) {
        throw UserError(Text(name, ": claims ", sizes.raw_width, "x", sizes.raw_height,
                             " pixels, but holds only ", Grouped(int64_t(bytes)), " bytes"));
    }
    if (sizes.left_margin + sizes.width > sizes.raw_width ||
        sizes.top_margin + sizes.height > sizes.raw_height || sizes.width < 1 || sizes.height < 1) {
        throw UserError(Text(name, ": its visible area is not inside its ", sizes.raw_width, "x",
                             sizes.raw_height, " pixels"));
    }
}

Mosaic ReadCameraRaw(const std::string& name, Bytes& bytes) {
    const auto raw = std::make_unique<LibRaw>();  // too large for the stack
    raw->set_dataerror_handler(nullptr, nullptr);
    const auto complaint = [&](int error) {
        return Text(name, ": is neither a PGM (P5) nor a camera raw that can be read: ",
                    libraw_strerror(error));
    };
    const int opened = raw->open_buffer(bytes.data(), bytes.size());
    if (opened != LIBRAW_SUCCESS) throw NoPicture(complaint(opened));
    CheckSizes(name, bytes.size(), raw->imgdata.sizes);
    const int unpacked = raw->unpack();
    if (unpacked != LIBRAW_SUCCESS) throw UserError(complaint(unpacked));
    return MosaicOf(name, bytes.size(), raw.get());
}

}  // namespace

Mosaic MosaicOf(const std::string& name, size_t bytes, LibRaw* raw) {
    Mosaic mosaic;
    mosaic.colours = BayerColours(raw);
    const ushort* image = raw->imgdata.rawdata.raw_image;
    if (mosaic.colours.empty() || !image) {
        throw UserError(Text(name, ": is not from a sensor with a 2x2 Bayer pattern"));
    }
    const libraw_image_sizes_t& sizes = raw->imgdata.sizes;
    CheckSizes(name, bytes, sizes);  // unpacking may have changed them
    if (sizes.raw_pitch / 2 < sizes.raw_width) {
        throw UserError(Text(name, ": its rows of ", sizes.raw_width, " pixels are said to lie ",
                             sizes.raw_pitch, " bytes apart"));
    }
    mosaic.width = sizes.width;
    mosaic.height = sizes.height;
    mosaic.camera = true;
    TakeLevels(raw, &mosaic);
    for (int y = 0; y < mosaic.height; ++y) {
        const ushort* row = image + size_t{sizes.raw_pitch} / 2 * (size_t(y) + sizes.top_margin) +
                            sizes.left_margin;
        mosaic.samples.insert(mosaic.samples.end(), row, row + mosaic.width);
    }
    return mosaic;
}

Mosaic DecodeMosaic(const std::string& name, Bytes& bytes) {
    return IsPgm(bytes) ? ReadPgm(name, bytes) : ReadCameraRaw(name, bytes);
}

Bytes ReadPictureFile(const std::string& path) {
    Bytes bytes = ReadFile(path, kMostFileBytes);
    if (int64_t(bytes.size()) <= kMostFileBytes) return bytes;
    throw NoPicture(Text(InputName(path), ": is larger than 2 GiB"));
}

Mosaic ReadMosaic(const std::string& path) {
    Bytes bytes = ReadPictureFile(path);
    return DecodeMosaic(InputName(path), bytes);
}

}  // namespace tarn::pictures
