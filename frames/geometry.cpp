#include "frames/geometry.h"

#include <iterator>
#include <string_view>

#include "frames/message.h"

namespace tarn::frames {
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

}  // namespace

const char* LayoutName(Layout layout) {
    return kNames[static_cast<int>(layout)];
}

void CheckPitch(const std::string& option, const PackedFrame& frame) {
    if (frame.pitch >= frame.RowBytes() && frame.pitch <= kLongestPitch) return;
    throw UserError(Text(option, ": ", Grouped(frame.pitch), " bytes are too ",
                         frame.pitch < frame.RowBytes() ? "few" : "many", ": a ",
                         LayoutName(frame.layout), " row of ", frame.width, " pixels takes ",
                         Grouped(frame.RowBytes())));
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

}  // namespace tarn::frames
