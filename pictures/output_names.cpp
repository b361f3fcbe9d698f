#include "pictures/output_names.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace tarn::pictures {
namespace {

// One piece of a pattern: plain text, or a place for something.
struct Piece {
    char letter;  // 'd', 's', or 0 for text
    size_t digits;
    std::string text;
};

// The piece that starts at `at`, which moves behind it.
Piece NextPiece(const std::string& pattern, size_t* at) {
    constexpr size_t kMostDigits = 2;
    const size_t percent = *at;
    const size_t letter =
        std::min(pattern.find_first_not_of("0123456789", percent + 1), pattern.size());
    const char kind = letter < pattern.size() ? pattern[letter] : '\0';
    const size_t width = letter - percent - 1;
    if (pattern[percent] == '%' && kind == 'd' && width <= kMostDigits) {
        *at = letter + 1;
        return {'d', size_t(std::atoi(pattern.c_str() + percent + 1)), ""};
    }
    if (pattern[percent] == '%' && width == 0 && (kind == 's' || kind == '%')) {
        *at = letter + 1;
        return kind == 's' ? Piece{'s', 0, ""} : Piece{0, 0, "%"};
    }
    const size_t end = std::min(pattern.find('%', percent + 1), pattern.size());
    *at = end;
    return {0, 0, pattern.substr(percent, end - percent)};
}

std::string Padded(int64_t number, size_t digits) {
    std::string text = std::to_string(number);
    if (text.size() < digits) text.insert(0, digits - text.size(), '0');
    return text;
}

}  // namespace

bool NamePattern::Has(char letter) const {
    for (size_t at = 0; at < pattern_.size();) {
        if (NextPiece(pattern_, &at).letter == letter) return true;
    }
    return false;
}

std::string NamePattern::Of(const FrameName& frame) const {
    std::string name;
    for (size_t at = 0; at < pattern_.size();) {
        const Piece piece = NextPiece(pattern_, &at);
        if (piece.letter == 'd') name += Padded(frame.number, piece.digits);
        if (piece.letter == 's') {
            name +=
                frame.input == "-" ? "stdin" : std::filesystem::path(frame.input).stem().string();
        }
        name += piece.text;
    }
    return name;
}

}  // namespace tarn::pictures
