#include "tools/tarn/cli/frame_options.h"

#include <algorithm>
#include <thread>
#include <tuple>

#include "frames/message.h"
#include "pictures/output.h"

namespace tarn::tool {
namespace {

constexpr int64_t kFurthest = int64_t{1} << 60;
constexpr int64_t kMostFrames = 1'000'000'000;
constexpr int kMostThreads = 256;

int ParseBits(const std::string& option, const std::string& text) {
    if (text == "10") return 10;
    if (text == "12") return 12;
    throw UserError(Text(option, ": \"", text, "\" is neither 10 nor 12"));
}

NamedFormat ByFamily(const FrameOptions& options) {
    if (options.family.empty() || options.bits.empty()) {
        throw UserError("-f, or --family and --bits, must say the layout; see tarn formats");
    }
    if (options.family != "qc" && options.family != "vx") {
        throw UserError(Text("--family: \"", options.family, "\" is neither qc nor vx"));
    }
    return FindFormat("--family", Text(options.family, ParseBits("--bits", options.bits)));
}

void ParseColours(const FrameOptions& options, const NamedFormat& format, FrameSpec* spec) {
    spec->coloursKnown = !format.colours.empty() || !options.colours.empty();
    if (options.colours.empty()) {
        spec->colours = format.grey ? "" : format.colours.empty() ? "RGGB" : format.colours;
        return;
    }
    CheckColourOption(options);
    spec->colours = options.colours;
}

Layout OutputLayout(Layout in, const std::string& outBits) {
    if (outBits.empty()) return in;
    const bool twelve = ParseBits("--out-bits", outBits) == 12;
    if (IsVX(in)) return twelve ? Layout::VXRaw12 : Layout::VXRaw10;
    return twelve ? Layout::QCRaw12 : Layout::QCRaw10;
}

}  // namespace

CLI::Option* AddText(CLI::App& command, const char* names, std::string& value, const char* type,
                     const std::string& help) {
    return command.add_option(names, value, help)->type_name(type);
}

CLI::Option* AddOutput(CLI::App& command, const char* names, std::string& value,
                       const std::string& help) {
    return AddText(command, names, value, "FILE", help)->transform(PlainOutput);
}

void FrameOptions::Declare(CLI::App& command, Untold untold) {
    const bool guessed = untold == Untold::Guessed;
    const auto usual = [&](const char* text) { return guessed ? " [guessed]" : text; };
    AddText(command, "-f,--format", format, "NAME",
            Text("Layout: qc10, qc12, vx10, vx12, or another name\nfor one; see tarn formats",
                 usual("")));
    AddText(command, "--family", family, "qc|vx", "Layout, together with --bits, in place of -f");
    AddText(command, "--bits", bits, "10|12", "See --family");
    AddText(command, "--cfa", colours, "ORDER",
            "RGGB, GRBG, GBRG or BGGR [what the name of the\nlayout says, else RGGB]");
    AddText(command, "-s,--size", size, "WxH", Text("Width and height in pixels", usual("")));
    AddText(command, "--pitch", pitch, "BYTES|tight|auto",
            Text("From one row to the next; tight: no padding; auto: by\nthe size of the file",
                 guessed ? " [see below]" : " [tight]"));
    AddText(command, "--offset", offset, "BYTES", "Before the first frame [0]");
    AddText(command, "--frame", frames, "N|A-B|all",
            "Frames of a file of several, from 0 [the file holds\none]");
    AddText(command, "--cell", cell, "1|2|3|4",
            Text("Pixels per side of one colour: 1 (plain Bayer),\n2 (Tetra), 3 (Nona), 4 "
                 "(Hexadeca)",
                 usual("")));
}

bool FrameOptions::TellOnlyColours() const {
    FrameOptions plain;
    plain.colours = colours;
    plain.cell = cell;
    const auto tie = [](const FrameOptions& o) {
        return std::tie(o.format, o.family, o.bits, o.size, o.pitch, o.offset, o.frames);
    };
    return tie(*this) == tie(plain);
}

std::optional<NamedFormat> ParseFormat(const FrameOptions& options) {
    const bool byFamily = !options.family.empty() || !options.bits.empty();
    if (options.format.empty()) return byFamily ? std::optional(ByFamily(options)) : std::nullopt;
    if (byFamily) {
        throw UserError("-f says the layout; --family and --bits must not say it again");
    }
    return FindFormat("-f", options.format);
}

void CheckColourOption(const FrameOptions& options) {
    if (options.colours.empty()) return;
    CheckColourOrder("--cfa", options.colours);
    const std::optional<NamedFormat> format = ParseFormat(options);
    if (format && !format->colours.empty() && format->colours != options.colours) {
        throw UserError(
            Text("--cfa: ", options.colours, " contradicts ", format->name, ": ", format->colours));
    }
}

int ParseCell(const std::string& text) {
    return static_cast<int>(ParseNumber("--cell", text, 1, 4));
}

int64_t ParseOffset(const std::string& text) {
    return text.empty() ? 0 : ParseNumber("--offset", text, 0, kFurthest);
}

FrameRange ParseFrames(const std::string& text) {
    if (text.empty()) return {};
    if (text == "all") return {0, -1, true};
    const size_t dash = text.find('-', 1);
    const int64_t first = ParseNumber("--frame", text.substr(0, dash), 0, kMostFrames);
    if (dash == std::string::npos) return {first, first, true};
    const int64_t last = ParseNumber("--frame", text.substr(dash + 1), 0, kMostFrames);
    if (last < first) throw UserError(Text("--frame: ", text, " runs backwards"));
    return {first, last, true};
}

FrameSpec ParseFrame(const FrameOptions& options) {
    FrameSpec spec{};
    const std::optional<NamedFormat> told = ParseFormat(options);
    const NamedFormat format = told ? *told : ByFamily(options);
    if (options.size.empty()) throw UserError("-s: the width and height of the frame are needed");
    const Size size = ParseSize("-s", options.size);
    spec.frame = {format.layout, size.width, size.height, 0};
    if (options.pitch != "auto") SetPitch("--pitch", options.pitch, &spec.frame);
    ParseColours(options, format, &spec);
    spec.offset = ParseOffset(options.offset);
    spec.frames = ParseFrames(options.frames);
    if (!options.cell.empty()) spec.cell = ParseCell(options.cell);
    return spec;
}

void RequireOneFrame(const FrameRange& frames) {
    if (frames.first != frames.last)
        throw UserError("--frame: one frame is looked at, not several");
}

void TaskOptions::Declare(CLI::App& command) {
    AddText(command, "--gain", gain, "FACTOR",
            "Gain around the black level [1.0]. Binning applies it\nabove 1.0 only; --cell 1 "
            "always, and lifts what lies\nbelow the black level to it");
    AddText(command, "--out-bits", outBits, "10|12",
            "Depth of the result, for VX frames with cell 2 or 4\n[as RAW]");
}

float ParseGain(const std::string& text) {
    return static_cast<float>(ParseReal("--gain", text, 0, 1'000'000));
}

BinTask ParseTask(const std::string& name, const TaskOptions& options, const FrameSpec& spec) {
    if (spec.cell == 0) {
        throw UserError("--cell: the pixels per side of one colour are needed: 1, 2, 3 or 4");
    }
    BinTask task = MakeTask(spec.frame, OutputLayout(spec.frame.layout, options.outBits), spec.cell,
                            ParseGain(options.gain));
    // A pitch that is to be derived is known once the file is, and then it fits.
    if (task.in.pitch == 0) task.in.pitch = task.in.RowBytes();
    CheckTask(name, task);
    return task;
}

void ThreadOptions::Declare(CLI::App& command, const char* usual) {
    AddText(command, "--threads", threads, "N",
            Text("How many work at once; the result is the same [", usual, "]"));
}

int ThreadOptions::Count(int usual) const {
    if (!threads.empty()) {
        return static_cast<int>(ParseNumber("--threads", threads, 1, kMostThreads));
    }
    if (usual > 0) return usual;
    return std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, kMostThreads);
}

void ReportOptions::DeclareJson(CLI::App& command) {
    command.add_flag("--json", json, "Report on standard output, for machines");
}

void ReportOptions::Declare(CLI::App& command) {
    DeclareJson(command);
    command.add_flag("-q,--quiet", quiet, "Say nothing but errors");
}

void ReportOptions::Check(const std::string& out) const {
    if (json && out == "-") throw UserError("--json: standard output is taken by -o -");
}

}  // namespace tarn::tool
