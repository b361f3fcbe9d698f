// Levels and white balance of what is developed, here or by whoever opens a DNG.
#ifndef TARN_TOOL_CLI_LEVELS_H_
#define TARN_TOOL_CLI_LEVELS_H_

#include <string>

#include "frames/picture.h"
#include "tools/tarn/cli/frame_options.h"

namespace tarn::tool {

struct LevelOptions {
    std::string black;
    std::string white;
    std::string balance;

    void Declare(CLI::App& command);
    bool Given() const { return !(black.empty() && white.empty() && balance.empty()); }
};

// Puts what was given in the place of what the picture has. Throws UserError for what cannot be.
void ApplyLevels(const LevelOptions& options, Picture* picture);

}  // namespace tarn::tool

#endif  // TARN_TOOL_CLI_LEVELS_H_
