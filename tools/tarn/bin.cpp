// tarn bin: packed frames through the library.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <nlohmann/json.hpp>
#include <span>
#include <vector>

#include "tools/tarn/bin_frames.h"
#include "tools/tarn/guess_options.h"
#include "tools/tarn/message.h"
#include "tools/tarn/output.h"
#include "tools/tarn/result.h"
#include "tools/tarn/verb.h"

namespace tarn::tool {
namespace {

using Json = nlohmann::json;

struct Options {
    std::vector<std::string> raws;
    FrameOptions frame;
    TaskOptions task;
    ResultOptions result;
    ThreadOptions threads;
    ReportOptions report;
};

// A run of the verb: what is asked for, and what came of it.
struct Job {
    const Options& options;
    FrameSpec spec;
    BinPlan plan;
    Target target;
    std::vector<FrameRun> runs{};
    std::vector<std::string> failures{};  // of files that could not be begun
    BinOutcome outcome{};
    double seconds = 0;

    bool Quiet() const { return options.report.Quiet(); }
    // One file for each frame, so that what is wrong with one need not concern the others.
    bool Separate() const {
        const NamePattern pattern(options.result.out);
        return pattern.Numbers() || pattern.NamesInput();
    }
};

Bytes Encode(const Job& job, std::span<const uint8_t> packed) {
    Picture picture{.width = job.target.packed.width,
                    .height = job.target.packed.height,
                    .bits = job.target.bits,
                    .codes = Unpack(job.target.packed, packed.data()),
                    .colours = job.spec.colours};
    UseOurLevels(&picture);
    ApplyLevels(job.options.result.levels, &picture);
    return Encode(job.target, std::move(picture));
}

// What is done, but may not be what was meant.
void SayNotes(const Job& job) {
    const BinTask& task = job.plan.task;
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

Json JsonReport(const Job& job, const std::vector<std::string>& names) {
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
            {"gain", job.plan.task.gain},
            {"threads", job.plan.threads},
            {"failures", failures},
            {"milliseconds", milliseconds(times.library)},
            {"milliseconds_reading", milliseconds(times.reading)},
            {"milliseconds_encoding", milliseconds(times.encoding)},
            {"milliseconds_writing", milliseconds(times.writing)},
            {"milliseconds_elapsed", job.seconds * 1e3}};
}

void Report(const Job& job, const std::vector<std::string>& names) {
    if (job.options.report.json) WriteJson(JsonReport(job, names));
    SayNotes(job);
    const int64_t frames = job.outcome.frames;
    if (frames == 0) return;
    const BinTask& task = job.plan.task;
    const double milliseconds = double(job.outcome.times.library) / 1e6;
    Say(job.Quiet(), FilesText(names, job.target), " from ",
        frames > 1 ? Text(frames, " frames of ") : "",
        Describe(job.runs.empty() ? task.in : job.runs.front().frame), ", cell ", task.cell,
        ", gain ", task.gain, ": ", std::round(milliseconds * 100) / 100, " ms");
}

// Finds the frames of all files. A file without them ends the run only where it is the only one, or
// all frames go to one file.
void FindAllFrames(Job* job) {
    for (const std::string& raw : job->options.raws) {
        try {
            job->runs.push_back(FindFrames(raw, job->spec));
        } catch (const UserError& error) {
            if (!job->Separate() || job->options.raws.size() == 1) throw;
            job->failures.push_back(error.what());
        }
    }
}

// The number in a name is that in the file, or where nothing else tells files apart, goes on.
std::vector<FrameName> NamesOfFrames(const Job& job) {
    const bool goesOn =
        job.options.raws.size() > 1 && !NamePattern(job.options.result.out).NamesInput();
    std::vector<FrameName> names;
    for (const FrameRun& run : job.runs) {
        for (int64_t i = 0; i < run.count; ++i) {
            names.push_back({run.path, goesOn ? int64_t(names.size()) : run.first + i});
        }
    }
    return names;
}

std::vector<std::string> RunFiles(Job* job) {
    FindAllFrames(job);
    CheckMemory(job->plan.task.out);
    for (const FrameRun& run : job->runs) {
        for (int64_t i = 0; i < run.count; ++i) job->plan.frames.push_back({&run, i});
    }
    if (job->plan.frames.empty()) return {};
    job->plan.names =
        OutputNames(job->options.result.out, job->target, NamesOfFrames(*job), job->options.raws);
    BinFrames(job->plan, &job->outcome);
    std::vector<std::string> names;
    for (size_t i = 0; i < job->plan.names.size(); ++i) {
        if (job->outcome.failures.count(int64_t(i)) == 0) names.push_back(job->plan.names[i]);
    }
    return names;
}

std::vector<std::string> RunPipe(Job* job) {
    const std::string& raw = job->options.raws.front();
    const std::string& out = job->options.result.out;
    const NamePattern pattern(out);
    const FrameRange& frames = job->spec.frames;
    if (!job->Separate() && job->plan.encode && frames.told && frames.first != frames.last) {
        throw UserError("-o: several frames need a %d in the name, such as frame_%03d." +
                        Ending(out));
    }
    FramePipe pipe(raw, job->spec);
    CheckMemory(job->plan.task.out);
    const auto name = [&](int64_t number) { return pattern.Of({raw, number}); };
    const bool numbered = pattern.Numbers();
    BinPipe(job->plan, &pipe, name(frames.first),
            numbered ? std::function<std::string(int64_t)>(name) : nullptr, &job->outcome);
    job->runs.push_back(pipe.Run());
    std::vector<std::string> names{name(frames.first)};
    for (int64_t i = 1; numbered && i < job->outcome.frames; ++i) {
        names.push_back(name(frames.first + i));
    }
    return names;
}

std::vector<std::string> RunFrames(Job* job) {
    const auto start = std::chrono::steady_clock::now();
    const std::vector<std::string>& raws = job->options.raws;
    try {
        const bool pipe = raws.size() == 1 && FramePipe::Serves(raws.front(), job->spec);
        std::vector<std::string> names = pipe ? RunPipe(job) : RunFiles(job);
        job->seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        return names;
    } catch (const RunError& error) {
        const int64_t done = job->outcome.frames;
        if (!job->Separate() || done == 0) throw;
        throw RunError(Text(error.what(), "; files written before: ", done));
    }
}

// Throws UserError where some frames are missing from the result.
void TellFailures(const Job& job) {
    const size_t failed = job.failures.size() + job.outcome.failures.size();
    if (failed == 0) return;
    for (const std::string& reason : job.failures) Complain(reason);
    for (const auto& [frame, reason] : job.outcome.failures) Complain(reason);
    throw UserError(Text("failed: ", failed, "; files written: ", job.outcome.frames.load()));
}

void CheckInputs(const std::vector<std::string>& raws) {
    if (std::count(raws.begin(), raws.end(), "-") > 1) {
        throw UserError("-: standard input can be read once only");
    }
}

void Run(Options options) {
    options.report.Check(options.result.out);
    CheckInputs(options.raws);
    options.frame = WithGuess(options.raws.front(), options.frame, options.report.Quiet());
    Job job{.options = options, .spec = ParseFrame(options.frame), .plan = {}, .target = {}};
    BinPlan& plan = job.plan;
    plan.task = ParseTask(InputName(options.raws.front()), options.task, job.spec);
    SetPitch("--out-pitch", options.result.pitch, &plan.task.out);
    plan.threads = options.threads.Count();
    plan.quiet = job.Quiet();
    job.target = MakeTarget(options.result, ParseFileKind(options.result.to, options.result.out),
                            Shape(plan.task.out.layout).bits);
    job.target.packed = plan.task.out;
    CheckColours(job.target, job.spec.colours);
    CheckOutputs({NamePattern(options.result.out).Of({options.raws.front(), 0})}, options.raws);
    if (job.target.kind != FileKind::Packed) {
        plan.encode = [&job](std::span<const uint8_t> packed) { return Encode(job, packed); };
    }
    Report(job, RunFrames(&job));
    TellFailures(job);
}

std::function<void()> Declare(CLI::App& command) {
    const auto o = std::make_shared<Options>();
    command.add_option("RAW", o->raws, "Files of packed frames; - is standard input")
        ->required()
        ->type_name("");
    o->result.Declare(command, "raw|pgm|png|dng", "Kind of FILE, whatever its ending");
    o->frame.Declare(command, Untold::Guessed);
    o->task.Declare(command);
    o->threads.Declare(command);
    o->report.Declare(command);
    command.footer(
        "A cell of N by N pixels becomes one; --cell 1 applies the gain only. When -f, -s or "
        "--cell\n"
        "is missing, what is not told is guessed from the first file, the pitch too, and taken\n"
        "where the guess is certain.\n\n"
        "A file is written whole or not at all, also when the run is interrupted. Where each "
        "frame\n"
        "has a file of its own, one that cannot be read is named, and the others are written all\n"
        "the same; where they share one, nothing is. When writing fails, as on a full disk, the\n"
        "run ends there; files that were complete stay.\n\n"
        "Examples:\n"
        "  tarn bin dump.raw -o dump.png -f qc10 -s 4000x3000 --pitch 5120 --cell 2 --gain 1.5\n"
        "  tarn bin dump.raw -o dump.dng -f SRGGB10P -s 4000x3000 --pitch auto --cell 2\n"
        "  tarn bin dump*.raw -o '%s_binned.raw' -f RAW10 -s 4000x3000 --pitch 5120 --cell 2\n"
        "  cat dump.raw dump.raw | tarn bin - -o burst.raw -f qc10 -s 4000x3000 --pitch 5120 "
        "--cell 2 --frame all\n");
    return [o] { Run(*o); };
}

}  // namespace

const Verb kBin{"bin", "Bin packed frames, apply a gain, write them packed, as PGM, PNG or DNG",
                Declare};

}  // namespace tarn::tool
