#include "tools/tarn/frame_options.h"

#include <tuple>

#include "tools/tarn/formats.h"
#include "tools/tarn/message.h"

namespace tarn::tool {
namespace {

constexpr int64_t kFurthest = int64_t{1} << 60;
constexpr int64_t kMostFrames = 1'000'000'000;

NamedFormat ByFamily(const FrameOptions& options) {
    if (options.family.empty() || options.bits.empty()) {
        throw UserError("-f, or --family and --bits, must say the layout; see tarn formats");
    }
    if (options.family != "qc" && options.family != "vx") {
        throw UserError(Text("--family: \"", options.family, "\" is neither qc nor vx"));
    }
    if (options.bits != "10" && options.bits != "12") {
        throw UserError(Text("--bits: \"", options.bits, "\" is neither 10 nor 12"));
    }
    return FindFormat("--family", options.family + options.bits);
}

NamedFormat ParseFormat(const FrameOptions& options) {
    if (options.format.empty()) return ByFamily(options);
    if (!options.family.empty() || !options.bits.empty()) {
        throw UserError("-f says the layout; --family and --bits must not say it again");
    }
    return FindFormat("-f", options.format);
}

void ParseColours(const FrameOptions& options, const NamedFormat& format, FrameSpec* spec) {
    spec->coloursKnown = !format.colours.empty() || !options.colours.empty();
    if (options.colours.empty()) {
        spec->colours = format.grey ? "" : format.colours.empty() ? "RGGB" : format.colours;
        return;
    }
    CheckColourOrder("--cfa", options.colours);
    if (!format.colours.empty() && format.colours != options.colours) {
        throw UserError(
            Text("--cfa: ", options.colours, " contradicts ", format.name, ": ", format.colours));
    }
    spec->colours = options.colours;
}

void ParseFrames(const std::string& text, FrameSpec* spec) {
    spec->framesTold = !text.empty();
    if (text == "all") spec->last = -1;
    if (text.empty() || text == "all") return;
    const size_t dash = text.find('-', 1);
    spec->first = ParseNumber("--frame", text.substr(0, dash), 0, kMostFrames);
    spec->last = spec->first;
    if (dash == std::string::npos) return;
    spec->last = ParseNumber("--frame", text.substr(dash + 1), 0, kMostFrames);
    if (spec->last < spec->first) {
        throw UserError(Text("--frame: ", text, " runs backwards"));
    }
}

}  // namespace

CLI::Option* AddText(CLI::App& command, const char* names, std::string& value, const char* type,
                     const std::string& help) {
    return command.add_option(names, value, help)->type_name(type);
}

void FrameOptions::Declare(CLI::App& command) {
    AddText(command, "-f,--format", format, "NAME",
            "Layout: qc10, qc12, vx10, vx12, or another name\nfor one; see tarn formats");
    AddText(command, "--family", family, "qc|vx", "Layout, together with --bits, in place of -f");
    AddText(command, "--bits", bits, "10|12", "See --family");
    AddText(command, "--cfa", colours, "ORDER",
            "RGGB, GRBG, GBRG or BGGR [what the name of the\nlayout says, else RGGB]");
    AddText(command, "-s,--size", size, "WxH", "Width and height in pixels");
    AddText(command, "--pitch", pitch, "BYTES",
            "From one row to the next, or tight: no padding, or\nauto: by the file's size [tight]");
    AddText(command, "--offset", offset, "BYTES", "Before the first frame [0]");
    AddText(command, "--frame", frames, "N|A-B|all",
            "Frames of a file of several, from 0 [the file holds\none]");
    AddText(command, "--cell", cell, "N",
            "Pixels per side of one colour: 1 (plain Bayer),\n2 (Tetra), 3 (Nona), 4 (Hexadeca)");
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

int ParseCell(const std::string& text) {
    return static_cast<int>(ParseNumber("--cell", text, 1, 4));
}

FrameSpec ParseFrame(const FrameOptions& options) {
    FrameSpec spec{};
    const NamedFormat format = ParseFormat(options);
    if (options.size.empty()) throw UserError("-s: the width and height of the frame are needed");
    const Size size = ParseSize("-s", options.size);
    spec.frame = {format.layout, size.width, size.height, 0};
    if (options.pitch != "auto") SetPitch("--pitch", options.pitch, &spec.frame);
    ParseColours(options, format, &spec);
    spec.offset = ParseNumber("--offset", options.offset, 0, kFurthest);
    ParseFrames(options.frames, &spec);
    if (!options.cell.empty()) spec.cell = ParseCell(options.cell);
    return spec;
}

void ReportOptions::Declare(CLI::App& command) {
    command.add_flag("--json", json, "Report on standard output, for machines");
    command.add_flag("-q,--quiet", quiet, "Say nothing but errors");
}

void ReportOptions::Check(const std::string& out) const {
    if (json && out == "-") throw UserError("--json: standard output is taken by -o -");
}

}  // namespace tarn::tool
