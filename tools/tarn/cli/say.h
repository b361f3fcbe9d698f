// What the tool says to its user.
#ifndef TARN_TOOL_CLI_SAY_H_
#define TARN_TOOL_CLI_SAY_H_

#include <iostream>
#include <string>

#include "frames/message.h"
#include "tools/tarn/cli/names.h"

namespace tarn::tool {

// Whatever an argument or a file's name holds, a message stays one line.
inline std::string OneLine(std::string text) {
    for (char& c : text) {
        if (static_cast<unsigned char>(c) < ' ') c = ' ';
    }
    return text + '\n';
}

inline void Complain(const std::string& reason) {
    std::cerr << OneLine("tarn: " + reason) << std::flush;
}

// Messages go to standard error: standard output may carry data.
template <class... Parts>
void Say(bool quiet, const Parts&... parts) {
    if (!quiet) std::cerr << OneLine(Text(parts...)) << std::flush;
}

}  // namespace tarn::tool

#endif  // TARN_TOOL_CLI_SAY_H_
