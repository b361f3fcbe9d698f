// tarn bin: packed frames through the library.
#include <nlohmann/json.hpp>

#include "tools/tarn/frame_file.h"
#include "tools/tarn/message.h"
#include "tools/tarn/output.h"
#include "tools/tarn/result.h"
#include "tools/tarn/verb.h"

namespace tarn::tool {
namespace {

struct Options {
    std::string raw;
    std::string gain = "1.0";
    std::string outBits;
    FrameOptions frame;
    ResultOptions result;
    ReportOptions report;
};

float ParseGain(const std::string& text) {
    constexpr float kMost = 1e6f;
    char* end = nullptr;
    const float gain = std::strtof(text.c_str(), &end);
    if (text.empty() || *end || !(gain >= 0 && gain <= kMost)) {
        throw UserError(Text("--gain: \"", text, "\" is not a number from 0 to 1,000,000"));
    }
    return gain;
}

Layout OutputLayout(Layout in, const std::string& outBits) {
    if (outBits.empty()) return in;
    const int64_t bits = ParseNumber("--out-bits", outBits, 10, 12);
    if (bits == 11) throw UserError("--out-bits: 11 is neither 10 nor 12");
    if (IsVX(in)) return bits == 12 ? Layout::VXRaw12 : Layout::VXRaw10;
    return bits == 12 ? Layout::QCRaw12 : Layout::QCRaw10;
}

void Require(const BinTask& task) {
    const std::string objection = Objection(task);
    if (!objection.empty()) throw UserError(objection);
}

BinTask MakeTask(const Options& options, const FrameSpec& spec) {
    BinTask task{spec.frame, {}, spec.cell, ParseGain(options.gain)};
    // One that is to be derived is known once the file is.
    if (task.in.pitch == 0) task.in.pitch = task.in.RowBytes();
    if (std::min(task.in.width, task.in.height) < task.cell) {
        throw UserError(Text("-s: ", options.frame.size, " holds no ", task.cell, "x", task.cell,
                             " cell; both sides must be at least ", task.cell));
    }
    task.out = {OutputLayout(task.in.layout, options.outBits), task.in.width / task.cell,
                task.in.height / task.cell, 0};
    SetPitch("--out-pitch", options.result.pitch, &task.out);
    Require(task);
    return task;
}

// What is done, but may not be what was meant.
void SayNotes(const Options& options, const BinTask& task, const FrameRun& run) {
    const bool quiet = options.report.Quiet();
    SayLeftOver(run, quiet);
    if (task.in.width % task.cell || task.in.height % task.cell) {
        Say(quiet, "note: ", options.frame.size, " is not a whole number of cells: the last ",
            task.in.width % task.cell, " columns and ", task.in.height % task.cell,
            " rows are left out");
    }
    if (task.cell > 1 && task.gain < 1) {
        Say(quiet, "note: binning applies a gain above 1.0 only; ", options.gain,
            " changes nothing");
    }
}

Bytes Encode(const Options& options, const Target& target, const std::string& colours,
             Bytes packed) {
    if (target.kind == FileKind::Packed) return packed;
    Picture picture{.width = target.packed.width,
                    .height = target.packed.height,
                    .bits = target.bits,
                    .codes = Unpack(target.packed, packed.data()),
                    .colours = colours};
    UseOurLevels(&picture);
    ApplyLevels(options.result.levels, &picture);
    return Encode(target, std::move(picture));
}

nlohmann::json JsonReport(const Options& options, const std::vector<std::string>& names,
                          const BinTask& task, const FrameRun& run, double milliseconds) {
    const auto describe = [](const PackedFrame& frame) {
        return nlohmann::json{{"layout", LayoutName(frame.layout)},
                              {"width", frame.width},
                              {"height", frame.height},
                              {"pitch", frame.pitch}};
    };
    return {{"input", options.raw},     {"outputs", names},    {"from", describe(task.in)},
            {"to", describe(task.out)}, {"frames", run.count}, {"bytes_left_over", run.leftOver},
            {"cell", task.cell},        {"gain", task.gain},   {"milliseconds", milliseconds}};
}

void Run(const Options& options) {
    options.report.Check(options.result.out);
    const FrameSpec spec = ParseFrame(options.frame);
    BinTask task = MakeTask(options, spec);
    Target target = MakeTarget(options.result, ParseFileKind(options.result.to, options.result.out),
                               Shape(task.out.layout).bits);
    target.packed = task.out;
    CheckColours(target, spec.colours);
    CheckOutput(options.result.out, options.raw);

    const FrameRun run = ReadFrames(options.raw, spec);
    task.in = run.frame;
    Require(task);
    CheckMemory(task.out, run.count);
    const std::vector<std::string> names =
        OutputNames(options.result, options.raw, target, run.first, run.count);
    double milliseconds = 0;
    WriteFrames(names, run.count, [&](int64_t i) {
        Bytes binned(static_cast<size_t>(task.out.Bytes()));
        milliseconds += RunTask(task, run.At(i), binned.data());
        return Encode(options, target, spec.colours, std::move(binned));
    });

    if (options.report.json) WriteJson(JsonReport(options, names, task, run, milliseconds));
    if (!spec.coloursKnown) SayAssumedColours(target, spec.colours, options.report.Quiet());
    SayNotes(options, task, run);
    Say(options.report.Quiet(), FilesText(names, target), " from ",
        run.count > 1 ? Text(run.count, " frames of ") : "", Describe(task.in), ", cell ",
        task.cell, ", gain ", task.gain, ": ", std::round(milliseconds * 100) / 100, " ms");
}

std::function<void()> Declare(CLI::App& command) {
    const auto o = std::make_shared<Options>();
    AddText(command, "RAW", o->raw, "", "Packed frames to read; - is standard input")->required();
    o->result.Declare(command, "KIND", "raw, pgm, png or dng, whatever the ending of FILE");
    o->frame.Declare(command);
    command.get_option("--size")->required();
    command.get_option("--cell")->required();
    AddText(command, "--gain", o->gain, "FACTOR",
            "Gain around the black level [1.0]. Binning applies it\nabove 1.0 only; --cell 1 "
            "always, and lifts what lies\nbelow the black level to it");
    AddText(command, "--out-bits", o->outBits, "10|12",
            "Depth of the result, for VX frames with cell 2 or 4\n[as RAW]");
    o->report.Declare(command);
    command.footer(
        "A cell of N by N pixels becomes one; --cell 1 applies the gain only.\n\n"
        "Examples:\n"
        "  tarn bin frame.raw -o out.pgm -f qc10 -s 8160x6120 --pitch 10240 --cell 2 --gain 1.5\n"
        "  tarn bin frame.raw -o out.dng -f SRGGB10P -s 8160x6120 --pitch auto --cell 2\n");
    return [o] { Run(*o); };
}

}  // namespace

const Verb kBin{"bin", "Bin packed frames, apply a gain, write them packed, as PGM, PNG or DNG",
                Declare};

}  // namespace tarn::tool
