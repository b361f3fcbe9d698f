// Binary PGM and PPM: the plainest files of samples.
#ifndef TARN_FRAMES_PNM_H_
#define TARN_FRAMES_PNM_H_

#include <string>

#include "frames/bytes.h"

namespace tarn::frames {

struct Pnm {
    int width = 0;
    int height = 0;
    int maximum = 0;
    std::vector<uint16_t> samples{};  // row by row; of a PPM red, green, blue of each pixel
};

bool IsPgm(const Bytes& bytes);
bool IsPpm(const Bytes& bytes);

// Either of them, by its first bytes. Throws UserError, naming the file, when it is broken.
Pnm DecodePnm(const std::string& name, const Bytes& bytes);

}  // namespace tarn::frames

#endif  // TARN_FRAMES_PNM_H_
