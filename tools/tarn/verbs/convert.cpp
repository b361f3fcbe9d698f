// tarn convert: frames from one form to another, their codes unchanged but for the depth.
#include <nlohmann/json.hpp>

#include <memory>
#include <vector>

#include "frames/formats.h"
#include "frames/message.h"
#include "pictures/output.h"
#include "tools/tarn/cli/result.h"
#include "tools/tarn/cli/say.h"
#include "tools/tarn/cli/source.h"
#include "tools/tarn/cli/verb.h"

namespace tarn::tool {
namespace {

struct Options {
    std::string raw;
    FrameOptions frame;
    ResultOptions result;
    ThreadOptions threads;
    ReportOptions report;
};

// --to may also name the layout to pack in.
FileKind TargetKind(const ResultOptions& options) {
    const bool layout = !options.to.empty() && !FindFileKind(options.to);
    return layout ? FileKind::Packed : ParseFileKind(options.to, options.out);
}

Layout TargetLayout(const ResultOptions& options, const Source& source) {
    if (!options.to.empty() && options.to != "raw") {
        const NamedFormat format = FindFormat("--to", options.to, Text(", and ", kFileKinds));
        if (source.coloursKnown) CheckSameColours("--to", format, source.picture.colours);
        return format.layout;
    }
    if (source.run) return source.run->frame.layout;
    throw UserError(Text("--to: ", options.out, " needs a layout to be packed in, such as qc10"));
}

Target MakeTarget(const ResultOptions& options, const Source& source) {
    const Picture& picture = source.picture;
    Target target = MakeTarget(options, TargetKind(options), picture.bits);
    if (target.kind != FileKind::Packed) return target;
    target.packed = {TargetLayout(options, source), picture.width, picture.height, 0};
    target.bits = Shape(target.packed.layout).bits;
    SetPitch("--out-pitch", options.pitch, &target.packed);
    CheckMemory(target.packed, source.Count());
    return target;
}

// Developers know one pattern: 2x2 pixels.
void RequirePlainBayer(const Options& options, const Source& source, const Target& target) {
    if (!target.NeedsBayer() || source.cell == 1) return;
    throw UserError(Text(
        "--cell ", source.cell, ": ", target.kind == FileKind::Dng ? "a DNG" : "a developed PNG",
        " is of a plain Bayer frame; raw developers get the colours of cells of ", source.cell, "x",
        source.cell, " pixels wrong. Bin the frame first: tarn bin ", options.raw, " -o ",
        options.result.out, " --cell ", source.cell, " ..."));
}

Picture InDepth(int bits, Picture picture) {
    const int up = bits - picture.bits;
    for (uint16_t& code : picture.codes) {
        code = static_cast<uint16_t>(up > 0 ? code << up : code >> -up);
    }
    picture.bits = bits;
    return picture;
}

// What happens to each code.
std::string CodeChange(int from, int to) {
    if (from == to) return "codes unchanged";
    if (from < to) return Text("codes times ", 1 << (to - from));
    return Text("codes shifted right by ", from - to);
}

nlohmann::json JsonReport(const Options& options, const std::vector<std::string>& names,
                          const Source& source, const Target& target) {
    nlohmann::json report = {{"input", options.raw},
                             {"outputs", names},
                             {"width", source.picture.width},
                             {"height", source.picture.height},
                             {"frames", source.Count()},
                             {"bits_from", source.picture.bits},
                             {"bits_to", target.bits},
                             {"colours", source.picture.colours},
                             {"colours_assumed", !source.coloursKnown}};
    if (source.run) {
        report["pitch_from"] = source.run->frame.pitch;
        report["bytes_left_over"] = source.run->leftOver;
    }
    if (target.kind == FileKind::Packed) {
        report["layout"] = LayoutName(target.packed.layout);
        report["pitch"] = target.packed.pitch;
    }
    return report;
}

void Run(const Options& options) {
    options.report.Check(options.result.out);
    const int threads = options.threads.Count();
    Source source = ReadSource(options.raw, options.frame);
    const Target target = MakeTarget(options.result, source);
    RequirePlainBayer(options, source, target);
    const bool quiet = options.report.Quiet();
    CheckColours(target, source.picture.colours);
    if (target.NeedsBayer()) ApplyLevels(options.result.levels, &source.picture);
    const std::vector<std::string> names =
        OutputNames(options.result.out, target, source.Names(options.raw), {options.raw});
    WriteFrames(names, source.Count(), threads,
                [&](int64_t i) { return Encode(target, InDepth(target.bits, source.At(i))); });

    if (options.report.json) WriteJson(JsonReport(options, names, source, target));
    if (!source.coloursKnown) SayAssumedColours(target, source.picture.colours, quiet);
    if (source.run) SayLeftOver(*source.run, quiet);
    Say(quiet, FilesText(names, target), " from ",
        source.Count() > 1 ? Text(source.Count(), " frames of ") : "", source.description, ", ",
        CodeChange(source.picture.bits, target.bits));
}

std::function<void()> Declare(CLI::App& command) {
    const auto o = std::make_shared<Options>();
    AddText(command, "RAW", o->raw, "",
            "Packed frames (with -f and -s), a PGM, a DNG or another\ncamera raw; - is standard "
            "input")
        ->required();
    o->result.Declare(command, "NAME|raw|pgm|png|dng",
                      "Layout to pack in, by any name of tarn formats, or\nkind of FILE, whatever "
                      "its ending [as RAW]");
    o->frame.Declare(command);
    o->threads.Declare(command);
    o->report.Declare(command);
    command.footer(
        "From 10 to 12 bits codes are multiplied by 4; from 12 to 10 bits they lose their last "
        "two\n"
        "bits. A DNG of a frame with cells of several pixels is refused: bin it first.\n\n"
        "Examples:\n"
        "  tarn convert burst.raw -o burst_%d.png -f qc10 -s 2000x1500 --frame all\n"
        "  tarn convert dump_binned.raw -o frame.dng -f pRAA -s 2000x1500 --pitch auto\n"
        "  tarn convert frame.dng -o frame.raw --to BayerRG12p\n");
    return [o] { Run(*o); };
}

}  // namespace

const Verb kConvert{"convert", "Convert frames between packed layouts, PGM, PNG and DNG", Declare};

}  // namespace tarn::tool
