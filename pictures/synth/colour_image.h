// Pictures in colour as light.
#ifndef TARN_PICTURES_SYNTH_COLOUR_IMAGE_H_
#define TARN_PICTURES_SYNTH_COLOUR_IMAGE_H_

#include <string>
#include <vector>

#include "pictures/input.h"

namespace tarn::pictures {

struct ColourImage {
    int width = 0;
    int height = 0;
    std::vector<uint16_t> light;  // linear; red, green, blue of each pixel, row by row
};

bool IsColourImage(const Bytes& bytes);

// A PNG, by the gamma it tells, or a PPM; both are sRGB when nothing else is said. Throws
// UserError, naming the file.
ColourImage DecodeColourImage(const std::string& name, const Bytes& bytes);

}  // namespace tarn::pictures

#endif  // TARN_PICTURES_SYNTH_COLOUR_IMAGE_H_
