// The frames of a file, as they are described to whoever reads them.
#ifndef TARN_FRAMES_FRAME_SPEC_H_
#define TARN_FRAMES_FRAME_SPEC_H_

#include <string>

#include "frames/packed_frame.h"

namespace tarn::frames {

// Which frames of a file: numbers from 0; a last of -1 is the file's.
struct FrameRange {
    int64_t first = 0;
    int64_t last = 0;
    bool told = false;  // they were asked for; else the file is to hold the one frame
};

struct FrameSpec {
    PackedFrame frame;    // a pitch of 0 is to be derived from the file's size
    std::string colours;  // a Bayer order; empty for a sensor without colours
    bool coloursKnown;    // they were told, not assumed
    int64_t offset;       // bytes before the first frame
    FrameRange frames;
    int cell;  // 0 when it was not told
};

}  // namespace tarn::frames

#endif  // TARN_FRAMES_FRAME_SPEC_H_
