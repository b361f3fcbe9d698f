#include "tools/tarn/geometry.h"

#include <charconv>
#include <iterator>
#include <string_view>

#include "tools/tarn/message.h"

namespace tarn::tool {
namespace {

// In the order of Layout.
constexpr const char* kNames[] = {"qc10", "qc12", "vx10", "vx12"};
static_assert(std::size(kNames) == kLayoutCount);

// What messages tell of them.
static_assert([](std::string_view list) {
    for (const std::string_view name : kNames) {
        if (!list.starts_with(name)) return false;
        list.remove_prefix(name.size());
        if (list.starts_with(", ")) list.remove_prefix(2);
    }
    return list.empty();
}(kLayoutNames));

// Keeps every product of a width, a height and a few bytes within 64 bits.
constexpr int64_t kLongestSide = 1'000'000'000;

}  // namespace

const char* LayoutName(Layout layout) {
    return kNames[static_cast<int>(layout)];
}

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

void CheckPitch(const std::string& option, const PackedFrame& frame) {
    if (frame.pitch >= frame.RowBytes() && frame.pitch <= kLongestPitch) return;
    throw UserError(Text(option, ": ", Grouped(frame.pitch), " bytes are too ",
                         frame.pitch < frame.RowBytes() ? "few" : "many", ": a ",
                         LayoutName(frame.layout), " row of ", frame.width, " pixels takes ",
                         Grouped(frame.RowBytes())));
}

void SetPitch(const std::string& option, const std::string& text, PackedFrame* frame) {
    if (text.empty() || text == "tight") {
        frame->pitch = frame->RowBytes();
        return;
    }
    frame->pitch = ParseNumber(option, text, 1, kLongestPitch);
    CheckPitch(option, *frame);
}

void CheckMemory(const PackedFrame& frame, int64_t count) {
    if (count <= kMostBytes / frame.Bytes()) return;
    throw UserError(Text(count > 1 ? Text(count, " frames of ") : "", Describe(frame), " take",
                         count > 1 ? " " : "s ", Grouped(frame.Bytes()),
                         count > 1 ? " bytes each" : " bytes", "; at most ", Grouped(kMostBytes),
                         " are handled at once"));
}

void CheckFileSize(const std::string& name, int64_t bytes, const PackedFrame& frame) {
    if (bytes >= frame.LeastBytes() && bytes <= frame.Bytes()) return;
    std::string text = Text(name, " holds ", Grouped(bytes), " bytes; ", frame.width, "x",
                            frame.height, " ", LayoutName(frame.layout), " at pitch ", frame.pitch,
                            " needs ", Grouped(frame.Bytes()));
    if (frame.LeastBytes() != frame.Bytes()) {
        text += Text(" (or ", Grouped(frame.LeastBytes()), " without the last row's padding)");
    }
    const int64_t pitch = bytes / frame.height;
    if (bytes % frame.height == 0 && pitch >= frame.RowBytes()) {
        text += Text("; --pitch ", pitch, " would fit");
    }
    throw UserError(text);
}

std::string Describe(const PackedFrame& frame) {
    return Text(frame.width, "x", frame.height, " ", LayoutName(frame.layout), " at pitch ",
                frame.pitch);
}

std::string Describe(const PackedFrame& frame, int cell) {
    return Text(Describe(frame), ", cell ", cell);
}

void CheckColourOrder(const std::string& option, const std::string& text) {
    for (const char* order : kColourOrders) {
        if (text == order) return;
    }
    throw UserError(Text(option, ": \"", text, "\" is none of RGGB, GRBG, GBRG, BGGR"));
}

}  // namespace tarn::tool
