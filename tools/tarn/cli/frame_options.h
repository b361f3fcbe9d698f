// The options that several verbs share: declared, parsed and checked in one place.
#ifndef TARN_TOOL_CLI_FRAME_OPTIONS_H_
#define TARN_TOOL_CLI_FRAME_OPTIONS_H_

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "frames/formats.h"
#include "frames/frame_spec.h"
#include "frames/geometry.h"
#include "frames/safe_call.h"
#include "tools/tarn/cli/names.h"
#include "tools/tarn/cli/parse.h"

namespace tarn::tool {

// A string option; the type is what its value looks like in the help.
CLI::Option* AddText(CLI::App& command, const char* names, std::string& value, const char* type,
                     const std::string& help);

// The same of a file to write: what names standard output becomes "-".
CLI::Option* AddOutput(CLI::App& command, const char* names, std::string& value,
                       const std::string& help);

// What a verb does about a frame's geometry that it is not told.
enum class Untold { Default, Guessed };

// What a file of packed frames holds.
struct FrameOptions {
    std::string format;
    std::string family;
    std::string bits;
    std::string colours;
    std::string size;
    std::string pitch;
    std::string offset;
    std::string frames;
    std::string cell;

    void Declare(CLI::App& command, Untold untold = Untold::Default);
    // Nothing was said but what a picture in a PGM or DNG may want to have said of it.
    bool TellOnlyColours() const;
};

// Each throws UserError for what cannot be.
std::optional<NamedFormat> ParseFormat(const FrameOptions& options);  // none when none is told
void CheckColourOption(
    const FrameOptions& options);        // that --cfa is an order, and -f's if it has one
int ParseCell(const std::string& text);  // the pixels per side of one colour
int64_t ParseOffset(const std::string& text);

FrameRange ParseFrames(const std::string& text);

FrameSpec ParseFrame(const FrameOptions& options);

// Throws UserError when more than one frame is asked for.
void RequireOneFrame(const FrameRange& frames);

// What the library is to do with a frame.
struct TaskOptions {
    std::string gain = "1.0";
    std::string outBits;

    void Declare(CLI::App& command);
};
float ParseGain(const std::string& text);

// Throws UserError, beginning with the frame's name, when the library cannot do it.
BinTask ParseTask(const std::string& name, const TaskOptions& options, const FrameSpec& spec);

struct ThreadOptions {
    std::string threads;

    // `usual` is what the help says of their number when it is not given.
    void Declare(CLI::App& command, const char* usual = "the machine's");
    // The number given, or else `usual`, or the machine's when that is 0.
    int Count(int usual = 0) const;
};

struct ReportOptions {
    bool json = false;
    bool quiet = false;

    void Declare(CLI::App& command);
    void DeclareJson(CLI::App& command);  // of a verb that only reports
    bool Quiet() const { return quiet || json; }
    // Throws UserError when results and the report would both go to standard output.
    void Check(const std::string& out) const;
};

}  // namespace tarn::tool

#endif  // TARN_TOOL_CLI_FRAME_OPTIONS_H_
