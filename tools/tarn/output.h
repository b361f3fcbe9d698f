// Writing results: whole or not at all.
#ifndef TARN_TOOL_OUTPUT_H_
#define TARN_TOOL_OUTPUT_H_

#include <string>

#include "tools/tarn/input.h"

namespace tarn::tool {

// The name of a file in messages: "standard output" for "-".
std::string OutputName(const std::string& path);

// Throws UserError when the output cannot be written, before work is spent on it: a folder, an
// unwritable place, or the very file that is being read.
void CheckOutput(const std::string& path, const std::string& inputPath);

// Writes to standard output for "-". A regular or new file is written under a temporary name in its
// folder and renamed, so that it is never seen half-written and a failure leaves an existing one
// as it was; symbolic links are followed. Devices and pipes are written directly. Throws UserError
// when the file cannot be made, RunError when writing breaks off.
void WriteFile(const std::string& path, const Bytes& bytes);

}  // namespace tarn::tool

#endif  // TARN_TOOL_OUTPUT_H_
