// Where options leave a frame's geometry open: what they say of it, and what a guess adds.
#ifndef TARN_TOOL_GUESS_OPTIONS_H_
#define TARN_TOOL_GUESS_OPTIONS_H_

#include <string>

#include "tools/tarn/frame_options.h"
#include "tools/tarn/guess.h"

namespace tarn::tool {

// What the options and the file's name tell of a dump of so many bytes. Throws UserError.
Known KnownFromOptions(const std::string& path, const FrameOptions& options, int64_t bytes);

// The options with what they leave open filled in, where it is certain; that is said. Throws
// UserError where it is not. Only a file that holds one frame can be guessed: others are left to be
// complained of.
FrameOptions WithGuess(const std::string& path, const FrameOptions& options, bool quiet);

}  // namespace tarn::tool

#endif  // TARN_TOOL_GUESS_OPTIONS_H_
