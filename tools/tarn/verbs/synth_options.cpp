#include "tools/tarn/verbs/synth_options.h"

#include <algorithm>

#include "frames/message.h"
#include "pictures/synth/scene.h"

namespace tarn::tool {
namespace {

// "E,R".
Noise ParseNoise(const std::string& option, const std::string& text) {
    const size_t comma = text.find(',');
    if (comma == text.npos) {
        throw UserError(Text(option, ": \"", text,
                             "\" is not E,R: electrons per code and read noise in codes, such as "
                             "4,1.5"));
    }
    Noise noise{};
    noise.electronsPerCode = ParseReal(option, text.substr(0, comma), 0.001, 1'000'000);
    noise.readNoise = ParseReal(option, text.substr(comma + 1), 0, 1'000'000);
    return noise;
}

}  // namespace

void SynthOptions::Declare(CLI::App& command) {
    AddText(command, "SRC", source, "",
            "Picture in colour (PNG, PPM), camera raw of a Bayer\nsensor, or a PGM that holds a "
            "Bayer mosaic; - is standard\ninput");
    AddText(command, "--chart", chart, kChartNames,
            "A test chart in place of SRC: colour patches, a slanted\nedge, ramps to clip and to "
            "black");
    AddOutput(
        command, "-o,--out", out,
        "File to write: a 16-bit .pgm of the code values, else\na packed frame; - is standard "
        "output")
        ->required();
    AddText(command, "-f,--format", layout, "NAME",
            "Layout to pack: qc10, qc12, vx10, vx12, or another\nname for one, see tarn formats; "
            "12 bits with --cell 1\nor 2")
        ->required();
    AddText(command, "--cell", cell, "1|2|3|4",
            "2 (Tetra), 3 (Nona), 4 (Hexadeca), or 1 for a plain\nBayer frame")
        ->required();
    AddText(command, "--pitch", pitch, "BYTES", "From one row to the next [tight: no padding]");
    AddText(command, "-s,--size", size, "WxH",
            "Size of the frame in pixels; SRC is cut or repeated to\nreach it [SRC's whole "
            "blocks; of a chart 4000x3000]");
    AddText(command, "--exposure", exposure, "FACTOR", "On the light, or levels above black [1]");
    AddText(command, "--noise", noise, "E,R",
            "Add noise: Poisson of E photoelectrons per code, and\nnormal of R codes, such as "
            "4,1.5 [none]");
    AddText(command, "--seed", seed, "N", "Another N, another noise [1]");
    AddText(command, "--black", black, "LEVEL",
            "Black level of a raw or PGM [the camera's; PGM: 0]");
    AddText(command, "--white", white, "LEVEL",
            "White level of a raw or PGM [the camera's; PGM: maxval]");
    AddText(command, "--cfa", colours, "ORDER",
            "Colour order: of a raw or PGM the order it has [the\ncamera's; PGM: RGGB], else the "
            "frame's [RGGB]");
    AddText(command, "--to", to, "raw|pgm", "Kind of FILE, whatever its ending");
    report.Declare(command);
    command.footer(
        "A picture is taken for sRGB unless it says otherwise and made linear, and each pixel of\n"
        "the frame keeps the colour of its filter. The samples of a raw or PGM are permuted\n"
        "inside each block of 2x2 cells: none is invented, noise stays real, and each moves by up\n"
        "to 1, 2 or 3 pixels. There the four colours of a block come from one place in SRC, not\n"
        "from cells apart: develop the binned frame with --half. Black becomes the library's\n"
        "level, 64 at 10 bits and 256 at 12; white the highest code.\n"
        "\n"
        "Examples:\n"
        "  tarn synth --chart all -o dump.raw -f qc10 --cell 2 --pitch 5120\n"
        "  tarn synth --chart edge -o edge.raw -f vx12 --cell 2 --noise 4,1.5 --seed 7\n"
        "  tarn synth photo.png -o photo.raw -f vx10 --cell 4 --noise 4,1.5\n"
        "  tarn synth photo.dng -o frame.raw -f qc10 --cell 3 -s 3000x2400 --exposure 2\n");
}

int SynthOptions::Cell(int bits) const {
    const int number = ParseCell(cell);
    if (bits == 12 && number > 2) {
        throw UserError(Text("-f ", layout, ": a ", kPatterns[number],
                             " frame has 10 bits; 12 bits go with --cell 1 and 2"));
    }
    return number;
}

double SynthOptions::Exposure() const {
    return ParseReal("--exposure", exposure, 0.0001, 1'000'000);
}

std::optional<Noise> SynthOptions::NoiseModel() const {
    if (noise.empty()) {
        if (!seed.empty()) throw UserError("--seed: goes with --noise");
        return std::nullopt;
    }
    Noise model = ParseNoise("--noise", noise);
    model.seed = 1;
    if (!seed.empty()) {
        model.seed = static_cast<uint64_t>(ParseNumber("--seed", seed, 0, INT64_MAX));
    }
    return model;
}

std::string SynthOptions::ColoursFor(const NamedFormat& format) const {
    if (!black.empty() || !white.empty()) {
        throw UserError("--black and --white: only a camera raw or a PGM has such levels");
    }
    if (!colours.empty()) {
        CheckColourOrder("--cfa", colours);
        return colours;
    }
    return format.colours.empty() ? "RGGB" : format.colours;
}

void SynthOptions::Override(Mosaic* mosaic) const {
    if (!black.empty()) {
        std::fill_n(mosaic->black, 4, double(ParseNumber("--black", black, 0, 65535)));
    }
    if (!white.empty()) {
        mosaic->white = double(ParseNumber("--white", white, 1, 65535));
    }
    if (!colours.empty()) {
        CheckColourOrder("--cfa", colours);
        mosaic->colours = colours;
    }
}

FileKind SynthOptions::Kind() const {
    const FileKind kind = ParseFileKind(to, out);
    if (kind == FileKind::Packed || kind == FileKind::Pgm) return kind;
    throw UserError("-o: synth writes packed frames and PGM, not PNG or DNG; tarn convert does");
}

}  // namespace tarn::tool
