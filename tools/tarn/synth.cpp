// tarn synth: a multi-cell frame out of an ordinary Bayer one, without inventing a sample.
//
// A block of 2n x 2n pixels of a Bayer mosaic holds n x n samples of each colour position, as one
// block of four n x n cells does. Samples are permuted inside each block: noise stays real, and the
// sum over a cell is the sum over the block's samples of that colour.
#include <cmath>

#include "tools/tarn/formats.h"
#include "tools/tarn/geometry.h"
#include "tools/tarn/message.h"
#include "tools/tarn/mosaic.h"
#include "tools/tarn/output.h"
#include "tools/tarn/picture.h"
#include "tools/tarn/verb.h"

namespace tarn::tool {
namespace {

struct Options {
    std::string source;
    std::string out;
    std::string to;
    std::string layout;
    std::string cell;
    std::string pitch;
    std::string size;
    std::string black;
    std::string white;
    std::string colours;
    double exposure = 1;
    bool quiet = false;
};

constexpr const char* kPatterns[] = {"", "plain Bayer", "Tetra", "Nona", "Hexadeca"};

// Source levels to ours: black to one sixteenth of the range, white to its end.
struct LevelMap {
    double black[4];
    double scale;
    double ourBlack;
    double ourWhite;

    uint16_t operator()(uint16_t sample, int position) const {
        const double code = ourBlack + (sample - black[position]) * scale;
        return static_cast<uint16_t>(std::lround(std::clamp(code, 0.0, ourWhite)));
    }
};

LevelMap MakeLevels(const Mosaic& mosaic, int bits, double exposure) {
    const double darkest = *std::max_element(mosaic.black, mosaic.black + 4);
    if (mosaic.white <= darkest) {
        throw UserError(
            Text("--white ", mosaic.white, " must be above the black level, which is ", darkest));
    }
    LevelMap map{};
    std::copy(mosaic.black, mosaic.black + 4, map.black);
    map.ourBlack = 1 << (bits - 4);
    map.ourWhite = (1 << bits) - 1;
    map.scale = exposure * (map.ourWhite - map.ourBlack) / (mosaic.white - darkest);
    return map;
}

void OverrideLevels(const Options& options, Mosaic* mosaic) {
    if (!options.black.empty()) {
        std::fill_n(mosaic->black, 4, double(ParseNumber("--black", options.black, 0, 65535)));
    }
    if (!options.white.empty()) {
        mosaic->white = double(ParseNumber("--white", options.white, 1, 65535));
    }
    if (!options.colours.empty()) {
        CheckColourOrder("--cfa", options.colours);
        mosaic->colours = options.colours;
    }
    if (!(options.exposure > 0 && options.exposure <= 1e6)) {
        throw UserError("--exposure: must be above 0 and at most 1,000,000");
    }
}

// One level, or all four where they differ.
std::string BlackText(const Mosaic& mosaic) {
    const double* black = mosaic.black;
    if (std::count(black, black + 4, black[0]) == 4) return Text(black[0]);
    return Text(black[0], "/", black[1], "/", black[2], "/", black[3]);
}

void RequireBlocks(const std::string& what, int side, int block) {
    if (side % block == 0 && side > 0) return;
    const int floor = side / block * block;
    throw UserError(Text("-s: a ", what, " of ", side, " is not a whole number of blocks of ",
                         block, " pixels; ", floor > 0 ? Text(floor, " or ") : "", floor + block,
                         " would be"));
}

// The size asked for, or the source's whole blocks.
Size FrameSize(const Options& options, Size source, int block) {
    if (options.size.empty()) return source;
    const Size size = ParseSize("-s", options.size);
    RequireBlocks("width", size.width, block);
    RequireBlocks("height", size.height, block);
    return size;
}

// The source repeated to the frame's size, its samples permuted, its levels mapped.
std::vector<uint16_t> Permute(const Mosaic& mosaic, Size source, Size frame, int cell,
                              const LevelMap& map) {
    const int block = 2 * cell;
    std::vector<uint16_t> codes;
    codes.reserve(size_t(frame.width) * size_t(frame.height));
    // Along one axis: the source coordinate of a frame coordinate, two apart inside a cell.
    const auto from = [&](int at, int period) {
        const int inBlock = at % block;
        return (at - inBlock + inBlock % cell * 2 + inBlock / cell) % period;
    };
    for (int y = 0; y < frame.height; ++y) {
        const int fromY = from(y, source.height);
        const uint16_t* row = mosaic.samples.data() + size_t(mosaic.width) * size_t(fromY);
        for (int x = 0; x < frame.width; ++x) {
            const int fromX = from(x, source.width);
            codes.push_back(map(row[fromX], fromY % 2 * 2 + fromX % 2));
        }
    }
    return codes;
}

Bytes Encode(FileKind kind, const PackedFrame& frame, std::vector<uint16_t>& codes) {
    if (kind == FileKind::Packed) return Pack(frame, codes);
    return EncodePgm({.width = frame.width,
                      .height = frame.height,
                      .bits = Shape(frame.layout).bits,
                      .codes = std::move(codes)});
}

void Run(const Options& options) {
    const NamedFormat format = FindFormat("-f", options.layout);
    const Layout layout = format.layout;
    const int bits = Shape(layout).bits;
    const int cell = static_cast<int>(ParseNumber("--cell", options.cell, 1, 4));
    if (bits == 12 && cell > 2) {
        throw UserError(Text("-f ", options.layout, ": a ", kPatterns[cell],
                             " frame has 10 bits; 12 bits go with --cell 1 and 2"));
    }
    const FileKind kind = ParseFileKind(options.to, options.out);
    if (kind == FileKind::Png || kind == FileKind::Dng) {
        throw UserError("-o: synth writes packed frames and PGM, not PNG or DNG");
    }
    CheckOutput(options.out, options.source);

    Mosaic mosaic = ReadMosaic(options.source);
    OverrideLevels(options, &mosaic);
    CheckSameColours("-f", format, mosaic.colours);
    const int block = 2 * cell;
    const Size source{mosaic.width / block * block, mosaic.height / block * block};
    if (source.width == 0 || source.height == 0) {
        throw UserError(Text(InputName(options.source), ": ", mosaic.width, "x", mosaic.height,
                             " is less than one block of ", block, "x", block));
    }
    const Size size = FrameSize(options, source, block);
    PackedFrame frame{layout, size.width, size.height, 0};
    SetPitch("--pitch", options.pitch, &frame);
    CheckMemory(frame);
    const LevelMap map = MakeLevels(mosaic, bits, options.exposure);
    std::vector<uint16_t> codes = Permute(mosaic, source, size, cell, map);
    WriteFile(options.out, Encode(kind, frame, codes));

    Say(options.quiet, OutputName(options.out), ": ", kPatterns[cell], " frame, ", Describe(frame),
        ", ", mosaic.colours, ", black ", map.ourBlack, ", white ", map.ourWhite, "; from ",
        mosaic.width, "x", mosaic.height, ", black ", BlackText(mosaic), ", white ", mosaic.white,
        "; samples moved by at most ", cell - 1, " pixels");
}

std::function<void()> Declare(CLI::App& command) {
    const auto o = std::make_shared<Options>();
    const auto add = [&command](const char* name, auto& value, const char* type,
                                const std::string& help) {
        return command.add_option(name, value, help)->type_name(type);
    };
    add("SRC", o->source, "",
        "Camera raw of a Bayer sensor, or a PGM (P5) that\nholds a Bayer mosaic; - is standard "
        "input")
        ->required();
    add("-o,--out", o->out, "FILE",
        "File to write: a 16-bit .pgm of the code values, else\na packed frame; - is standard "
        "output")
        ->required();
    add("-f,--format", o->layout, "NAME",
        "Layout to pack: qc10, qc12, vx10, vx12, or another\nname for one, see tarn formats; 12 "
        "bits with --cell 1\nor 2")
        ->required();
    add("--cell", o->cell, "N", "2 (Tetra), 3 (Nona), 4 (Hexadeca), or 1 for a plain\nBayer frame")
        ->required();
    add("--pitch", o->pitch, "BYTES", "From one row to the next [tight: no padding]");
    add("-s,--size", o->size, "WxH",
        "Size of the frame in pixels; SRC is cut or repeated to\nreach it [SRC's whole blocks]");
    add("--black", o->black, "LEVEL", "Black level of SRC [the camera's; PGM: 0]");
    add("--white", o->white, "LEVEL", "White level of SRC [the camera's; PGM: maxval]");
    add("--exposure", o->exposure, "FACTOR", "On the levels above black [1]");
    add("--cfa", o->colours, "ORDER", "Colour order of SRC [the camera's; PGM: RGGB]");
    add("--to", o->to, "KIND", "raw or pgm, whatever the ending of FILE");
    command.add_flag("-q,--quiet", o->quiet, "Say nothing but errors");
    command.footer(
        "Samples are permuted inside each block of 2x2 cells; none is invented, noise stays real,\n"
        "and each moves by up to 1, 2 or 3 pixels. SRC's black level becomes the library's, 64 at\n"
        "10 bits and 256 at 12; its white level the highest code. The four colours of a block\n"
        "come from one place in SRC, not from cells apart: develop the binned frame with --half.\n"
        "\n"
        "Example:\n"
        "  tarn synth photo.CR2 -o frame.raw -f qc10 --cell 2 -s 8160x6120 --pitch 10240\n");
    return [o] { Run(*o); };
}

}  // namespace

const Verb kSynth{"synth", "Make a multi-cell frame out of an ordinary camera raw", Declare};

}  // namespace tarn::tool
