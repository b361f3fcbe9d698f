// A packed frame in the form a file holds it: packed, as a PGM of its codes, or developed to a PNG.
#ifndef TARN_TOOL_PICTURE_H_
#define TARN_TOOL_PICTURE_H_

#include <string>

#include "tools/tarn/input.h"
#include "tools/tarn/safe_call.h"

namespace tarn::tool {

enum class FileKind { Packed, Pgm, Png };

// By the --to option where it is given, else by the ending of the file's name.
FileKind ParseFileKind(const std::string& to, const std::string& path);

// The codes of a frame, row by row.
std::vector<uint16_t> Unpack(const PackedFrame& frame, const uint8_t* bytes);

// Packs rows of codes; padding is zero.
Bytes Pack(const PackedFrame& frame, const std::vector<uint16_t>& codes);

// A 16-bit PGM of the codes as they are.
Bytes EncodePgm(const PackedFrame& frame, const std::vector<uint16_t>& codes);

// A picture in colour: black level taken off, white balance by the gray world, brightened until the
// brightest hundredth is white. Interpolated, or with `half` one pixel for each 2x2 of the frame.
// Throws UserError for a frame that is too small or too large for it.
Bytes DevelopPng(const PackedFrame& frame, std::vector<uint16_t> codes, const std::string& colours,
                 bool half);

}  // namespace tarn::tool

#endif  // TARN_TOOL_PICTURE_H_
