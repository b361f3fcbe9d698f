// How failures travel to who asked, and how messages are put together.
#ifndef TARN_FRAMES_MESSAGE_H_
#define TARN_FRAMES_MESSAGE_H_

#include <cstdint>
#include <sstream>
#include <stdexcept>
#include <string>

namespace tarn::frames {

// What was asked or given is wrong; unreadable and unwritable files included. Exit code 2.
struct UserError : std::runtime_error {
    using runtime_error::runtime_error;
};

// A run that was right broke off: disk full, closed pipe. Exit code 1.
struct RunError : std::runtime_error {
    using runtime_error::runtime_error;
};

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

}  // namespace tarn::frames

#endif  // TARN_FRAMES_MESSAGE_H_
