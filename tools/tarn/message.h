// What the tool says: how failures travel to main, and how messages are put together.
#ifndef TARN_TOOL_MESSAGE_H_
#define TARN_TOOL_MESSAGE_H_

#include <cstdint>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace tarn::tool {

// What was asked or given is wrong; unreadable and unwritable files included. Exit code 2.
struct UserError : std::runtime_error {
    using runtime_error::runtime_error;
};

// A run that was right broke off: disk full, closed pipe. Exit code 1.
struct RunError : std::runtime_error {
    using runtime_error::runtime_error;
};

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

template <class... Parts>
std::string Text(const Parts&... parts) {
    std::ostringstream text;
    (text << ... << parts);
    return text.str();
}

// 62668800 as "62,668,800".
inline std::string Grouped(int64_t number) {
    const std::string digits = std::to_string(number);
    std::string text;
    for (size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0 && digits[i - 1] != '-') text += ',';
        text += digits[i];
    }
    return text;
}

// Messages go to standard error: standard output may carry data.
template <class... Parts>
void Say(bool quiet, const Parts&... parts) {
    if (!quiet) std::cerr << OneLine(Text(parts...)) << std::flush;
}

}  // namespace tarn::tool

#endif  // TARN_TOOL_MESSAGE_H_
