#include "tools/tarn/guess_options.h"

#include <algorithm>

#include "tools/tarn/geometry.h"
#include "tools/tarn/message.h"

namespace tarn::tool {
namespace {

bool LeavesOpen(const FrameOptions& options) {
    return !ParseFormat(options) || options.size.empty() || options.cell.empty();
}

}  // namespace

Known KnownFromOptions(const std::string& path, const FrameOptions& options, int64_t bytes) {
    Known known = KnownFromName(path, bytes);
    if (const auto format = ParseFormat(options)) known.layout = format->layout;
    if (!options.cell.empty()) known.cell = ParseCell(options.cell);
    if (!options.size.empty()) {
        const Size size = ParseSize("-s", options.size);
        known.width = size.width;
        known.height = size.height;
        known.pitch.reset();
    }
    const std::string& pitch = options.pitch;
    if (pitch == "tight" && known.layout && known.width) {
        PackedFrame frame{*known.layout, *known.width, 1, 0};
        SetPitch("--pitch", pitch, &frame);
        known.pitch = frame.pitch;
    } else if (!pitch.empty() && pitch != "auto" && pitch != "tight") {
        known.pitch = ParseNumber("--pitch", pitch, 1, kLongestPitch);
    }
    return known;
}

FrameOptions WithGuess(const std::string& path, const FrameOptions& options, bool quiet) {
    if (!LeavesOpen(options)) return options;
    const int64_t size = FileSize(path);
    const int64_t offset = ParseOffset(options.offset);
    const bool one = !ParseFrames(options.frames).told && size > offset && size <= kMostBytes;
    if (!one) return options;
    const Bytes bytes = ReadFile(path, size, offset);
    const Guess guess =
        GuessFrame(path, bytes, KnownFromOptions(path, options, int64_t(bytes.size())));
    if (guess.Whole() != Certainty::Certain) {
        throw UserError(Text(path,
                             ": what it is cannot be guessed with certainty; see tarn inspect ",
                             path, " and say it with -f, -s, --pitch and --cell"));
    }
    const auto& [frame, cell, cost] = guess.ranked.front();
    Say(quiet, "note: ", path, " is taken for ", Describe(frame), ", cell ", cell,
        ", by a guess that is certain");
    FrameOptions filled = options;
    if (!ParseFormat(options)) filled.format = LayoutName(frame.layout);
    filled.size = Text(frame.width, "x", frame.height);
    filled.pitch = Text(frame.pitch);
    filled.cell = Text(cell);
    return filled;
}

}  // namespace tarn::tool
