// Many frames through the library at once: strips of a frame, or frames, on several threads, while
// others are read and written.
#ifndef TARN_TOOL_VERBS_BIN_FRAMES_H_
#define TARN_TOOL_VERBS_BIN_FRAMES_H_

#include <atomic>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "frames/safe_call.h"
#include "pictures/frame_file.h"
#include "pictures/output_names.h"
#include "tools/tarn/cli/names.h"

namespace tarn::tool {

// Where a frame is: one of those of a file.
struct FrameSource {
    const FrameRun* run;
    int64_t index;  // from the first of the run on
};

struct BinPlan {
    BinTask task;  // the input's pitch is each run's own
    std::function<Bytes(std::span<const uint8_t>)>
        encode;  // a packed frame as a file; none: packed
    std::vector<FrameSource> frames;
    std::vector<std::string> names;  // one for each frame, or one for all
    int threads;
    bool quiet;
};

// Nanoseconds, those of all threads added.
struct BinTimes {
    std::atomic<int64_t> reading = 0;
    std::atomic<int64_t> library = 0;
    std::atomic<int64_t> encoding = 0;
    std::atomic<int64_t> writing = 0;
};

struct BinOutcome {
    BinTimes times;
    std::atomic<int64_t> frames = 0;          // that are written, or would be with the others
    std::map<int64_t, std::string> failures;  // by number of the frame: what is wrong with it
};

// Frames out of files. One that cannot be read keeps no other from being written, unless all go to
// one file: that is written whole or not at all, and UserError thrown. RunError, when writing
// breaks off, ends it; files that were complete before stay.
void BinFrames(const BinPlan& plan, BinOutcome* outcome);

// Frames as a pipe delivers them. The plan's frames and names are not used: `name` gives the name
// of the file for a frame; none: all go to the file `all`.
void BinPipe(const BinPlan& plan, FramePipe* pipe, const std::string& all,
             const std::function<std::string(int64_t)>& name, BinOutcome* outcome);

}  // namespace tarn::tool

#endif  // TARN_TOOL_VERBS_BIN_FRAMES_H_
