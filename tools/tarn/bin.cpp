// tarn bin: one packed frame through the library.
#include "tools/tarn/geometry.h"
#include "tools/tarn/message.h"
#include "tools/tarn/output.h"
#include "tools/tarn/picture.h"
#include "tools/tarn/verb.h"

namespace tarn::tool {
namespace {

struct Options {
    std::string raw;
    std::string out;
    std::string to;
    std::string layout;
    std::string size;
    std::string pitch;
    std::string cell;
    std::string gain = "1.0";
    std::string outBits;
    std::string outPitch;
    std::string colours = "RGGB";
    bool half = false;
    bool quiet = false;
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

BinTask MakeTask(const Options& options) {
    BinTask task{};
    const Size size = ParseSize("-s", options.size);
    task.cell = static_cast<int>(ParseNumber("--cell", options.cell, 1, 4));
    task.gain = ParseGain(options.gain);
    task.in = {ParseLayout(options.layout), size.width, size.height, 0};
    SetPitch("--pitch", options.pitch, &task.in);
    if (std::min(size.width, size.height) < task.cell) {
        throw UserError(Text("-s: ", options.size, " holds no ", task.cell, "x", task.cell,
                             " cell; both sides must be at least ", task.cell));
    }
    task.out = {OutputLayout(task.in.layout, options.outBits), size.width / task.cell,
                size.height / task.cell, 0};
    SetPitch("--out-pitch", options.outPitch, &task.out);
    const std::string objection = Objection(task);
    if (!objection.empty()) throw UserError(objection);
    return task;
}

// What is done, but may not be what was meant.
void SayNotes(const Options& options, const BinTask& task) {
    if (task.in.width % task.cell || task.in.height % task.cell) {
        Say(options.quiet, "note: ", options.size, " is not a whole number of cells: the last ",
            task.in.width % task.cell, " columns and ", task.in.height % task.cell,
            " rows are left out");
    }
    if (task.cell > 1 && task.gain < 1) {
        Say(options.quiet, "note: binning applies a gain above 1.0 only; ", options.gain,
            " changes nothing");
    }
}

Bytes ReadFrame(const std::string& path, const PackedFrame& frame) {
    const std::string name = InputName(path);
    const int64_t size = FileSize(path);
    size >= 0 ? CheckFileSize(name, size, frame) : CheckMemory(frame);
    Bytes bytes = ReadFile(path, frame.Bytes());
    if (int64_t(bytes.size()) > frame.Bytes()) {
        throw UserError(Text(name, " holds more than the ", Grouped(frame.Bytes()), " bytes of ",
                             Describe(frame)));
    }
    CheckFileSize(name, int64_t(bytes.size()), frame);
    return bytes;
}

Bytes Encode(const Options& options, FileKind kind, const PackedFrame& frame, Bytes packed) {
    if (kind == FileKind::Packed) return packed;
    std::vector<uint16_t> codes = Unpack(frame, packed.data());
    if (kind == FileKind::Pgm) return EncodePgm(frame, codes);
    return DevelopPng(frame, std::move(codes), options.colours, options.half);
}

void Run(const Options& options) {
    const BinTask task = MakeTask(options);
    const FileKind kind = ParseFileKind(options.to, options.out);
    CheckColourOrder("--cfa", options.colours);
    if (kind != FileKind::Packed && !options.outPitch.empty()) {
        throw UserError("--out-pitch: only packed output has a pitch");
    }
    CheckOutput(options.out, options.raw);

    const Bytes frame = ReadFrame(options.raw, task.in);
    CheckMemory(task.out);
    Bytes binned(static_cast<size_t>(task.out.Bytes()));
    const double milliseconds = RunTask(task, frame.data(), binned.data());
    WriteFile(options.out, Encode(options, kind, task.out, std::move(binned)));

    SayNotes(options, task);
    Say(options.quiet, OutputName(options.out), ": ", Describe(task.out), " from ",
        Describe(task.in), ", cell ", task.cell, ", gain ", task.gain, ": ",
        std::round(milliseconds * 100) / 100, " ms");
}

std::function<void()> Declare(CLI::App& command) {
    const auto o = std::make_shared<Options>();
    const auto add = [&command](const char* name, std::string& value, const char* type,
                                const std::string& help) {
        return command.add_option(name, value, help)->type_name(type);
    };
    add("RAW", o->raw, "", "Packed frame to read; - is standard input")->required();
    add("-o,--out", o->out, "FILE",
        "File to write: a 16-bit .pgm of the code values,\n"
        "a .png developed to colour, else a packed frame;\n- is standard output")
        ->required();
    add("-f,--format", o->layout, "LAYOUT", Text("Layout of RAW: ", kLayoutNames))->required();
    add("-s,--size", o->size, "WxH", "Width and height of RAW in pixels")->required();
    add("--cell", o->cell, "N",
        "Pixels per side that become one: 2 (Tetra),\n3 (Nona), 4 (Hexadeca); 1 applies the gain "
        "only")
        ->required();
    add("--pitch", o->pitch, "BYTES", "From one row of RAW to the next [tight: no padding]");
    add("--gain", o->gain, "FACTOR",
        "Gain around the black level [1.0]. Binning applies it\nabove 1.0 only; --cell 1 always, "
        "and lifts what lies\nbelow the black level to it");
    add("--out-bits", o->outBits, "10|12",
        "Depth of the result, for VX frames with cell 2 or 4\n[as RAW]");
    add("--out-pitch", o->outPitch, "BYTES",
        "From one packed row of the result to the next [tight]");
    add("--cfa", o->colours, "ORDER", "Colours for .png: RGGB, GRBG, GBRG, BGGR [RGGB]");
    command.add_flag("--half", o->half,
                     "For .png: one pixel for each 2x2 of the result, nothing\ninterpolated");
    add("--to", o->to, "KIND", "raw, pgm or png, whatever the ending of FILE");
    command.add_flag("-q,--quiet", o->quiet, "Say nothing but errors");
    command.footer(
        "Example:\n"
        "  tarn bin frame.raw -o out.pgm -f qc10 -s 8160x6120 --pitch 10240 --cell 2 --gain 1.5\n");
    return [o] { Run(*o); };
}

}  // namespace

const Verb kBin{"bin", "Bin a packed frame, apply a gain, write it packed, as PGM or as PNG",
                Declare};

}  // namespace tarn::tool
