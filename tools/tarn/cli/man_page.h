// The manual page, out of the same tree of verbs and options that --help prints.
#ifndef TARN_TOOL_CLI_MAN_PAGE_H_
#define TARN_TOOL_CLI_MAN_PAGE_H_

#include <CLI/CLI.hpp>
#include <string>

#include "tools/tarn/cli/names.h"

namespace tarn::tool {

// In the language of man(7).
std::string ManPage(const CLI::App& app);

}  // namespace tarn::tool

#endif  // TARN_TOOL_CLI_MAN_PAGE_H_
