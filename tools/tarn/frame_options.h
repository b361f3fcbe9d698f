// The options that several verbs share: declared, parsed and checked in one place.
#ifndef TARN_TOOL_FRAME_OPTIONS_H_
#define TARN_TOOL_FRAME_OPTIONS_H_

#include <CLI/CLI.hpp>
#include <string>

#include "tools/tarn/geometry.h"

namespace tarn::tool {

// A string option; the type is what its value looks like in the help.
CLI::Option* AddText(CLI::App& command, const char* names, std::string& value, const char* type,
                     const std::string& help);

// What a file of packed frames holds.
struct FrameOptions {
    std::string format;
    std::string family;
    std::string bits;
    std::string colours;
    std::string size;
    std::string pitch = "tight";
    std::string offset = "0";
    std::string frames;
    std::string cell;

    void Declare(CLI::App& command);
    // Nothing was said but what a picture in a PGM or DNG may want to have said of it.
    bool TellOnlyColours() const;
};

// The pixels per side of one colour.
int ParseCell(const std::string& text);

struct FrameSpec {
    PackedFrame frame;    // a pitch of 0 is to be derived from the file's size
    std::string colours;  // a Bayer order; empty for a sensor without colours
    bool coloursKnown;    // they were told, not assumed
    int64_t offset;       // bytes before the first frame
    int64_t first, last;  // of the frames asked for, from 0; a last of -1 is the file's
    bool framesTold;      // they were asked for; else the file is to hold the one frame
    int cell;             // 0 when it was not told
};
FrameSpec ParseFrame(const FrameOptions& options);

struct ReportOptions {
    bool json = false;
    bool quiet = false;

    void Declare(CLI::App& command);
    bool Quiet() const { return quiet || json; }
    // Throws UserError when results and the report would both go to standard output.
    void Check(const std::string& out) const;
};

}  // namespace tarn::tool

#endif  // TARN_TOOL_FRAME_OPTIONS_H_
