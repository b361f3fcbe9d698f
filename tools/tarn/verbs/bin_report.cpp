#include "tools/tarn/verbs/bin_report.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "frames/message.h"
#include "tools/tarn/cli/say.h"

namespace tarn::tool {
namespace {

using Json = nlohmann::json;

// What is done, but may not be what was meant.
void SayNotes(const BinJob& job) {
    const BinTask& task = job.plan.task;
    if (!job.guessed.empty()) Say(job.Quiet(), "note: ", job.guessed);
    if (!job.spec.coloursKnown) SayAssumedColours(job.target, job.spec.colours, job.Quiet());
    for (const FrameRun& run : job.runs) SayLeftOver(run, job.Quiet());
    if (task.in.width % task.cell || task.in.height % task.cell) {
        Say(job.Quiet(), "note: ", job.options.frame.size,
            " is not a whole number of cells: the last ", task.in.width % task.cell,
            " columns and ", task.in.height % task.cell, " rows are left out");
    }
    if (task.cell > 1 && task.gain < 1) {
        Say(job.Quiet(), "note: binning applies a gain above 1.0 only; ", job.options.task.gain,
            " changes nothing");
    }
}

Json JsonReport(const BinJob& job, const std::vector<std::string>& names) {
    const auto describe = [](const PackedFrame& frame) {
        return Json{{"layout", LayoutName(frame.layout)},
                    {"width", frame.width},
                    {"height", frame.height},
                    {"pitch", frame.pitch}};
    };
    const auto milliseconds = [](int64_t nanoseconds) { return double(nanoseconds) / 1e6; };
    const BinTimes& times = job.outcome.times;
    int64_t leftOver = 0;
    for (const FrameRun& run : job.runs) leftOver += run.leftOver;
    Json failures = job.failures;
    for (const auto& [frame, reason] : job.outcome.failures) failures.push_back(reason);
    return {{"inputs", job.options.raws},
            {"outputs", names},
            {"from", describe(job.runs.empty() ? job.plan.task.in : job.runs.front().frame)},
            {"to", describe(job.plan.task.out)},
            {"frames", job.outcome.frames.load()},
            {"bytes_left_over", leftOver},
            {"cell", job.plan.task.cell},
            {"geometry_guessed", !job.guessed.empty()},
            {"colours", job.spec.colours},
            {"colours_assumed", !job.spec.coloursKnown},
            {"gain", job.plan.task.gain},
            {"threads", job.plan.threads},
            {"failures", failures},
            {"milliseconds", milliseconds(times.library)},
            {"milliseconds_reading", milliseconds(times.reading)},
            {"milliseconds_encoding", milliseconds(times.encoding)},
            {"milliseconds_writing", milliseconds(times.writing)},
            {"milliseconds_elapsed", job.seconds * 1e3}};
}

}  // namespace

void Report(const BinJob& job, const std::vector<std::string>& names) {
    if (job.options.report.json) WriteJson(JsonReport(job, names));
    SayNotes(job);
    const int64_t frames = job.outcome.frames;
    if (frames == 0) return;
    const BinTask& task = job.plan.task;
    const double milliseconds = double(job.outcome.times.library) / 1e6;
    Say(job.Quiet(), FilesText(names, job.target), " from ",
        frames > 1 ? Text(frames, " frames of ") : "",
        Describe(job.runs.empty() ? task.in : job.runs.front().frame, task.cell), ", gain ",
        task.gain, ": ", std::round(milliseconds * 100) / 100, " ms");
}

void TellFailures(const BinJob& job) {
    const size_t failed = job.failures.size() + job.outcome.failures.size();
    if (failed == 0) return;
    for (const std::string& reason : job.failures) Complain(reason);
    for (const auto& [frame, reason] : job.outcome.failures) Complain(reason);
    throw UserError(Text("failed: ", failed, "; files written: ", job.outcome.frames.load()));
}

}  // namespace tarn::tool
