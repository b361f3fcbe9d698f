#include "tools/tarn/bin_frames.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <limits>
#include <memory>
#include <span>

#include "tools/tarn/message.h"
#include "tools/tarn/output.h"
#include "tools/tarn/parallel.h"
#include "tools/tarn/progress.h"

namespace tarn::tool {
namespace {

// Small enough to stay in a core's own cache between reading, binning and writing.
constexpr int64_t kStripBytes = int64_t{1} << 19;

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

// What a thread needs of its own.
struct Worker {
    Buffer in;
    Buffer out;
};

// Rows of an input frame, in the buffer or elsewhere.
using ReadRows = std::function<std::span<const uint8_t>(int64_t row, int64_t rows, Buffer* buffer)>;

// Where a binned frame goes: to a place in a file, strip by strip, or into memory.
struct Place {
    OutputFile* file;
    int64_t offset;
    std::span<uint8_t> memory;
};

class Binner {
 public:
    Binner(const BinPlan& plan, int64_t frames, BinOutcome* outcome)
        : plan_(plan),
          outcome_(*outcome),
          side_(static_cast<int>(std::clamp<int64_t>(frames, 1, plan.threads))),
          strips_(static_cast<size_t>(plan.threads)),
          frames_(static_cast<size_t>(side_)),
          progress_(plan.quiet, frames == kUnknown ? -1 : frames, plan.task.out.height) {}

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

void Binner::Strips(const BinTask& task, int side, const ReadRows& read, const Place& to) {
    const int64_t rows = std::max<int64_t>(kStripBytes / (task.in.pitch * task.cell), 1);
    const int threads = plan_.threads / side_;
    ParallelFor((task.out.height + rows - 1) / rows, threads, [&](int64_t i, int thread) {
        Worker& worker = strips_[static_cast<size_t>(int64_t{side} * threads + thread)];
        const BinTask strip = RowsOf(task, i * rows, rows);
        std::span<const uint8_t> src;
        {
            const Timed timed(&outcome_.times.reading);
            src = read(i * rows * task.cell, strip.in.height, &worker.in);
        }
        const int64_t at = i * rows * task.out.pitch;
        const std::span<uint8_t> dst =
            to.file ? worker.out.Get(strip.out.Bytes())
                    : to.memory.subspan(size_t(at), size_t(strip.out.Bytes()));
        {
            const Timed timed(&outcome_.times.library);
            RunTask(strip, src, dst);
        }
        if (to.file) {
            const Timed timed(&outcome_.times.writing);
            to.file->WriteAt(to.offset + at, dst);
        }
        progress_.Add(strip.out.height);
        return true;
    });
}

void Binner::Frame(int64_t i, int side, const BinTask& task, const ReadRows& read,
                   const std::string& name) {
    const std::unique_ptr<OutputFile> own = shared_ ? nullptr : std::make_unique<OutputFile>(name);
    OutputFile* file = own ? own.get() : shared_;
    if (!plan_.encode && file->TakesAnyOrder()) {
        Strips(task, side, read, {file, own ? 0 : i * task.out.Bytes(), {}});
    } else {
        std::span<uint8_t> binned = frames_[static_cast<size_t>(side)].Get(task.out.Bytes());
        Strips(task, side, read, {nullptr, 0, binned});
        Bytes encoded;
        if (plan_.encode) {
            const Timed timed(&outcome_.times.encoding);
            encoded = plan_.encode(binned);
            binned = encoded;
        }
        const auto append = [&] {
            const Timed timed(&outcome_.times.writing);
            file->Append(binned);
        };
        own ? append() : void(order_.Do(i, append));
    }
    if (own) {
        const Timed timed(&outcome_.times.writing);
        own->Commit();
    }
    ++outcome_.frames;
}

// Bytes of a file from one on, in the buffer.
std::span<const uint8_t> ReadSome(const InputFile& file, const std::string& path, int64_t offset,
                                  int64_t bytes, Buffer* buffer) {
    const std::span<uint8_t> to = buffer->Get(bytes);
    if (file.ReadAt(offset, to) < bytes) {
        throw UserError(Text(InputName(path), ": became shorter while it was read"));
    }
    return to;
}

void BinFileFrame(const BinPlan& plan, int64_t i, int side, Binner* binner) {
    const FrameRun& run = *plan.frames[static_cast<size_t>(i)].run;
    const int64_t index = plan.frames[static_cast<size_t>(i)].index;
    const PackedFrame& frame = run.frame;
    BinTask task = plan.task;
    task.in.pitch = frame.pitch;
    std::optional<InputFile> file;
    if (run.bytes.empty()) file.emplace(run.path);
    const ReadRows read = [&](int64_t row, int64_t rows, Buffer* buffer) {
        const int64_t at = row * frame.pitch;
        const int64_t bytes = std::min(rows * frame.pitch, run.Available(index) - at);
        if (!file) return run.At(index).subspan(size_t(at), size_t(bytes));
        return ReadSome(*file, run.path, run.begin + index * frame.Bytes() + at, bytes, buffer);
    };
    const bool shared = plan.names.size() < plan.frames.size();
    binner->Frame(i, side, task, read, shared ? "" : plan.names[static_cast<size_t>(i)]);
}

}  // namespace

void BinFrames(const BinPlan& plan, BinOutcome* outcome) {
    const int64_t count = static_cast<int64_t>(plan.frames.size());
    const bool shared = plan.names.size() < plan.frames.size();
    Binner binner(plan, count, outcome);
    std::optional<OutputFile> all;
    if (shared) binner.Share(&all.emplace(plan.names.front()));
    std::mutex mutex;
    ParallelFor(count, binner.Side(), [&](int64_t i, int side) {
        try {
            BinFileFrame(plan, i, side, &binner);
        } catch (const UserError& error) {
            binner.Stop();
            if (count == 1 || shared) throw;
            const std::lock_guard lock(mutex);
            outcome->failures[i] = error.what();
        } catch (...) {
            binner.Stop();
            throw;
        }
        return true;
    });
    if (shared) all->Commit();
}

void BinPipe(const BinPlan& plan, FramePipe* pipe, const std::string& all,
             const std::function<std::string(int64_t)>& name, BinOutcome* outcome) {
    const FrameRun& run = pipe->Run();
    const int64_t count = run.count < 0 ? Binner::kUnknown : run.count;
    Binner binner(plan, count, outcome);
    std::optional<OutputFile> file;
    if (!name) binner.Share(&file.emplace(all));
    std::vector<Buffer> inputs(static_cast<size_t>(binner.Side()));
    InOrder reading;
    ParallelFor(count, binner.Side(), [&](int64_t i, int side) {
        try {
            const std::span<uint8_t> frame =
                inputs[static_cast<size_t>(side)].Get(run.frame.Bytes());
            bool came = false;
            reading.Do(i, [&] {
                const Timed timed(&outcome->times.reading);
                came = pipe->Next(frame);
            });
            if (!came) return false;
            const ReadRows read = [&](int64_t row, int64_t rows, Buffer*) {
                return frame.subspan(size_t(row * run.frame.pitch), size_t(rows * run.frame.pitch));
            };
            binner.Frame(i, side, plan.task, read, name ? name(run.first + i) : "");
            return true;
        } catch (...) {
            reading.Stop();
            binner.Stop();
            throw;
        }
    });
    if (file) file->Commit();
}

}  // namespace tarn::tool
