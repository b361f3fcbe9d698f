#include "tools/tarn/cli/progress.h"

#include <unistd.h>

#include <iostream>

#include "frames/message.h"

namespace tarn::tool {
namespace {

constexpr char kClearLine[] = "\r\033[K";

}  // namespace

Progress::Progress(bool quiet, int64_t frames, int64_t partsOfFrame)
    : wanted_(!quiet && isatty(STDERR_FILENO)),
      frames_(frames),
      partsOfFrame_(partsOfFrame),
      next_(Clock::now() + std::chrono::seconds(1)) {}

Progress::~Progress() {
    if (shown_) std::cerr << kClearLine << std::flush;
}

void Progress::Add(int64_t parts) {
    if (!wanted_) return;
    const std::lock_guard lock(mutex_);
    done_ += parts;
    const Clock::time_point now = Clock::now();
    if (now < next_) return;
    next_ = now + std::chrono::milliseconds(200);
    shown_ = true;
    const std::string text =
        frames_ == 1
            ? Text(done_ * 100 / partsOfFrame_, " %")
            : Text(done_ / partsOfFrame_, frames_ < 0 ? "" : Text(" of ", frames_), " frames");
    std::cerr << kClearLine << text << std::flush;
}

}  // namespace tarn::tool
