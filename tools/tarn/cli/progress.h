// How far work has come, for who waits at a terminal for more than a second.
#ifndef TARN_TOOL_CLI_PROGRESS_H_
#define TARN_TOOL_CLI_PROGRESS_H_

#include <chrono>
#include <cstdint>
#include <mutex>

#include "tools/tarn/cli/names.h"

namespace tarn::tool {

class Progress {
 public:
    // So many frames of so many parts; frames may be -1: nobody knows.
    Progress(bool quiet, int64_t frames, int64_t partsOfFrame);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // So many parts more are done. By any thread.
    void Add(int64_t parts);

 private:
    using Clock = std::chrono::steady_clock;
    std::mutex mutex_;
    bool wanted_;
    bool shown_ = false;
    int64_t frames_;
    int64_t partsOfFrame_;
    int64_t done_ = 0;
    Clock::time_point next_;
};

}  // namespace tarn::tool

#endif  // TARN_TOOL_CLI_PROGRESS_H_
