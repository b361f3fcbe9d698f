#include "tools/tarn/verbs/binner.h"

#include <algorithm>

namespace tarn::tool {
namespace {

// Small enough to stay in a core's own cache between reading, binning and writing.
constexpr int64_t kStripBytes = int64_t{1} << 19;

}  // namespace

Binner::Binner(const BinPlan& plan, int64_t frames, BinOutcome* outcome)
    : plan_(plan),
      outcome_(*outcome),
      side_(static_cast<int>(std::clamp<int64_t>(frames, 1, plan.threads))),
      strips_(static_cast<size_t>(plan.threads)),
      frames_(static_cast<size_t>(side_)),
      progress_(plan.quiet, frames == kUnknown ? -1 : frames, plan.task.out.height) {}

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

}  // namespace tarn::tool
