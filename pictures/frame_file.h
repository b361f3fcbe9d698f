// Frames out of a file of packed ones.
#ifndef TARN_PICTURES_FRAME_FILE_H_
#define TARN_PICTURES_FRAME_FILE_H_

#include <algorithm>
#include <span>
#include <string>

#include "frames/frame_spec.h"
#include "pictures/input.h"

namespace tarn::pictures {

struct FrameRun {
    std::string path;
    PackedFrame frame;
    int64_t first;     // number of the first one in the file
    int64_t count;     // -1: what a pipe goes on to deliver
    int64_t begin;     // byte of the file where the first one starts
    int64_t length;    // of all of them; the very last padding may be missing
    int64_t leftOver;  // bytes of the file after its last whole frame
    Bytes bytes;       // once they are loaded, or came through a pipe

    int64_t Available(int64_t i) const {
        return std::min(frame.Bytes(), length - i * frame.Bytes());
    }
    std::span<const uint8_t> At(int64_t i) const {
        return {bytes.data() + i * frame.Bytes(), static_cast<size_t>(Available(i))};
    }
};

// Finds the frames that were asked for, or, when none were, the one that is to be all of the file.
// Only a pipe is read for that. Throws UserError when they are not there.
FrameRun FindFrames(const std::string& path, const FrameSpec& spec);

// The same, with their bytes.
FrameRun ReadFrames(const std::string& path, const FrameSpec& spec);

// A pipe that delivers frames of a known size, one after another.
class FramePipe {
 public:
    // Whether the frames can be had like this, without looking at all of them first.
    static bool Serves(const std::string& path, const FrameSpec& spec);

    FramePipe(const std::string& path, const FrameSpec& spec);
    // The frames as far as they are known: those that may come are numbered from `first` on.
    const FrameRun& Run() const { return run_; }
    // Reads the next frame asked for; false after the last one. Throws UserError when there are
    // fewer than were asked for, or when the one frame is not all.
    bool Next(std::span<uint8_t> frame);

 private:
    void Skip(int64_t bytes);
    void ExpectEnd();

    InputFile file_;
    FrameSpec spec_;
    FrameRun run_;
    int64_t next_ = 0;
    bool ended_ = false;
};

}  // namespace tarn::pictures

#endif  // TARN_PICTURES_FRAME_FILE_H_
