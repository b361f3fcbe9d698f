// Pictures in colour as light.
#ifndef TARN_TOOL_SYNTH_COLOUR_IMAGE_H_
#define TARN_TOOL_SYNTH_COLOUR_IMAGE_H_

#include <string>
#include <vector>

#include "tools/tarn/input.h"

namespace tarn::tool {

struct ColourImage {
    int width = 0;
    int height = 0;
    std::vector<uint16_t> light;  // linear; red, green, blue of each pixel, row by row
};

bool IsColourImage(const Bytes& bytes);

// A PNG, by the gamma it tells, or a PPM; both are sRGB when nothing else is said. Throws
// UserError, naming the file.
ColourImage DecodeColourImage(const std::string& name, const Bytes& bytes);

}  // namespace tarn::tool

#endif  // TARN_TOOL_SYNTH_COLOUR_IMAGE_H_
