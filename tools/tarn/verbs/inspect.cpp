// tarn inspect: what a dump holds, and what it is when nobody says.
#include <algorithm>
#include <memory>

#include "frames/message.h"
#include "pictures/chart.h"
#include "pictures/frame_file.h"
#include "pictures/output.h"
#include "tools/tarn/cli/guess_options.h"
#include "tools/tarn/cli/verb.h"
#include "tools/tarn/verbs/inspect_report.h"

namespace tarn::tool {
namespace {

struct Options {
    std::string raw;
    std::string svg;
    std::string png;
    std::string gain = "1";
    FrameOptions frame;
    ReportOptions report;
};

// What is looked at: a frame, its bytes, and what is known of them.
struct Dump {
    Subject subject;
    int64_t fileBytes;
    Bytes bytes;
};

bool IsTold(const FrameOptions& frame) {
    return ParseFormat(frame) && !frame.size.empty() && !frame.pitch.empty() && !frame.cell.empty();
}

Dump ReadTold(const Options& options) {
    const FrameSpec spec = ParseFrame(options.frame);
    FrameRun run = ReadFrames(options.raw, spec);
    const int64_t size = FileSize(options.raw);
    return {{run.frame, spec.cell, std::nullopt},
            size < 0 ? int64_t(run.bytes.size()) : size,
            std::move(run.bytes)};
}

Dump ReadGuessed(const Options& options) {
    if (ParseFrames(options.frame.frames).told) {
        throw UserError(
            "--frame: where frames begin is known with -f, -s, --pitch and --cell only");
    }
    GuessedFile file = GuessFile(options.raw, options.frame);
    const Hypothesis best = file.guess.ranked.front();
    const int64_t size = int64_t(file.bytes.size()) + ParseOffset(options.frame.offset);
    return {{best.frame, best.cell, std::move(file.guess)}, size, std::move(file.bytes)};
}

// The options that say where the frame begins and what colours it has, as they were given.
std::string PlaceAndColours(const FrameOptions& frame) {
    const auto format = ParseFormat(frame);
    std::string options;
    if (!frame.offset.empty()) options += " --offset " + frame.offset;
    if (!frame.frames.empty()) options += " --frame " + frame.frames;
    if (!frame.colours.empty()) options += " --cfa " + frame.colours;
    if (frame.colours.empty() && format && !format->colours.empty()) {
        options += " --cfa " + format->colours;
    }
    if (frame.colours.empty() && format && format->grey) options += " --grey";
    return options;
}

void CheckCharts(const Options& options) {
    std::vector<std::string> charts;
    for (const auto& [name, chart] : {std::pair("--svg", options.svg), {"--png", options.png}}) {
        if (chart.empty()) continue;
        if (chart == "-") {
            throw UserError(Text(name, ": standard output is taken by the report; name a file"));
        }
        charts.push_back(chart);
    }
    CheckOutputs(charts, {options.raw});
    if (SharedOutput(charts)) throw UserError("--svg and --png: name the same file");
}

void Run(const Options& options) {
    CheckCharts(options);
    RequireOneFrame(ParseFrames(options.frame.frames));
    const float gain = ParseGain(options.gain);
    const Dump dump = IsTold(options.frame) ? ReadTold(options) : ReadGuessed(options);
    const Subject& subject = dump.subject;
    const Statistics statistics = MeasureFrame(subject.frame, dump.bytes, subject.cell);
    std::optional<GainEffect> byGain;
    if (gain != 1) {
        byGain = {gain, ClippedByGain(subject.frame, dump.bytes, subject.cell, gain)};
    }

    const std::string title = Describe(subject.frame, subject.cell);
    if (!options.svg.empty()) {
        WriteFile(options.svg, DrawHistogram(ChartKind::Svg, title, statistics));
    }
    if (!options.png.empty()) {
        WriteFile(options.png, DrawHistogram(ChartKind::Png, title, statistics));
    }
    const Report report{InputName(options.raw),
                        PlaceAndColours(options.frame),
                        dump.fileBytes,
                        subject,
                        statistics,
                        byGain};
    const std::string text = options.report.json ? ReportJson(report) : ReportText(report);
    WriteFile("-", Bytes(text.begin(), text.end()));
}

std::function<void()> Declare(CLI::App& command) {
    const auto o = std::make_shared<Options>();
    AddText(command, "RAW", o->raw, "", "Packed frame; - is standard input")->required();
    o->frame.Declare(command, Untold::Guessed);
    AddText(command, "--gain", o->gain, "FACTOR",
            "Tell how much of the result this gain would clip");
    AddOutput(command, "--svg", o->svg, "Draw the histogram into this SVG file");
    AddOutput(command, "--png", o->png, "Draw the histogram into this PNG file");
    o->report.DeclareJson(command);
    command.footer(
        "What is not given is guessed from the bytes and the file's size, and the guess is rated:\n"
        "certain, likely or uncertain. A name of the form Tarn_TAG_TIME_PITCHxHEIGHT.raw is read\n"
        "too.\n\n"
        "Examples:\n"
        "  tarn inspect dump.raw\n"
        "  tarn inspect dump.raw -f SRGGB10P --gain 2 --png histogram.png\n");
    return [o] { Run(*o); };
}

}  // namespace

const Verb kInspect{"inspect", "Tell what a dump holds, and guess what it is", Declare};

}  // namespace tarn::tool
