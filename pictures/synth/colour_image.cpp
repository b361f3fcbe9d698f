#include "pictures/synth/colour_image.h"

#include <png.h>

#include <cmath>
#include <csetjmp>
#include <cstring>

#include "frames/geometry.h"
#include "frames/message.h"
#include "frames/pnm.h"

namespace tarn::pictures {
namespace {

// IEC 61966-2-1, the sRGB standard: from its non-linear values back to light.
double LinearFromSrgb(double value) {
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

// Each sample as light. A power of 0 stands for sRGB.
void MakeLinear(int maximum, double power, std::vector<uint16_t>* samples) {
    std::vector<uint16_t> light(static_cast<size_t>(maximum) + 1);
    for (size_t i = 0; i < light.size(); ++i) {
        const double value = double(i) / maximum;
        const double linear = power > 0 ? std::pow(value, power) : LinearFromSrgb(value);
        light[i] = static_cast<uint16_t>(std::lround(linear * 65535));
    }
    for (uint16_t& sample : *samples) sample = light[std::min<int>(sample, maximum)];
}

ColourImage DecodePpm(const std::string& name, const Bytes& bytes) {
    Pnm ppm = DecodePnm(name, bytes);
    MakeLinear(ppm.maximum, 0, &ppm.samples);
    return {ppm.width, ppm.height, std::move(ppm.samples)};
}

// What libpng reads from, and what it complained of.
struct PngFile {
    const Bytes& bytes;
    size_t at = 0;
    std::string complaint;
};

void Feed(png_structp png, png_bytep data, size_t size) {
    PngFile& file = *static_cast<PngFile*>(png_get_io_ptr(png));
    if (size > file.bytes.size() - file.at) png_error(png, "it ends too early");
    std::memcpy(data, file.bytes.data() + file.at, size);
    file.at += size;
}

[[noreturn]] void Complain(png_structp png, png_const_charp complaint) {
    static_cast<PngFile*>(png_get_error_ptr(png))->complaint = complaint;
    longjmp(png_jmpbuf(png), 1);
}

void Ignore(png_structp, png_const_charp) {}

class PngReader {
 public:
    explicit PngReader(PngFile* file)
        : png_(png_create_read_struct(PNG_LIBPNG_VER_STRING, file, Complain, Ignore)),
          info_(png_create_info_struct(png_)) {
        png_set_read_fn(png_, file, Feed);
    }
    ~PngReader() { png_destroy_read_struct(&png_, &info_, nullptr); }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;

    // False where libpng complained. Nothing in them has a destructor that a jump would miss.
    bool ReadHeader() {
        if (setjmp(png_jmpbuf(png_))) return false;
        png_read_info(png_, info_);
        png_set_expand_16(png_);
        png_set_gray_to_rgb(png_);
        png_set_strip_alpha(png_);
        png_set_swap(png_);  // little-endian, as this machine
        png_set_interlace_handling(png_);
        png_read_update_info(png_, info_);
        return true;
    }
    bool ReadRows(png_bytepp rows) {
        if (setjmp(png_jmpbuf(png_))) return false;
        png_read_image(png_, rows);
        return true;
    }

    int64_t Width() const { return png_get_image_width(png_, info_); }
    int64_t Height() const { return png_get_image_height(png_, info_); }
    // The power that makes light of a sample, or 0: sRGB, for which a power of 2.2 stands in.
    double Power() const {
        double gamma = 0;
        if (png_get_sRGB(png_, info_, nullptr) || !png_get_gAMA(png_, info_, &gamma)) return 0;
        return gamma <= 0 || std::abs(gamma - 1 / 2.2) < 0.01 ? 0 : 1 / gamma;
    }

 private:
    png_structp png_;
    png_infop info_;
};

// A header can claim any size, and deflating makes at most 1032 bytes of one.
void CheckClaim(const std::string& name, const PngReader& png, size_t bytes) {
    constexpr int64_t kMostPixelsPerByte = int64_t{1032} * 8;
    const int64_t pixels = png.Width() * png.Height();
    if (pixels <= int64_t(bytes) * kMostPixelsPerByte && pixels <= kMostBytes / 6) return;
    throw UserError(Text(name, ": claims ", png.Width(), "x", png.Height(), " pixels, but holds ",
                         "only ", Grouped(int64_t(bytes)), " bytes, or is too large: at most ",
                         Grouped(kMostBytes / 6), " pixels are handled"));
}

ColourImage DecodePng(const std::string& name, const Bytes& bytes) {
    PngFile file{bytes, 0, ""};
    PngReader png(&file);
    const auto expect = [&](bool read) {
        if (!read) throw UserError(Text(name, ": is a PNG that cannot be read: ", file.complaint));
    };
    expect(png.ReadHeader());
    CheckClaim(name, png, bytes.size());
    ColourImage image{static_cast<int>(png.Width()), static_cast<int>(png.Height()), {}};
    image.light.resize(static_cast<size_t>(png.Width() * png.Height() * 3));
    std::vector<png_bytep> rows;
    for (int64_t y = 0; y < png.Height(); ++y) {
        rows.push_back(reinterpret_cast<png_bytep>(image.light.data() + y * png.Width() * 3));
    }
    expect(png.ReadRows(rows.data()));
    MakeLinear(65535, png.Power(), &image.light);
    return image;
}

bool IsPng(const Bytes& bytes) {
    return bytes.size() > 8 && png_sig_cmp(bytes.data(), 0, 8) == 0;
}

}  // namespace

bool IsColourImage(const Bytes& bytes) {
    return IsPpm(bytes) || IsPng(bytes);
}

ColourImage DecodeColourImage(const std::string& name, const Bytes& bytes) {
    return IsPpm(bytes) ? DecodePpm(name, bytes) : DecodePng(name, bytes);
}

}  // namespace tarn::pictures
