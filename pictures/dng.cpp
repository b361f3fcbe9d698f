#include "pictures/dng.h"

#include <tiffio.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "frames/message.h"

namespace tarn::pictures {
namespace {

// Readers take smaller pictures for previews, keep sides in 16 bits, and the file's offsets
// have 32.
constexpr int kShortestSide = 22;
constexpr int kLongestSide = 65535;
constexpr int64_t kMostSamples = (int64_t{1} << 31) - 4096;

// What libtiff takes for a file.
struct MemoryFile {
    Bytes bytes;
    uint64_t at = 0;
};

MemoryFile& Of(thandle_t handle) {
    return *static_cast<MemoryFile*>(handle);
}

tmsize_t Read(thandle_t handle, void* data, tmsize_t size) {
    MemoryFile& file = Of(handle);
    const uint64_t left = file.bytes.size() - std::min<uint64_t>(file.at, file.bytes.size());
    const size_t count = std::min(static_cast<size_t>(size), static_cast<size_t>(left));
    if (count > 0) std::memcpy(data, file.bytes.data() + file.at, count);
    file.at += count;
    return static_cast<tmsize_t>(count);
}

tmsize_t Write(thandle_t handle, void* data, tmsize_t size) {
    MemoryFile& file = Of(handle);
    const size_t end = file.at + static_cast<size_t>(size);
    if (end > file.bytes.size()) file.bytes.resize(end);
    std::memcpy(file.bytes.data() + file.at, data, static_cast<size_t>(size));
    file.at = end;
    return size;
}

toff_t Seek(thandle_t handle, toff_t offset, int whence) {
    MemoryFile& file = Of(handle);
    const uint64_t base = whence == SEEK_CUR ? file.at : whence == SEEK_END ? file.bytes.size() : 0;
    return file.at = base + offset;
}

int Close(thandle_t) {
    return 0;
}

toff_t Size(thandle_t handle) {
    return Of(handle).bytes.size();
}

struct CloseTiff {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using Tiff = std::unique_ptr<TIFF, CloseTiff>;

template <class... Values>
void Set(const Tiff& tiff, uint32_t tag, Values... values) {
    if (!TIFFSetField(tiff.get(), tag, values...)) {
        throw RunError(Text("making the DNG failed at tag ", tag));
    }
}

void SetImage(const Tiff& tiff, const Picture& picture) {
    Set(tiff, TIFFTAG_SUBFILETYPE, 0);
    Set(tiff, TIFFTAG_IMAGEWIDTH, picture.width);
    Set(tiff, TIFFTAG_IMAGELENGTH, picture.height);
    Set(tiff, TIFFTAG_BITSPERSAMPLE, 16);
    Set(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    Set(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    Set(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_CFA);
    Set(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    Set(tiff, TIFFTAG_ROWSPERSTRIP, picture.height);
    Set(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    Set(tiff, TIFFTAG_MAKE, "Tarn");
    Set(tiff, TIFFTAG_MODEL, "Packed raw frame");
    Set(tiff, TIFFTAG_UNIQUECAMERAMODEL, "Tarn packed raw frame");
    Set(tiff, TIFFTAG_SOFTWARE, "tarn " TARN_VERSION);
    constexpr uint8_t version[] = {1, 4, 0, 0}, oldestReader[] = {1, 1, 0, 0};
    Set(tiff, TIFFTAG_DNGVERSION, version);
    Set(tiff, TIFFTAG_DNGBACKWARDVERSION, oldestReader);
}

void SetPattern(const Tiff& tiff, const Picture& picture) {
    constexpr uint16_t two[] = {2, 2}, one[] = {1, 1};
    constexpr uint8_t planes[] = {0, 1, 2};
    uint8_t pattern[4];
    for (size_t i = 0; i < 4; ++i) {
        pattern[i] =
            static_cast<uint8_t>(std::strchr(kColourLetters, picture.colours[i]) - kColourLetters);
    }
    Set(tiff, TIFFTAG_CFAREPEATPATTERNDIM, two);
    Set(tiff, TIFFTAG_CFAPATTERN, 4, pattern);
    Set(tiff, TIFFTAG_CFAPLANECOLOR, 3, planes);
    Set(tiff, TIFFTAG_CFALAYOUT, 1);
    const float black = static_cast<float>(picture.black);
    const uint32_t white = static_cast<uint32_t>(picture.white);
    Set(tiff, TIFFTAG_BLACKLEVELREPEATDIM, one);
    Set(tiff, TIFFTAG_BLACKLEVEL, 1, &black);
    Set(tiff, TIFFTAG_WHITELEVEL, 1, &white);
}

// The sensor's colours are unknown: they are taken for sRGB's, under a daylight that the white
// balance turns to white.
void SetColours(const Tiff& tiff, const Balance& balance) {
    constexpr uint16_t kD65 = 21;
    constexpr float xyzToRgb[9] = {3.2406f, -1.5372f, -0.4986f, -0.9689f, 1.8758f,
                                   0.0415f, 0.0557f,  -0.2040f, 1.0570f};
    float neutral[3], matrix[9];
    for (size_t i = 0; i < 3; ++i) neutral[i] = static_cast<float>(balance[1] / balance[i]);
    for (size_t i = 0; i < 9; ++i) matrix[i] = neutral[i / 3] * xyzToRgb[i];
    Set(tiff, TIFFTAG_CALIBRATIONILLUMINANT1, kD65);
    Set(tiff, TIFFTAG_COLORMATRIX1, 9, matrix);
    Set(tiff, TIFFTAG_ASSHOTNEUTRAL, 3, neutral);
}

}  // namespace

Bytes EncodeDng(const Picture& picture) {
    const int64_t samples = int64_t{picture.width} * picture.height;
    if (std::min(picture.width, picture.height) < kShortestSide ||
        std::max(picture.width, picture.height) > kLongestSide || samples > kMostSamples) {
        throw UserError(Text("a frame of ", picture.width, "x", picture.height,
                             " cannot become a DNG that opens: sides from ", kShortestSide, " to ",
                             Grouped(kLongestSide), ", at most 4 GiB of samples"));
    }
    // What they would print, on behalf of all threads, says nothing to the user.
    [[maybe_unused]] static const auto silent =
        std::pair(TIFFSetErrorHandler(nullptr), TIFFSetWarningHandler(nullptr));
    MemoryFile file;
    file.bytes.reserve(static_cast<size_t>(samples) * 2 + 4096);
    Tiff tiff(TIFFClientOpen("DNG", "w", &file, Read, Write, Seek, Close, Size, nullptr, nullptr));
    if (!tiff) throw RunError("making the DNG failed");
    SetImage(tiff, picture);
    SetPattern(tiff, picture);
    SetColours(tiff, BalanceOf(picture));
    // libtiff does not write to it, though its interface does not say so.
    void* codes = const_cast<uint16_t*>(picture.codes.data());
    if (TIFFWriteEncodedStrip(tiff.get(), 0, codes, samples * 2) != samples * 2 ||
        !TIFFWriteDirectory(tiff.get())) {
        throw RunError("making the DNG failed");
    }
    tiff.reset();
    return std::move(file.bytes);
}

}  // namespace tarn::pictures
