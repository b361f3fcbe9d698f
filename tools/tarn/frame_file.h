// Frames out of a file of packed ones.
#ifndef TARN_TOOL_FRAME_FILE_H_
#define TARN_TOOL_FRAME_FILE_H_

#include <string>

#include "tools/tarn/frame_options.h"
#include "tools/tarn/input.h"

namespace tarn::tool {

struct FrameRun {
    PackedFrame frame;
    int64_t first;  // number of the first one in the file
    int64_t count;
    int64_t leftOver;  // bytes of the file after its last whole frame
    Bytes bytes;  // from the first row of the first frame; the very last padding may be missing

    const uint8_t* At(int64_t i) const { return bytes.data() + i * frame.Bytes(); }
};

// Throws UserError unless the file holds the frames that were asked for, or, when none were, one
// frame and nothing else.
FrameRun ReadFrames(const std::string& path, const FrameSpec& spec);

// Notes what the file holds besides whole frames.
void SayLeftOver(const FrameRun& run, bool quiet);

}  // namespace tarn::tool

#endif  // TARN_TOOL_FRAME_FILE_H_
