// What a verb of the tool is. A new one is a file of its own that defines its Verb, and a line in
// the table in main.cpp.
#ifndef TARN_TOOL_CLI_VERB_H_
#define TARN_TOOL_CLI_VERB_H_

#include <CLI/CLI.hpp>
#include <functional>

#include "tools/tarn/cli/names.h"

namespace tarn::tool {

struct Verb {
    const char* name;
    const char* summary;
    // Declares arguments and options on the verb's command, and returns what runs the verb once
    // they are parsed. Running throws UserError or RunError.
    std::function<void()> (*declare)(CLI::App& command);
};

extern const Verb kBin;
extern const Verb kConvert;
extern const Verb kFormats;
extern const Verb kSynth;
extern const Verb kInspect;
extern const Verb kSelftest;
extern const Verb kVerify;
extern const Verb kBench;

}  // namespace tarn::tool

#endif  // TARN_TOOL_CLI_VERB_H_
