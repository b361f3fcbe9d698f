#include "pictures/png.h"

#include <libraw/libraw.h>
#include <png.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <memory>
#include <vector>

#include "frames/message.h"

namespace tarn::pictures {
namespace {

static_assert(std::endian::native == std::endian::little, "LibRaw is told little-endian codes");

// LibRaw's interpolation wants a border of a few pixels; its sizes are 16-bit.
constexpr int kShortestSide = 16;
constexpr int kLongestSide = 65535;
constexpr int64_t kMostPixels = INT_MAX / 2;

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

Image Develop(Picture& picture, bool half) {
    const auto raw = std::make_unique<LibRaw>();  // too large for the stack
    libraw_output_params_t& settings = raw->imgdata.params;
    const Balance& balance = picture.balance;
    settings.use_auto_wb = balance[0] == 0;
    for (size_t i = 0; i < 4; ++i)
        settings.user_mul[i] = static_cast<float>(balance[i % 3 + i / 3]);
    settings.half_size = half;
    settings.output_color = 0;   // the sensor's own: there is no matrix for it
    settings.gamm[0] = 1 / 2.4;  // sRGB, as a PNG without a gamma is taken
    settings.gamm[1] = 12.92;
    const unsigned unused = static_cast<unsigned>(16 - picture.bits);
    Expect(raw->open_bayer(reinterpret_cast<unsigned char*>(picture.codes.data()),
                           static_cast<unsigned>(picture.codes.size() * 2),
                           static_cast<ushort>(picture.width), static_cast<ushort>(picture.height),
                           0, 0, 0, 0, 0, LibRawPattern(picture.colours), 0, unused << 4,
                           static_cast<unsigned>(picture.black)));
    Expect(raw->unpack());
    raw->imgdata.color.maximum = static_cast<unsigned>(picture.white);
    Expect(raw->dcraw_process());
    int error = LIBRAW_SUCCESS;
    Image image(raw->dcraw_make_mem_image(&error));
    Expect(error);
    return image;
}

void CheckSides(const Picture& picture, int shortest) {
    if (std::min(picture.width, picture.height) >= shortest &&
        std::max(picture.width, picture.height) <= kLongestSide &&
        int64_t{picture.width} * picture.height <= kMostPixels) {
        return;
    }
    throw UserError(Text("a frame of ", picture.width, "x", picture.height,
                         " cannot become a PNG: its sides must be from ", shortest, " to ",
                         Grouped(kLongestSide), ", and at most ", Grouped(kMostPixels), " pixels"));
}

Bytes EncodePng(png_image* png, const void* pixels) {
    Bytes bytes(PNG_IMAGE_PNG_SIZE_MAX(*png));
    png_alloc_size_t size = bytes.size();
    if (!png_image_write_to_memory(png, bytes.data(), &size, 0, pixels, 0, nullptr)) {
        throw RunError(Text("making the PNG failed: ", png->message));
    }
    bytes.resize(size);
    return bytes;
}

}  // namespace

Bytes EncodeGreyPng(const Picture& picture) {
    CheckSides(picture, 1);
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    png.width = static_cast<png_uint_32>(picture.width);
    png.height = static_cast<png_uint_32>(picture.height);
    png.format = PNG_FORMAT_LINEAR_Y;
    std::vector<uint16_t> samples = picture.codes;
    for (uint16_t& sample : samples) sample = static_cast<uint16_t>(sample << (16 - picture.bits));
    return EncodePng(&png, samples.data());
}

Bytes DevelopPng(Picture picture, bool half) {
    CheckSides(picture, kShortestSide);
    const Image image = Develop(picture, half);
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    png.width = image->width;
    png.height = image->height;
    png.format = PNG_FORMAT_RGB;
    return EncodePng(&png, image->data);
}

}  // namespace tarn::pictures
