#include "tools/tarn/picture.h"

#include <libraw/libraw.h>
#include <png.h>

#include <bit>
#include <cctype>
#include <memory>

#include "tools/tarn/message.h"

namespace tarn::tool {
namespace {

static_assert(std::endian::native == std::endian::little, "LibRaw is told little-endian codes");

// LibRaw's interpolation wants a border of a few pixels; its sizes are 16-bit.
constexpr int kShortestSide = 16;
constexpr int kLongestSide = 65535;

std::string Ending(const std::string& path) {
    const size_t slash = path.rfind('/');
    const size_t dot = path.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
    std::string ending = path.substr(dot + 1);
    for (char& c : ending) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ending;
}

template <class L>
void UnpackRow(const uint8_t* bytes, int width, uint16_t* codes) {
    uint16_t group[L::kGroupPixels];
    for (int x = 0; x < width; x += L::kGroupPixels, bytes += L::kGroupBytes) {
        L::Unpack(bytes, group);
        for (int k = 0; k < L::kGroupPixels && x + k < width; ++k) codes[x + k] = group[k];
    }
}

template <class L>
void PackRow(const uint16_t* codes, int width, uint8_t* bytes) {
    for (int x = 0; x < width; x += L::kGroupPixels, bytes += L::kGroupBytes) {
        uint16_t group[L::kGroupPixels] = {};
        for (int k = 0; k < L::kGroupPixels && x + k < width; ++k) group[k] = codes[x + k];
        L::Pack(group, bytes);
    }
}

// In the order of Layout.
constexpr decltype(&UnpackRow<QCRaw10>) kUnpackRow[] = {UnpackRow<QCRaw10>, UnpackRow<QCRaw12>,
                                                        UnpackRow<VXRaw10>, UnpackRow<VXRaw12>};
constexpr decltype(&PackRow<QCRaw10>) kPackRow[] = {PackRow<QCRaw10>, PackRow<QCRaw12>,
                                                    PackRow<VXRaw10>, PackRow<VXRaw12>};

unsigned char LibRawPattern(const std::string& colours) {
    if (colours == "BGGR") return LIBRAW_OPENBAYER_BGGR;
    if (colours == "GRBG") return LIBRAW_OPENBAYER_GRBG;
    if (colours == "GBRG") return LIBRAW_OPENBAYER_GBRG;
    return LIBRAW_OPENBAYER_RGGB;
}

void Expect(int libRawResult) {
    if (libRawResult != LIBRAW_SUCCESS) {
        throw RunError(Text("developing the frame failed: ", libraw_strerror(libRawResult)));
    }
}

struct FreeImage {
    void operator()(libraw_processed_image_t* image) const { LibRaw::dcraw_clear_mem(image); }
};
using Image = std::unique_ptr<libraw_processed_image_t, FreeImage>;

Image Develop(const PackedFrame& frame, std::vector<uint16_t>& codes, const std::string& colours,
              bool half) {
    const int bits = Shape(frame.layout).bits;
    const auto raw = std::make_unique<LibRaw>();  // too large for the stack
    libraw_output_params_t& settings = raw->imgdata.params;
    settings.use_auto_wb = 1;
    settings.half_size = half;
    settings.output_color = 0;   // the sensor's own: there is no matrix for it
    settings.gamm[0] = 1 / 2.4;  // sRGB, as a PNG without a gamma is taken
    settings.gamm[1] = 12.92;
    const unsigned flags = static_cast<unsigned>(16 - bits) << 4;  // 16-bit codes, that many unused
    Expect(raw->open_bayer(reinterpret_cast<unsigned char*>(codes.data()),
                           static_cast<unsigned>(codes.size() * 2),
                           static_cast<ushort>(frame.width), static_cast<ushort>(frame.height), 0,
                           0, 0, 0, 0, LibRawPattern(colours), 0, flags, 1u << (bits - 4)));
    Expect(raw->unpack());
    Expect(raw->dcraw_process());
    int error = LIBRAW_SUCCESS;
    Image image(raw->dcraw_make_mem_image(&error));
    Expect(error);
    return image;
}

}  // namespace

FileKind ParseFileKind(const std::string& to, const std::string& path) {
    const std::string kind = to.empty() ? Ending(path) : to;
    if (kind == "pgm") return FileKind::Pgm;
    if (kind == "png") return FileKind::Png;
    if (!to.empty() && to != "raw") {
        throw UserError(Text("--to: \"", to, "\" is none of raw, pgm, png"));
    }
    return FileKind::Packed;
}

std::vector<uint16_t> Unpack(const PackedFrame& frame, const uint8_t* bytes) {
    const size_t width = static_cast<size_t>(frame.width);
    std::vector<uint16_t> codes(width * static_cast<size_t>(frame.height));
    for (int y = 0; y < frame.height; ++y) {
        kUnpackRow[static_cast<int>(frame.layout)](bytes + y * frame.pitch, frame.width,
                                                   codes.data() + width * size_t(y));
    }
    return codes;
}

Bytes Pack(const PackedFrame& frame, const std::vector<uint16_t>& codes) {
    Bytes bytes(static_cast<size_t>(frame.Bytes()));
    for (int y = 0; y < frame.height; ++y) {
        kPackRow[static_cast<int>(frame.layout)](codes.data() + size_t(frame.width) * size_t(y),
                                                 frame.width, bytes.data() + y * frame.pitch);
    }
    return bytes;
}

Bytes EncodePgm(const PackedFrame& frame, const std::vector<uint16_t>& codes) {
    const int maximum = (1 << Shape(frame.layout).bits) - 1;
    const std::string header = Text("P5\n", frame.width, " ", frame.height, "\n", maximum, "\n");
    Bytes bytes(header.begin(), header.end());
    bytes.reserve(header.size() + codes.size() * 2);
    for (const uint16_t code : codes) {
        bytes.push_back(static_cast<uint8_t>(code >> 8));
        bytes.push_back(static_cast<uint8_t>(code));
    }
    return bytes;
}

Bytes DevelopPng(const PackedFrame& frame, std::vector<uint16_t> codes, const std::string& colours,
                 bool half) {
    if (std::min(frame.width, frame.height) < kShortestSide ||
        std::max(frame.width, frame.height) > kLongestSide ||
        int64_t{frame.width} * frame.height > INT_MAX / 2) {
        throw UserError(Text("a frame of ", frame.width, "x", frame.height,
                             " cannot be developed to a PNG: its sides must be from ",
                             kShortestSide, " to ", Grouped(kLongestSide)));
    }
    const Image image = Develop(frame, codes, colours, half);
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    png.width = image->width;
    png.height = image->height;
    png.format = PNG_FORMAT_RGB;
    Bytes bytes(PNG_IMAGE_PNG_SIZE_MAX(png));
    png_alloc_size_t size = bytes.size();
    if (!png_image_write_to_memory(&png, bytes.data(), &size, 0, image->data, 0, nullptr)) {
        throw RunError(Text("making the PNG failed: ", png.message));
    }
    bytes.resize(size);
    return bytes;
}

}  // namespace tarn::tool
