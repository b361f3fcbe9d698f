// tarn synth: frames of multi-cell sensors out of what is at hand.
#include <nlohmann/json.hpp>

#include "frames/message.h"
#include "pictures/output.h"
#include "pictures/synth/sensor.h"
#include "tools/tarn/cli/result.h"
#include "tools/tarn/cli/say.h"
#include "tools/tarn/cli/verb.h"
#include "tools/tarn/verbs/synth_options.h"

namespace tarn::tool {
namespace {

Scene MakeScene(const SynthOptions& options, const NamedFormat& format, int cell) {
    if (options.source.empty() == options.chart.empty()) {
        throw UserError(
            "a frame is made of SRC or of a --chart, one of them; see tarn synth --help");
    }
    if (!options.chart.empty()) {
        return TestChart("--chart", options.chart, cell, options.ColoursFor(format));
    }
    const std::string name = InputName(options.source);
    Bytes bytes = ReadPictureFile(options.source);
    if (IsColourImage(bytes)) {
        return FilteredImage(name, DecodeColourImage(name, bytes), cell,
                             options.ColoursFor(format));
    }
    Mosaic mosaic = DecodeMosaic(name, bytes);
    options.Override(&mosaic);
    return PermutedMosaic(name, std::move(mosaic), cell);
}

void RequireBlocks(const std::string& what, int side, int block) {
    if (side % block == 0) return;
    const int floor = side / block * block;
    throw UserError(Text("-s: a ", what, " of ", side, " is not a whole number of blocks of ",
                         block, " pixels; ", floor > 0 ? Text(floor, " or ") : "", floor + block,
                         " would be"));
}

// The size asked for, or the scene's.
PackedFrame MakeFrame(const SynthOptions& options, Layout layout, const Scene& scene, int cell) {
    Size size = scene.size;
    if (!options.size.empty()) {
        size = ParseSize("-s", options.size);
        RequireBlocks("width", size.width, 2 * cell);
        RequireBlocks("height", size.height, 2 * cell);
    }
    PackedFrame frame{layout, size.width, size.height, 0};
    SetPitch("--pitch", options.pitch, &frame);
    CheckMemory(frame);
    return frame;
}

Bytes Encode(FileKind kind, const PackedFrame& frame, std::vector<uint16_t> codes) {
    if (kind == FileKind::Packed) return Pack(frame, codes);
    return EncodePgm({.width = frame.width,
                      .height = frame.height,
                      .bits = Shape(frame.layout).bits,
                      .codes = std::move(codes)});
}

nlohmann::json JsonReport(const SynthOptions& options, const PackedFrame& frame, const Scene& scene,
                          const Sensor& sensor, int cell) {
    nlohmann::json report = {{"output", options.out},    {"layout", LayoutName(frame.layout)},
                             {"width", frame.width},     {"height", frame.height},
                             {"pitch", frame.pitch},     {"cell", cell},
                             {"colours", scene.colours}, {"black", sensor.Black()},
                             {"white", sensor.White()},  {"exposure", sensor.exposure},
                             {"origin", scene.origin}};
    if (sensor.noise) {
        report["noise"] = {{"electrons_per_code", sensor.noise->electronsPerCode},
                           {"read_noise", sensor.noise->readNoise},
                           {"seed", sensor.noise->seed}};
    }
    return report;
}

std::string NoiseText(const Sensor& sensor) {
    if (!sensor.noise) return "";
    return Text("; noise of ", sensor.noise->electronsPerCode, " electrons per code and ",
                sensor.noise->readNoise, " codes, seed ", sensor.noise->seed);
}

void Run(const SynthOptions& options) {
    options.report.Check(options.out);
    const NamedFormat format = FindFormat("-f", options.layout);
    const int bits = Shape(format.layout).bits;
    const int cell = options.Cell(bits);
    const Sensor sensor{bits, options.Exposure(), options.NoiseModel()};
    const FileKind kind = options.Kind();
    if (kind != FileKind::Packed && !options.pitch.empty()) {
        throw UserError("--pitch: only packed output has a pitch");
    }
    CheckOutput(options.out, options.source);

    const Scene scene = MakeScene(options, format, cell);
    CheckSameColours("-f", format, scene.colours);
    const PackedFrame frame = MakeFrame(options, format.layout, scene, cell);
    WriteFile(options.out, Encode(kind, frame, Expose(sensor, scene, {frame.width, frame.height})));

    if (options.report.json) WriteJson(JsonReport(options, frame, scene, sensor, cell));
    Say(options.report.Quiet(), OutputName(options.out), ": ", kPatterns[cell], " frame, ",
        Describe(frame), ", ", scene.colours, ", black ", sensor.Black(), ", white ",
        sensor.White(), "; ", scene.origin, NoiseText(sensor));
}

std::function<void()> Declare(CLI::App& command) {
    const auto o = std::make_shared<SynthOptions>();
    o->Declare(command);
    return [o] { Run(*o); };
}

}  // namespace

const Verb kSynth{"synth", "Make a multi-cell frame of a picture, a camera raw or a test chart",
                  Declare};

}  // namespace tarn::tool
