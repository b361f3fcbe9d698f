#include "tools/tarn/mosaic.h"

#include <libraw/libraw.h>

#include <cctype>
#include <memory>

#include "tools/tarn/message.h"

namespace tarn::tool {
namespace {

constexpr int64_t kMostFileBytes = int64_t{1} << 31;

// Reads the next number of a PGM header, past blanks and comments; -1 when there is none.
int64_t NextNumber(const Bytes& bytes, size_t* at) {
    while (*at < bytes.size() && (std::isspace(bytes[*at]) || bytes[*at] == '#')) {
        if (bytes[*at] != '#') {
            ++*at;
            continue;
        }
        while (*at < bytes.size() && bytes[*at] != '\n') ++*at;
    }
    int64_t number = -1;
    for (; *at < bytes.size() && std::isdigit(bytes[*at]) && number < 100'000'000; ++*at) {
        number = (number < 0 ? 0 : number) * 10 + (bytes[*at] - '0');
    }
    return number;
}

Mosaic ReadPgm(const std::string& name, const Bytes& bytes) {
    size_t at = 2;
    const int64_t width = NextNumber(bytes, &at);
    const int64_t height = NextNumber(bytes, &at);
    const int64_t maximum = NextNumber(bytes, &at);
    ++at;  // the one blank after the header
    if (width < 1 || height < 1 || maximum < 1 || maximum > 65535) {
        throw UserError(Text(name, ": is a PGM with a broken header"));
    }
    const int64_t sampleBytes = maximum > 255 ? 2 : 1;
    const int64_t needed = width * height * sampleBytes;
    const int64_t held = static_cast<int64_t>(bytes.size()) - static_cast<int64_t>(at);
    if (held < needed) {
        throw UserError(Text(name, " holds ", Grouped(held < 0 ? 0 : held), " bytes of samples; ",
                             width, "x", height, " needs ", Grouped(needed)));
    }
    Mosaic mosaic;
    mosaic.width = static_cast<int>(width);
    mosaic.height = static_cast<int>(height);
    mosaic.white = static_cast<double>(maximum);
    mosaic.samples.resize(static_cast<size_t>(width * height));
    for (uint16_t& sample : mosaic.samples) {
        sample = bytes[at++];
        if (sampleBytes == 2) sample = static_cast<uint16_t>(sample << 8 | bytes[at++]);
    }
    return mosaic;
}

// The colour letters of the top left 2x2, or nothing when the sensor has another pattern.
std::string BayerColours(LibRaw* raw) {
    if (raw->imgdata.idata.filters < 1000 || raw->imgdata.idata.colors != 3) return "";
    std::string colours;
    for (int i = 0; i < 4; ++i) colours += raw->imgdata.idata.cdesc[raw->COLOR(i / 2, i % 2)];
    for (const char* order : {"RGGB", "GRBG", "GBRG", "BGGR"}) {
        if (colours == order) return colours;
    }
    return "";
}

void TakeLevels(LibRaw* raw, Mosaic* mosaic) {
    const libraw_colordata_t& colour = raw->imgdata.color;
    const unsigned patternRows = colour.cblack[4];
    const unsigned patternColumns = colour.cblack[5];
    for (unsigned i = 0; i < 4; ++i) {
        const int row = static_cast<int>(i / 2), column = static_cast<int>(i % 2);
        unsigned black = colour.black + colour.cblack[raw->COLOR(row, column)];
        if (patternRows > 0 && patternColumns > 0) {
            black +=
                colour.cblack[6 + i / 2 % patternRows * patternColumns + i % 2 % patternColumns];
        }
        mosaic->black[i] = black;
    }
    mosaic->white = colour.maximum;
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
    int error = raw->open_buffer(bytes.data(), bytes.size());
    if (error == LIBRAW_SUCCESS) {
        CheckSizes(name, bytes.size(), raw->imgdata.sizes);
        error = raw->unpack();
    }
    if (error != LIBRAW_SUCCESS) {
        throw UserError(Text(name, ": is neither a PGM (P5) nor a camera raw that can be read: ",
                             libraw_strerror(error)));
    }
    Mosaic mosaic;
    mosaic.colours = BayerColours(raw.get());
    const ushort* image = raw->imgdata.rawdata.raw_image;
    if (mosaic.colours.empty() || !image) {
        throw UserError(Text(name, ": is not from a sensor with a 2x2 Bayer pattern"));
    }
    const libraw_image_sizes_t& sizes = raw->imgdata.sizes;
    mosaic.width = sizes.width;
    mosaic.height = sizes.height;
    mosaic.camera = true;
    CheckSizes(name, bytes.size(), sizes);  // unpacking may have changed them
    TakeLevels(raw.get(), &mosaic);
    for (int y = 0; y < mosaic.height; ++y) {
        const ushort* row = image + size_t{sizes.raw_pitch} / 2 * (size_t(y) + sizes.top_margin) +
                            sizes.left_margin;
        mosaic.samples.insert(mosaic.samples.end(), row, row + mosaic.width);
    }
    return mosaic;
}

}  // namespace

Mosaic ReadMosaic(const std::string& path) {
    const std::string name = InputName(path);
    Bytes bytes = ReadFile(path, kMostFileBytes);
    if (int64_t(bytes.size()) > kMostFileBytes)
        throw UserError(Text(name, ": is larger than 2 GiB"));
    if (bytes.size() > 2 && bytes[0] == 'P' && bytes[1] == '5') return ReadPgm(name, bytes);
    return ReadCameraRaw(name, bytes);
}

}  // namespace tarn::tool
