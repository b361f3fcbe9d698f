// tarn bench: how long the library takes for a frame, beside a plain copy of it.
#include <iomanip>
#include <nlohmann/json.hpp>
#include <random>

#include "tools/tarn/geometry.h"
#include "tools/tarn/message.h"
#include "tools/tarn/output.h"
#include "tools/tarn/verb.h"

namespace tarn::tool {
namespace {

constexpr int64_t kLargestFrame = int64_t{4} << 30;

struct Options {
    std::string raw;
    std::string layout;
    std::string size;
    std::string pitch;
    std::string cell;
    std::string rounds = "15";
    float gain = 1;
    bool json = false;
};

BinTask MakeTask(const Options& options) {
    const Size size = ParseSize("-s", options.size);
    BinTask task{};
    task.cell = static_cast<int>(ParseNumber("--cell", options.cell, 1, 4));
    task.gain = options.gain;
    task.in = {ParseLayout(options.layout), size.width, size.height, 0};
    SetPitch("--pitch", options.pitch, &task.in);
    task.out = {task.in.layout, size.width / task.cell, size.height / task.cell, 0};
    task.out.pitch = task.out.RowBytes();
    const std::string objection = Objection(task);
    if (!objection.empty()) throw UserError(objection);
    if (task.in.Bytes() > kLargestFrame) {
        throw UserError(Text("a frame of ", Grouped(task.in.Bytes()),
                             " bytes is too large: at most ", Grouped(kLargestFrame)));
    }
    return task;
}

// The file's frame, or one of random codes: no operation's time depends on them.
Bytes MakeInput(const std::string& path, const PackedFrame& frame) {
    if (path.empty()) {
        Bytes bytes(static_cast<size_t>(frame.Bytes()));
        std::mt19937_64 random(1);
        for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
        return bytes;
    }
    Bytes bytes = ReadFile(path, frame.Bytes());
    CheckFileSize(InputName(path), static_cast<int64_t>(bytes.size()), frame);
    return bytes;
}

double CopyMilliseconds(const Bytes& from, Bytes* to) {
    const auto start = std::chrono::steady_clock::now();
    std::memcpy(to->data(), from.data(), from.size());
    const std::chrono::duration<double, std::milli> taken =
        std::chrono::steady_clock::now() - start;
    return taken.count();
}

double Median(std::vector<double> values) {
    const auto middle = values.begin() + int64_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

struct Times {
    double frame;  // medians, in milliseconds
    double copy;
    double ratio;  // of neighbours in time
};

// One after the other, so that what disturbs the machine disturbs both. The first round, which
// meets untouched memory, does not count.
Times Measure(const BinTask& task, const Bytes& input, int64_t rounds) {
    Bytes output(static_cast<size_t>(task.out.Bytes()));
    Bytes copy(input.size());
    std::vector<double> frames, copies, ratios;
    for (int64_t round = 0; round <= rounds; ++round) {
        const double frame = RunTask(task, input.data(), output.data());
        const double copied = CopyMilliseconds(input, &copy);
        if (round == 0) continue;
        frames.push_back(frame);
        copies.push_back(copied);
        ratios.push_back(frame / copied);
    }
    return {Median(frames), Median(copies), Median(ratios)};
}

void Run(const Options& options) {
    const BinTask task = MakeTask(options);
    const int64_t rounds = ParseNumber("--rounds", options.rounds, 1, 100'000);
    const Bytes input = MakeInput(options.raw, task.in);
    const Times times = Measure(task, input, rounds);

    const double megapixels = double(task.in.width) * task.in.height / 1e6;
    const double perSecond = megapixels / times.frame * 1e3;
    const double gigabytes = double(input.size()) / times.frame / 1e6;
    std::string text;
    if (options.json) {
        const nlohmann::ordered_json json{{"layout", LayoutName(task.in.layout)},
                                          {"width", task.in.width},
                                          {"height", task.in.height},
                                          {"pitch", task.in.pitch},
                                          {"cell", task.cell},
                                          {"gain", task.gain},
                                          {"rounds", rounds},
                                          {"milliseconds", times.frame},
                                          {"megapixels_per_second", perSecond},
                                          {"input_gigabytes_per_second", gigabytes},
                                          {"memcpy_milliseconds", times.copy},
                                          {"ratio_to_memcpy", times.ratio}};
        text = json.dump() + "\n";
    } else {
        text = Text(Describe(task.in), ", cell ", task.cell, ", gain ", task.gain, ", one thread, ",
                    "median of ", rounds, " frames\n", std::fixed, std::setprecision(2),
                    times.frame, " ms per frame, ", std::setprecision(0), perSecond, " MP/s, ",
                    std::setprecision(1), gigabytes, " GB/s of input\n", std::setprecision(2),
                    times.ratio, " x the time of a memcpy of the frame (", times.copy, " ms)\n");
    }
    WriteFile("-", Bytes(text.begin(), text.end()));
}

std::function<void()> Declare(CLI::App& command) {
    const auto o = std::make_shared<Options>();
    command.add_option("RAW", o->raw, "Packed frame; - is standard input [random codes]");
    command.add_option("-f,--format", o->layout, Text("Layout: ", kLayoutNames))->required();
    command.add_option("-s,--size", o->size, "WIDTHxHEIGHT in pixels")->required();
    command.add_option("--cell", o->cell, "1 (gain only), 2, 3 or 4")->required();
    command.add_option("--pitch", o->pitch, "Bytes from one row to the next [tight]");
    command.add_option("--gain", o->gain, "Gain around the black level [1.0]");
    command.add_option("--rounds", o->rounds, "Frames to measure [15]");
    command.add_flag("--json", o->json, "Print JSON");
    command.footer(
        "Only the library's operation is timed. A small frame stays in the processor's cache, and "
        "so do its times.\nExample: tarn bench -f qc10 -s 8160x6120 --cell 2");
    return [o] { Run(*o); };
}

}  // namespace

const Verb kBench{"bench", "Time the library on a frame, beside a plain copy", Declare};

}  // namespace tarn::tool
