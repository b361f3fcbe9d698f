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
    if (pitch == "tight") {
        if (!known.layout || !known.width) {
            throw UserError("--pitch tight: needs -f and -s; give them, or a number of bytes");
        }
        PackedFrame frame{*known.layout, *known.width, 1, 0};
        SetPitch("--pitch", pitch, &frame);
        known.pitch = frame.pitch;
    } else if (!pitch.empty() && pitch != "auto") {
        known.pitch = ParseNumber("--pitch", pitch, 1, kLongestPitch);
    }
    return known;
}

GuessedFile GuessFile(const std::string& path, const FrameOptions& options) {
    const int64_t offset = ParseOffset(options.offset);
    const std::string name = InputName(path, offset);
    Bytes bytes = ReadFile(path, kMostBytes);
    if (int64_t(bytes.size()) > kMostBytes) {
        throw UserError(Text(name, ": is larger than the 4 GiB that can be guessed"));
    }
    bytes.erase(bytes.begin(), bytes.begin() + std::min(offset, int64_t(bytes.size())));
    const int64_t size = static_cast<int64_t>(bytes.size());
    Guess guess = GuessFrame(name, bytes, KnownFromOptions(path, options, size));
    if (!options.size.empty()) CheckFileSize(name, size, guess.ranked.front().frame);
    return {std::move(guess), std::move(bytes)};
}

bool MayBeSeveral(const PackedFrame& frame) {
    return frame.height > frame.width;
}

FrameOptions WithGuess(const std::string& path, const FrameOptions& options, bool quiet) {
    if (!LeavesOpen(options)) return options;
    if (ParseFrames(options.frames).told || FileSize(path) < 0) {
        throw UserError(
            "-f, -s and --cell are needed here: only a file of one frame can be guessed");
    }
    const Guess guess = GuessFile(path, options).guess;
    const auto& [frame, cell, cost] = guess.ranked.front();
    if (guess.Whole() != Certainty::Certain) {
        throw UserError(Text(path,
                             ": what it is cannot be guessed with certainty; see tarn inspect ",
                             path, " and say it with -f, -s, --pitch and --cell"));
    }
    if (options.size.empty() && MayBeSeveral(frame)) {
        throw UserError(Text(path, ": is taken for ", Describe(frame), ", cell ", cell,
                             ", which is taller than wide: give -s, and --frame where these are "
                             "several frames"));
    }
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
