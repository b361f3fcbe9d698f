// Where options leave a frame's geometry open: what they say of it, and what a guess adds.
#ifndef TARN_TOOL_CLI_GUESS_OPTIONS_H_
#define TARN_TOOL_CLI_GUESS_OPTIONS_H_

#include <string>

#include "frames/guess.h"
#include "tools/tarn/cli/frame_options.h"

namespace tarn::tool {

// What the options and the file's name tell of a dump of so many bytes. Throws UserError.
Known KnownFromOptions(const std::string& path, const FrameOptions& options, int64_t bytes);

struct GuessedFile {
    Guess guess;
    Bytes bytes;  // from --offset on
};

// What a file, or standard input, is likely to hold from --offset on. Throws UserError, also where
// it is not all of the frame whose size was told.
GuessedFile GuessFile(const std::string& path, const FrameOptions& options);

// What options leave open, filled in.
struct FilledOptions {
    FrameOptions options;
    std::string note;  // on what was guessed; empty when nothing was
};

// Throws UserError where what they leave open is not certain, and where more than one frame or a
// pipe is asked for.
FilledOptions WithGuess(const std::string& path, const FrameOptions& options);

}  // namespace tarn::tool

#endif  // TARN_TOOL_CLI_GUESS_OPTIONS_H_
