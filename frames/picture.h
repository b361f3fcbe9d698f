// A frame as its codes, and how files of packed frames and PGM hold them.
#ifndef TARN_FRAMES_PICTURE_H_
#define TARN_FRAMES_PICTURE_H_

#include <array>
#include <string>
#include <vector>

#include "frames/bytes.h"
#include "frames/packed_frame.h"

namespace tarn::frames {

inline constexpr char kColourLetters[] = "RGB";
using Balance = std::array<double, 3>;  // factors on red, green, blue

// Codes, and what makes a picture of them where they are a plain Bayer mosaic.
struct Picture {
    int width = 0;
    int height = 0;
    int bits = 0;  // that a code has
    std::vector<uint16_t> codes{};
    std::string colours{};  // of the top left 2x2; empty when there are none
    double black = 0;
    double white = 0;
    Balance balance{};  // all zero: by the grey world
};

// The library's black level for that depth, and the highest code for white.
void UseOurLevels(Picture* picture);

// The white balance that the picture asks for, or that makes its mean grey.
Balance BalanceOf(const Picture& picture);

// The codes of a frame, row by row.
std::vector<uint16_t> Unpack(const PackedFrame& frame, const uint8_t* bytes);

// Packs rows of codes; padding is zero.
Bytes Pack(const PackedFrame& frame, const std::vector<uint16_t>& codes);

// A 16-bit PGM of the codes as they are.
Bytes EncodePgm(const Picture& picture);

}  // namespace tarn::frames

#endif  // TARN_FRAMES_PICTURE_H_
