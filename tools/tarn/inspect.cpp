// tarn inspect: what a dump holds, and what it is when nobody says.
#include "tools/tarn/chart.h"
#include "tools/tarn/geometry.h"
#include "tools/tarn/guess.h"
#include "tools/tarn/inspect_report.h"
#include "tools/tarn/message.h"
#include "tools/tarn/output.h"
#include "tools/tarn/verb.h"

namespace tarn::tool {
namespace {

struct Options {
    std::string raw;
    std::string layout;
    std::string size;
    std::string pitch;
    std::string cell;
    std::string svg;
    std::string png;
    float gain = 1;
    bool json = false;
};

constexpr int64_t kLargestDump = int64_t{1} << 32;

Known KnownFromOptions(const Options& options, int64_t bytes) {
    Known known = KnownFromName(options.raw, bytes);
    if (!options.layout.empty()) known.layout = ParseLayout(options.layout);
    if (!options.cell.empty()) {
        known.cell = static_cast<int>(ParseNumber("--cell", options.cell, 1, 4));
    }
    if (!options.size.empty()) {
        const Size size = ParseSize("-s", options.size);
        known.width = size.width;
        known.height = size.height;
        known.pitch.reset();
    }
    if (!options.pitch.empty() && options.pitch != "tight") {
        known.pitch = ParseNumber("--pitch", options.pitch, 1, INT_MAX - 16);
    }
    return known;
}

Subject FindSubject(const Options& options, const Bytes& bytes) {
    const int64_t size = static_cast<int64_t>(bytes.size());
    const Known known = KnownFromOptions(options, size);
    const bool complete = known.layout && known.width && known.cell;
    if (complete && !options.pitch.empty()) {
        PackedFrame frame{*known.layout, *known.width, *known.height, 0};
        SetPitch("--pitch", options.pitch, &frame);
        CheckFileSize(InputName(options.raw), size, frame);
        return {frame, *known.cell, std::nullopt};
    }
    Guess guess = GuessFrame(InputName(options.raw), bytes, known);
    return {guess.ranked.front().frame, guess.ranked.front().cell, std::move(guess)};
}

void Run(const Options& options) {
    for (const std::string& chart : {options.svg, options.png}) {
        if (!chart.empty()) CheckOutput(chart, options.raw);
    }
    const std::string name = InputName(options.raw);
    const Bytes bytes = ReadFile(options.raw, kLargestDump);
    if (int64_t(bytes.size()) > kLargestDump) throw UserError(name + ": is larger than 4 GiB");
    const Subject subject = FindSubject(options, bytes);
    const Statistics statistics = MeasureFrame(subject.frame, bytes, subject.cell);
    std::optional<GainEffect> byGain;
    if (options.gain != 1) {
        byGain = {options.gain, ClippedByGain(subject.frame, bytes, subject.cell, options.gain)};
    }

    const std::string title = DescribeSubject(subject);
    if (!options.svg.empty()) {
        WriteFile(options.svg, DrawHistogram(ChartKind::Svg, title, statistics));
    }
    if (!options.png.empty()) {
        WriteFile(options.png, DrawHistogram(ChartKind::Png, title, statistics));
    }
    const Report report{name, int64_t(bytes.size()), subject, statistics, byGain};
    const std::string text = options.json ? ReportJson(report) : ReportText(report);
    WriteFile("-", Bytes(text.begin(), text.end()));
}

std::function<void()> Declare(CLI::App& command) {
    const auto o = std::make_shared<Options>();
    command.add_option("RAW", o->raw, "Packed frame; - is standard input")->required();
    command.add_option("-f,--format", o->layout, Text("Layout: ", kLayoutNames, " [guessed]"));
    command.add_option("-s,--size", o->size, "WIDTHxHEIGHT in pixels [guessed]");
    command.add_option("--pitch", o->pitch, "Bytes from one row to the next, or tight [guessed]");
    command.add_option("--cell", o->cell, "1 (plain Bayer), 2, 3 or 4 [guessed]");
    command.add_option("--gain", o->gain, "Tell how much of the result this gain would clip");
    command.add_option("--svg", o->svg, "Draw the histogram into this SVG file");
    command.add_option("--png", o->png, "Draw the histogram into this PNG file");
    command.add_flag("--json", o->json, "Print JSON");
    command.footer(
        "What is not given is guessed from the bytes and the file's size, and the guess is rated: "
        "certain, likely\nor uncertain. A name of the form Tarn_TAG_TIME_PITCHxHEIGHT.raw is read "
        "too.");
    return [o] { Run(*o); };
}

}  // namespace

const Verb kInspect{"inspect", "Tell what a dump holds, and guess what it is", Declare};

}  // namespace tarn::tool
