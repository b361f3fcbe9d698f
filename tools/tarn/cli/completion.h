// What could stand in the place of a word on the tool's command line: bash asks it (tarn.bash).
#ifndef TARN_TOOL_CLI_COMPLETION_H_
#define TARN_TOOL_CLI_COMPLETION_H_

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "tools/tarn/cli/names.h"

namespace tarn::tool {

// One candidate a line for the last of the words, the first of which is the program's name. None
// where the name of a file is wanted, or nothing is known.
std::string Completions(const CLI::App& app, const std::vector<std::string>& words);

}  // namespace tarn::tool

#endif  // TARN_TOOL_CLI_COMPLETION_H_
