// A plain Bayer mosaic as a source of frames: a camera raw, or a 16-bit PGM that holds one.
#ifndef TARN_PICTURES_MOSAIC_H_
#define TARN_PICTURES_MOSAIC_H_

#include <string>

#include "frames/message.h"
#include "pictures/input.h"

class LibRaw;

namespace tarn::pictures {

struct Mosaic {
    int width = 0;  // of the visible area
    int height = 0;
    std::vector<uint16_t> samples;   // row by row
    std::string colours = "RGGB";    // of the top left 2x2
    double black[4] = {0, 0, 0, 0};  // by position in the 2x2
    double white = 0;
    double balance[3] = {0, 0, 0};  // factors on red, green, blue as shot; zero: nobody knows
    bool camera = false;  // levels and colours are the camera's; a PGM tells its white alone
};

// What no decoder takes for its own, and which may be packed rows for that reason.
struct NoPicture : UserError {
    using UserError::UserError;
};

// The bytes of a file that may be one of them, or another picture. Throws NoPicture when there are
// too many of them.
Bytes ReadPictureFile(const std::string& path);

// Both throw NoPicture, naming the file, when it is neither, and UserError when it is a broken one.
// LibRaw may write to the bytes.
Mosaic DecodeMosaic(const std::string& name, Bytes& bytes);
Mosaic ReadMosaic(const std::string& path);

// The visible area of what LibRaw has decoded from a file of so many bytes. Nothing that it says of
// sizes, pitch and levels is believed unseen. Throws UserError.
Mosaic MosaicOf(const std::string& name, size_t bytes, LibRaw* raw);

}  // namespace tarn::pictures

#endif  // TARN_PICTURES_MOSAIC_H_
