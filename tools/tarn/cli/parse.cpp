#include "tools/tarn/cli/parse.h"

#include <charconv>

#include "frames/message.h"

namespace tarn::tool {
namespace {

// Keeps every product of a width, a height and a few bytes within 64 bits.
constexpr int64_t kLongestSide = 1'000'000'000;

}  // namespace

int64_t ParseNumber(const std::string& option, const std::string& text, int64_t least,
                    int64_t most) {
    int64_t number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || number < least || number > most) {
        throw UserError(Text(option, ": \"", text, "\" is not a whole number from ", Grouped(least),
                             " to ", Grouped(most)));
    }
    return number;
}

double ParseReal(const std::string& option, const std::string& text, double least, double most) {
    double number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc() && stop == end && number >= least && number <= most) return number;
    throw UserError(Text(option, ": \"", text, "\" is not a number from ", least, " to ",
                         Grouped(int64_t(most))));
}

Size ParseSize(const std::string& option, const std::string& text) {
    const size_t cross = text.find('x');
    if (cross == std::string::npos) {
        throw UserError(Text(option, ": \"", text, "\" is not WIDTHxHEIGHT, such as 8160x6120"));
    }
    const auto side = [&](const std::string& part) {
        return static_cast<int>(ParseNumber(option, part, 1, kLongestSide));
    };
    return {side(text.substr(0, cross)), side(text.substr(cross + 1))};
}

void SetPitch(const std::string& option, const std::string& text, PackedFrame* frame) {
    if (text.empty() || text == "tight") {
        frame->pitch = frame->RowBytes();
        return;
    }
    frame->pitch = ParseNumber(option, text, 1, kLongestPitch);
    CheckPitch(option, *frame);
}

void CheckColourOrder(const std::string& option, const std::string& text) {
    for (const char* order : kColourOrders) {
        if (text == order) return;
    }
    throw UserError(Text(option, ": \"", text, "\" is none of RGGB, GRBG, GBRG, BGGR"));
}

}  // namespace tarn::tool
