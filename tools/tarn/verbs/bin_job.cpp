#include "tools/tarn/verbs/bin_job.h"

#include <chrono>
#include <functional>

#include "frames/message.h"
#include "pictures/output.h"

namespace tarn::tool {
namespace {

// Finds the frames of all files. A file without them ends the run only where it is the only one, or
// all frames go to one file.
void FindAllFrames(BinJob* job) {
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
std::vector<FrameName> NamesOfFrames(const BinJob& job) {
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

std::vector<std::string> RunFiles(BinJob* job) {
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

std::vector<std::string> RunPipe(BinJob* job) {
    const std::string& raw = job->options.raws.front();
    const std::string& out = job->options.result.out;
    const NamePattern pattern(out);
    const FrameRange& frames = job->spec.frames;
    if (!pattern.Numbers() && job->plan.encode && frames.told && frames.first != frames.last) {
        RefuseSharing("several");
    }
    const auto name = [&](int64_t number) {
        std::string path = pattern.Of({raw, number});
        CheckOutput(path, raw);
        return path;
    };
    const std::string first = name(frames.first);
    FramePipe pipe(raw, job->spec);
    CheckMemory(job->plan.task.out);
    const bool numbered = pattern.Numbers();
    BinPipe(job->plan, &pipe, first, numbered ? std::function<std::string(int64_t)>(name) : nullptr,
            &job->outcome);
    job->runs.push_back(pipe.Run());
    std::vector<std::string> names{first};
    for (int64_t i = 1; numbered && i < job->outcome.frames; ++i) {
        names.push_back(pattern.Of({raw, frames.first + i}));
    }
    return names;
}

// What an error leaves behind, to be added to it.
std::string WrittenBefore(const BinJob& job) {
    const int64_t done = job.outcome.frames;
    return job.Separate() && done > 0 ? Text("; files written before: ", done) : "";
}

}  // namespace

std::vector<std::string> RunFrames(BinJob* job) {
    const auto start = std::chrono::steady_clock::now();
    const std::vector<std::string>& raws = job->options.raws;
    try {
        job->piped = raws.size() == 1 && FramePipe::Serves(raws.front(), job->spec);
        std::vector<std::string> names = job->piped ? RunPipe(job) : RunFiles(job);
        job->seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        return names;
    } catch (const RunError& error) {
        throw RunError(error.what() + WrittenBefore(*job));
    } catch (const UserError& error) {
        throw UserError(error.what() + WrittenBefore(*job));
    }
}

}  // namespace tarn::tool
