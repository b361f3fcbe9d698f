// One frame after another through the library, strip by strip, and into its file.
#ifndef TARN_TOOL_VERBS_BINNER_H_
#define TARN_TOOL_VERBS_BINNER_H_

#include <chrono>
#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <vector>

#include "pictures/output.h"
#include "pictures/parallel.h"
#include "tools/tarn/cli/progress.h"
#include "tools/tarn/verbs/bin_frames.h"

namespace tarn::tool {

// Adds the time it lives for.
class Timed {
 public:
    explicit Timed(std::atomic<int64_t>* sum) : sum_(sum) {}
    ~Timed() {
        *sum_ += std::chrono::nanoseconds(std::chrono::steady_clock::now() - start_).count();
    }
    Timed(const Timed&) = delete;
    Timed& operator=(const Timed&) = delete;

 private:
    std::atomic<int64_t>* sum_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// Memory that is used again and again, zero at first, so that row padding which nobody writes is.
class Buffer {
 public:
    std::span<uint8_t> Get(int64_t bytes) {
        if (bytes > size_) {
            memory_.reset(static_cast<uint8_t*>(std::calloc(static_cast<size_t>(bytes), 1)));
            if (!memory_) throw std::bad_alloc();
            size_ = bytes;
        }
        return {memory_.get(), static_cast<size_t>(bytes)};
    }

 private:
    struct Free {
        void operator()(uint8_t* memory) const { std::free(memory); }
    };
    std::unique_ptr<uint8_t[], Free> memory_;
    int64_t size_ = 0;
};

// Rows of an input frame, in the buffer or elsewhere.
using ReadRows = std::function<std::span<const uint8_t>(int64_t row, int64_t rows, Buffer* buffer)>;

// Takes frames through the library and to their files, on the threads of the plan: several side by
// side where there are several, strips of one where there is room for more.
class Binner {
 public:
    // That many frames are to come, or kUnknown.
    Binner(const BinPlan& plan, int64_t frames, BinOutcome* outcome);

    static constexpr int64_t kUnknown = std::numeric_limits<int64_t>::max();

    // How many frames go side by side.
    int Side() const { return side_; }
    // All frames go to this file.
    void Share(OutputFile* file) { shared_ = file; }
    void Stop() { order_.Stop(); }

    // Bins frame number i and writes it, to the file that all share, or to that of the name.
    void Frame(int64_t i, int side, const BinTask& task, const ReadRows& read,
               const std::string& name);

 private:
    // What a thread needs of its own.
    struct Worker {
        Buffer in;
        Buffer out;
    };
    // Where a binned frame goes: to a place in a file, strip by strip, or into memory.
    struct Place {
        OutputFile* file;
        int64_t offset;
        std::span<uint8_t> memory;
    };
    void Strips(const BinTask& task, int side, const ReadRows& read, const Place& to);

    const BinPlan& plan_;
    BinOutcome& outcome_;
    int side_;
    std::vector<Worker> strips_;  // as many for each frame's side
    std::vector<Buffer> frames_;
    Progress progress_;
    OutputFile* shared_ = nullptr;
    InOrder order_;
};

}  // namespace tarn::tool

#endif  // TARN_TOOL_VERBS_BINNER_H_
