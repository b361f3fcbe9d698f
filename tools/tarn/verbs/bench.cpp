// tarn bench: how long the library takes for a frame, beside a plain copy of it.
#include <algorithm>
#include <chrono>
#include <cstring>
#include <iomanip>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>
#include <span>
#include <vector>

#include "frames/message.h"
#include "pictures/frame_file.h"
#include "pictures/output.h"
#include "pictures/parallel_call.h"
#include "tools/tarn/cli/result.h"
#include "tools/tarn/cli/verb.h"

namespace tarn::tool {
namespace {

struct Options {
    std::string raw;
    std::string rounds = "15";
    FrameOptions frame;
    TaskOptions task;
    ThreadOptions threads;
    ReportOptions report;
};

// The file's frame, or one of random codes: no operation's time depends on them.
FrameRun MakeInput(const Options& options, const FrameSpec& spec) {
    if (!options.raw.empty()) return ReadFrames(options.raw, spec);
    if (spec.frame.pitch == 0 || spec.offset > 0 || spec.frames.told) {
        throw UserError("--pitch auto, --offset and --frame are of a file, and none is given");
    }
    CheckMemory(spec.frame);
    FrameRun run{"", spec.frame, 0, 1, 0, spec.frame.Bytes(), 0, Bytes(size_t(spec.frame.Bytes()))};
    std::mt19937_64 random(1);
    for (uint8_t& byte : run.bytes) byte = static_cast<uint8_t>(random());
    return run;
}

template <class F>
double Milliseconds(const F& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

double Median(std::vector<double> values) {
    const auto middle = values.begin() + int64_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// As the library chooses by itself, once for each call.
const char* LevelTaken() {
#ifdef __x86_64__
    if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("fma")) return "scalar";
    const bool wide = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                      __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vnni");
    return wide ? "avx512" : "avx2";
#elif defined(__aarch64__)
    return "neon";
#else
    return "scalar";
#endif
}

struct Times {
    double frame;  // medians, in milliseconds
    double copy;
    double ratio;  // of neighbours in time
};

// One after the other, so that what disturbs the machine disturbs both. The first round, which
// meets untouched memory, does not count.
Times Measure(const BinTask& task, std::span<const uint8_t> input, int threads, int64_t rounds) {
    Bytes output(static_cast<size_t>(task.out.Bytes()));
    Bytes copy(input.size());
    std::vector<double> frames, copies, ratios;
    for (int64_t round = 0; round <= rounds; ++round) {
        const double frame = Milliseconds([&] { RunTask(task, input, output, threads); });
        const double copied =
            Milliseconds([&] { std::memcpy(copy.data(), input.data(), input.size()); });
        if (round == 0) continue;
        frames.push_back(frame);
        copies.push_back(copied);
        ratios.push_back(frame / copied);
    }
    return {Median(frames), Median(copies), Median(ratios)};
}

void Run(const Options& options) {
    const FrameSpec spec = ParseFrame(options.frame);
    RequireOneFrame(spec.frames);
    const std::string name = options.raw.empty() ? "the frame" : InputName(options.raw);
    BinTask task = ParseTask(name, options.task, spec);
    const int64_t rounds = ParseNumber("--rounds", options.rounds, 1, 100'000);
    const int threads = options.threads.Count(1);
    const FrameRun input = MakeInput(options, spec);
    task.in.pitch = input.frame.pitch;
    const Times times = Measure(task, input.At(0), threads, rounds);

    const double megapixels = double(task.in.width) * task.in.height / 1e6;
    const double perSecond = megapixels / times.frame * 1e3;
    const double gigabytes = double(input.At(0).size()) / times.frame / 1e6;
    if (options.report.json) {
        return WriteJson({{"layout", LayoutName(task.in.layout)},
                          {"width", task.in.width},
                          {"height", task.in.height},
                          {"pitch", task.in.pitch},
                          {"cell", task.cell},
                          {"gain", task.gain},
                          {"threads", threads},
                          {"level", LevelTaken()},
                          {"rounds", rounds},
                          {"milliseconds", times.frame},
                          {"megapixels_per_second", perSecond},
                          {"input_gigabytes_per_second", gigabytes},
                          {"memcpy_milliseconds", times.copy},
                          {"ratio_to_memcpy", times.ratio}});
    }
    const std::string text =
        Text(Describe(task.in, task.cell), ", gain ", task.gain, ", ",
             threads == 1 ? "one thread" : Text(threads, " threads"), ", median of ", rounds,
             " frames\n", std::fixed, std::setprecision(2), times.frame, " ms per frame, ",
             std::setprecision(0), perSecond, " MP/s, ", std::setprecision(1), gigabytes,
             " GB/s of input, level ", LevelTaken(), "\n", std::setprecision(2), times.ratio,
             " x the time of a memcpy of the frame (", times.copy, " ms)\n");
    WriteFile("-", Bytes(text.begin(), text.end()));
}

std::function<void()> Declare(CLI::App& command) {
    const auto o = std::make_shared<Options>();
    AddText(command, "RAW", o->raw, "", "Packed frame; - is standard input [random codes]");
    o->frame.Declare(command);
    command.get_option("--size")->required();
    command.get_option("--cell")->required();
    o->task.Declare(command);
    AddText(command, "--rounds", o->rounds, "N", "Frames to measure [15]");
    o->threads.Declare(command, "1");
    o->report.DeclareJson(command);
    command.footer(
        "Only the library's operation is timed, on one thread unless --threads says more; the "
        "copy\n"
        "is one thread's. A small frame stays in the processor's cache, and so do its times.\n\n"
        "Example:\n"
        "  tarn bench -f qc10 -s 8160x6120 --cell 2\n");
    return [o] { Run(*o); };
}

}  // namespace

const Verb kBench{"bench", "Time the library on a frame, beside a plain copy", Declare};

}  // namespace tarn::tool
