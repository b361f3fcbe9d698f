#include "tools/tarn/verbs/bin_frames.h"

#include <algorithm>
#include <mutex>
#include <optional>

#include "frames/message.h"
#include "tools/tarn/verbs/binner.h"

namespace tarn::tool {
namespace {

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
        const std::span<uint8_t> to = buffer->Get(bytes);
        file->ReadWholeAt(run.begin + index * frame.Bytes() + at, to);
        return std::span<const uint8_t>(to);
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
