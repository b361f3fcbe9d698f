// What a verb makes of frames and how it gets into files: packed, PGM, PNG or DNG.
#ifndef TARN_TOOL_CLI_RESULT_H_
#define TARN_TOOL_CLI_RESULT_H_

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "frames/picture.h"
#include "pictures/frame_file.h"
#include "pictures/output_names.h"
#include "tools/tarn/cli/file_kind.h"
#include "tools/tarn/cli/frame_options.h"
#include "tools/tarn/cli/levels.h"

namespace tarn::tool {

struct ResultOptions {
    std::string out;
    std::string to;
    std::string pitch;
    bool grey = false;
    bool half = false;
    LevelOptions levels;

    void Declare(CLI::App& command, const char* typeOfTo, const char* helpOfTo);
};

struct Target {
    FileKind kind;
    bool grey;           // a PNG of the mosaic, not developed
    bool half;           // developed without interpolation
    PackedFrame packed;  // what a packed file holds
    int bits;            // of its codes

    bool NeedsBayer() const { return kind == FileKind::Dng || (kind == FileKind::Png && !grey); }
};

// The target but for what a packed file holds: that is only known where there is one. Throws
// UserError for options that do not go with its kind.
Target MakeTarget(const ResultOptions& options, FileKind kind, int bits);

// Throws UserError when colours are needed and there are none.
void CheckColours(const Target& target, const std::string& colours);

// Notes that colours were needed and had to be assumed.
void SayAssumedColours(const Target& target, const std::string& colours, bool quiet);

// Notes what the file holds besides whole frames.
void SayLeftOver(const FrameRun& run, bool quiet);

Bytes Encode(const Target& target, Picture picture);

// Throws UserError: only packed frames may share a file.
[[noreturn]] void RefuseSharing(const std::string& frames);

// The names of the files, each of which can be written: one for each frame where the name tells
// them apart, else one for all, which several can share only packed. Throws UserError.
std::vector<std::string> OutputNames(const std::string& out, const Target& target,
                                     const std::vector<FrameName>& frames,
                                     const std::vector<std::string>& inputs);

// Makes the frames on several threads and writes them, each to its file, or all to one in order.
void WriteFrames(const std::vector<std::string>& names, int64_t count, int threads,
                 const std::function<Bytes(int64_t)>& frame);

// The files as a message names them, and what is in each.
std::string FilesText(const std::vector<std::string>& names, const Target& target);

// To standard output.
void WriteJson(const nlohmann::json& report);

}  // namespace tarn::tool

#endif  // TARN_TOOL_CLI_RESULT_H_
