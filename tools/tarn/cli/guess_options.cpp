#include "tools/tarn/cli/guess_options.h"

#include <algorithm>

#include "frames/geometry.h"
#include "frames/message.h"
#include "pictures/input.h"

namespace tarn::tool {
namespace {

bool LeavesOpen(const FrameOptions& options) {
    return !ParseFormat(options) || options.size.empty() || options.cell.empty();
}

void CheckCertainty(const std::string& path, const FrameOptions& options, const Guess& guess) {
    if (guess.Whole() != Certainty::Certain) {
        const std::string from = options.offset.empty() ? "" : " --offset " + options.offset;
        throw UserError(
            Text(path, ": what it is cannot be guessed with certainty; see tarn inspect ",
                 AsArgument(path), from, " and say it with -f, -s, --pitch and --cell"));
    }
    if (guess.maybeSeveral) {
        const auto& [frame, cell, cost] = guess.ranked.front();
        throw UserError(Text(path, ": is taken for ", Describe(frame, cell),
                             ", which is taller than wide: give -s, and --frame where these are "
                             "several frames"));
    }
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
    CheckColourOption(options);
    const int64_t offset = ParseOffset(options.offset);
    const std::string name = InputName(path, offset);
    const int64_t all = FileSize(path);
    const auto checkSize = [&](int64_t size) {
        if (size <= kMostBytes) return;
        throw UserError(Text(name, ": is larger than the 4 GiB that can be guessed"));
    };
    checkSize(all - offset);
    Bytes bytes = ReadFile(path, kMostBytes, all < 0 ? 0 : offset);
    checkSize(int64_t(bytes.size()));
    if (all < 0)
        bytes.erase(bytes.begin(), bytes.begin() + std::min(offset, int64_t(bytes.size())));
    const int64_t size = static_cast<int64_t>(bytes.size());
    Guess guess = GuessFrame(name, bytes, KnownFromOptions(path, options, size));
    if (!options.size.empty()) CheckFileSize(name, size, guess.ranked.front().frame);
    return {std::move(guess), std::move(bytes)};
}

FilledOptions WithGuess(const std::string& path, const FrameOptions& options) {
    if (!LeavesOpen(options)) return {options, ""};
    if (ParseFrames(options.frames).told || FileSize(path) < 0) {
        throw UserError(
            "-f, -s and --cell are needed here: only a file of one frame can be guessed");
    }
    const Guess guess = GuessFile(path, options).guess;
    const auto& [frame, cell, cost] = guess.ranked.front();
    CheckCertainty(path, options, guess);
    FilledOptions filled{options, Text(path, " is taken for ", Describe(frame, cell),
                                       ", by a guess that is certain")};
    if (!ParseFormat(options)) filled.options.format = LayoutName(frame.layout);
    filled.options.size = Text(frame.width, "x", frame.height);
    filled.options.pitch = Text(frame.pitch);
    filled.options.cell = Text(cell);
    return filled;
}

}  // namespace tarn::tool
