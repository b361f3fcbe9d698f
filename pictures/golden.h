// The golden vectors as files: packed frames, their values, and what becomes of them.
#ifndef TARN_PICTURES_GOLDEN_H_
#define TARN_PICTURES_GOLDEN_H_

#include <string>
#include <vector>

#include "frames/packed_frame.h"
#include "pictures/input.h"

namespace tarn::pictures {

struct GoldenFrame {
    std::string name;
    PackedFrame frame;
    Bytes packed;                  // frame.Bytes() of them
    std::vector<uint16_t> values;  // row by row
};

// What an operation makes of a frame. The packed bytes are exact, the last group of each row
// included; row padding holds kGoldenPadding: nobody writes there.
struct GoldenResult {
    GoldenFrame out;
    std::string from;
    int cell;
    float gain;
};
inline constexpr uint8_t kGoldenPadding = 0xEE;

struct Golden {
    std::vector<GoldenFrame> frames;
    std::vector<GoldenResult> results;

    const GoldenFrame& Frame(const std::string& name) const;
};

// Reads manifest.json of a folder and every file it names. Throws UserError.
Golden ReadGolden(const std::string& folder);

// The folder to read when none is given: as installed with the program, else as linked by its
// build.
std::string GoldenFolder();

}  // namespace tarn::pictures

#endif  // TARN_PICTURES_GOLDEN_H_
