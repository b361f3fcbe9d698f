#include "tools/tarn/cli/result.h"

#include <nlohmann/json.hpp>
#include <optional>

#include "frames/message.h"
#include "pictures/dng.h"
#include "pictures/output.h"
#include "pictures/parallel.h"
#include "pictures/png.h"
#include "tools/tarn/cli/say.h"

namespace tarn::tool {

void ResultOptions::Declare(CLI::App& command, const char* typeOfTo, const char* helpOfTo) {
    AddOutput(
        command, "-o,--out", out,
        "File to write: .pgm (16-bit codes), .png, .dng, else\npacked; - is standard output. "
        "In it %d or %03d is\nthe number of the frame, %s the name of RAW without\nits ending, "
        "%% a %. Packed frames may share a file")
        ->required();
    AddText(command, "--to", to, typeOfTo, helpOfTo);
    AddText(command, "--out-pitch", pitch, "BYTES", "From one packed row to the next [tight]");
    command.add_flag("--grey", grey, "A .png of the mosaic, 16-bit grey, in place of colour");
    command.add_flag("--half", half,
                     "A .png of one pixel for each 2x2, in place of interpolation;\nwhat binned "
                     "frames of synth want");
    levels.Declare(command);
}

Target MakeTarget(const ResultOptions& options, FileKind kind, int bits) {
    Target target{kind, options.grey, options.half, {}, bits};
    if (!options.pitch.empty() && kind != FileKind::Packed) {
        throw UserError("--out-pitch: only packed output has a pitch");
    }
    if (options.grey && kind != FileKind::Png) throw UserError("--grey: goes with .png only");
    if (options.half && (options.grey || kind != FileKind::Png)) {
        throw UserError("--half: goes with a developed .png only");
    }
    if (options.levels.Given() && !target.NeedsBayer()) {
        throw UserError("--black, --white and --wb go with .dng and a developed .png only");
    }
    return target;
}

void CheckColours(const Target& target, const std::string& colours) {
    if (!target.NeedsBayer() || !colours.empty()) return;
    throw UserError(Text("-f: names a sensor without colours, which a ",
                         target.kind == FileKind::Dng ? "DNG" : "developed PNG",
                         " needs; give --cfa if it has them, or make a PGM or a --grey PNG"));
}

void SayAssumedColours(const Target& target, const std::string& colours, bool quiet) {
    if (!target.NeedsBayer()) return;
    Say(quiet, "note: nothing tells the colour order; ", colours, " is taken, --cfa changes it");
}

void SayLeftOver(const FrameRun& run, bool quiet) {
    if (run.leftOver == 0) return;
    Say(quiet, "note: ", Grouped(run.leftOver), " bytes after the last whole frame are left out");
}

Bytes Encode(const Target& target, Picture picture) {
    switch (target.kind) {
        case FileKind::Packed: return Pack(target.packed, picture.codes);
        case FileKind::Pgm: return EncodePgm(picture);
        case FileKind::Dng: return EncodeDng(picture);
        case FileKind::Png: break;
    }
    return target.grey ? EncodeGreyPng(picture) : DevelopPng(std::move(picture), target.half);
}

void RefuseSharing(const std::string& frames) {
    throw UserError(Text("-o: ", frames, " frames need a %d in the name, such as frame_%03d"));
}

std::vector<std::string> OutputNames(const std::string& out, const Target& target,
                                     const std::vector<FrameName>& frames,
                                     const std::vector<std::string>& inputs) {
    const NamePattern pattern(out);
    std::vector<std::string> names;
    if (pattern.Numbers() || pattern.NamesInput()) {
        for (const FrameName& frame : frames) names.push_back(pattern.Of(frame));
    } else {
        names.push_back(pattern.Of(frames.front()));
        if (frames.size() > 1 && target.kind != FileKind::Packed) {
            RefuseSharing(std::to_string(frames.size()));
        }
    }
    CheckOutputs(names, inputs);
    if (const auto shared = SharedOutput(names)) {
        throw UserError(Text("-o: several frames would go to one file, such as ", *shared,
                             "; each needs its own, by %d in the name"));
    }
    return names;
}

void WriteFrames(const std::vector<std::string>& names, int64_t count, int threads,
                 const std::function<Bytes(int64_t)>& frame) {
    std::optional<OutputFile> all;
    if (int64_t(names.size()) < count) all.emplace(names.front());
    InOrder order;
    ParallelFor(count, threads, [&](int64_t i, int) {
        try {
            const Bytes bytes = frame(i);
            if (!all) {
                WriteFile(names[static_cast<size_t>(i)], bytes);
            } else {
                order.Do(i, [&] { all->Append(bytes); });
            }
        } catch (...) {
            order.Stop();
            throw;
        }
        return true;
    });
    if (all) all->Commit();
}

std::string FilesText(const std::vector<std::string>& names, const Target& target) {
    std::string text = OutputName(names.front());
    if (names.size() > 1) text += " to " + names.back();
    return target.kind == FileKind::Packed ? text + ": " + Describe(target.packed) : text;
}

void WriteJson(const nlohmann::json& report) {
    // Names of files need not be text.
    const auto replace = nlohmann::json::error_handler_t::replace;
    const std::string text = report.dump(2, ' ', false, replace) + "\n";
    WriteFile("-", Bytes(text.begin(), text.end()));
}

}  // namespace tarn::tool
