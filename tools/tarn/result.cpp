#include "tools/tarn/result.h"

#include <nlohmann/json.hpp>

#include "tools/tarn/dng.h"
#include "tools/tarn/message.h"
#include "tools/tarn/output.h"
#include "tools/tarn/png.h"

namespace tarn::tool {

void ResultOptions::Declare(CLI::App& command, const char* typeOfTo, const char* helpOfTo) {
    AddText(command, "-o,--out", out, "FILE",
            "File to write: .pgm (16-bit codes), .png, .dng, else\npacked; %d or %03d in it is "
            "the number of the frame;\n- is standard output")
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

Bytes Encode(const Target& target, Picture picture) {
    switch (target.kind) {
        case FileKind::Packed: return Pack(target.packed, picture.codes);
        case FileKind::Pgm: return EncodePgm(picture);
        case FileKind::Dng: return EncodeDng(picture);
        case FileKind::Png: break;
    }
    return target.grey ? EncodeGreyPng(picture) : DevelopPng(std::move(picture), target.half);
}

std::vector<std::string> OutputNames(const ResultOptions& options, const std::string& input,
                                     const Target& target, int64_t first, int64_t count) {
    const std::string& out = options.out;
    const size_t percent = out.find('%');
    const size_t d =
        percent == out.npos ? out.npos : out.find_first_not_of("0123456789", percent + 1);
    std::vector<std::string> names;
    if (d == out.npos || out[d] != 'd' || d - percent > 3) {
        if (count > 1 && target.kind != FileKind::Packed) {
            throw UserError(Text(
                "-o: ", count, " frames need a %d in the name, such as frame_%03d.", Ending(out)));
        }
        names.push_back(out);
    } else {
        const size_t digits = static_cast<size_t>(std::atoi(out.c_str() + percent + 1));
        for (int64_t i = 0; i < count; ++i) {
            std::string number = std::to_string(first + i);
            if (number.size() < digits) number.insert(0, digits - number.size(), '0');
            names.push_back(std::string(out).replace(percent, d + 1 - percent, number));
        }
    }
    for (const std::string& name : names) CheckOutput(name, input);
    return names;
}

void WriteFrames(const std::vector<std::string>& names, int64_t count,
                 const std::function<Bytes(int64_t)>& frame) {
    if (int64_t(names.size()) == count) {
        for (int64_t i = 0; i < count; ++i) WriteFile(names[static_cast<size_t>(i)], frame(i));
        return;
    }
    Bytes all;
    for (int64_t i = 0; i < count; ++i) {
        const Bytes bytes = frame(i);
        all.insert(all.end(), bytes.begin(), bytes.end());
    }
    WriteFile(names.front(), all);
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
