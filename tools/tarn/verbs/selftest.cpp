// tarn selftest: the golden vectors through this build of the library.
#include <algorithm>
#include <memory>
#include <vector>

#include "engines/TarnQCEngine.h"
#include "engines/TarnVXEngine.h"
#include "frames/geometry.h"
#include "frames/message.h"
#include "frames/picture.h"
#include "frames/safe_call.h"
#include "pictures/golden.h"
#include "tools/tarn/cli/frame_options.h"
#include "tools/tarn/cli/say.h"
#include "tools/tarn/cli/verb.h"

namespace tarn::tool {
namespace {

struct Options {
    std::string folder;
    bool quiet = false;
};

// Where codes of a frame differ first; throws RunError there.
void ExpectCodes(const std::string& what, int width, const std::vector<uint16_t>& got,
                 const std::vector<uint16_t>& golden) {
    for (size_t i = 0; i < golden.size(); ++i) {
        if (got[i] == golden[i]) continue;
        throw RunError(Text(what, ": pixel (", i % size_t(width), ", ", i / size_t(width), ") is ",
                            got[i], "; the golden value is ", golden[i]));
    }
}

void ExpectBytes(const std::string& what, int64_t pitch, const Bytes& got, const Bytes& golden) {
    for (size_t i = 0; i < golden.size(); ++i) {
        if (got[i] == golden[i]) continue;
        throw RunError(Text(what, ": byte ", int64_t(i) % pitch, " of row ", int64_t(i) / pitch,
                            " is ", int{got[i]}, "; the golden byte is ", int{golden[i]}));
    }
}

// Rows of values through the exported packer; row padding as the golden file has it.
Bytes PackByEngine(const GoldenFrame& golden) {
    const PackedFrame& frame = golden.frame;
    Bytes bytes = golden.packed;
    std::vector<uint16_t> row(static_cast<size_t>(frame.width));
    const int bits = Shape(frame.layout).bits;
    for (int y = 0; y < frame.height; ++y) {
        const auto from = golden.values.begin() + int64_t{y} * frame.width;
        std::copy_n(from, frame.width, row.begin());
        uint8_t* to = bytes.data() + y * frame.pitch;
        if (IsVX(frame.layout)) {
            TarnVXEngine engine;
            bits == 12 ? engine.UnpackToPack_12bit(row.data(), to, frame.width, bits)
                       : engine.UnpackToPack_10bit(row.data(), to, frame.width, bits);
        } else {
            TarnQCEngine engine;
            bits == 12 ? engine.UnpackToPack_12bit(row.data(), to, frame.width, bits)
                       : engine.UnpackToPack_10bit(row.data(), to, frame.width, bits);
        }
    }
    return bytes;
}

void CheckFrame(const GoldenFrame& golden) {
    const PackedFrame& frame = golden.frame;
    ExpectCodes("frame " + golden.name + ", unpacked", frame.width,
                Unpack(frame, golden.packed.data()), golden.values);
    // The packers take whole groups only; a last group may hold more than the row's pixels.
    if (frame.width % Shape(frame.layout).pixels != 0) return;
    ExpectBytes("frame " + golden.name + ", packed by the library", frame.pitch,
                PackByEngine(golden), golden.packed);
}

void CheckResult(const Golden& golden, const GoldenResult& result) {
    const GoldenFrame& from = golden.Frame(result.from);
    const BinTask task{from.frame, result.out.frame, result.cell, result.gain};
    const std::string what = "result " + result.out.name;
    CheckTask(what, task);
    CheckFrame(result.out);
    Bytes binned(result.out.packed.size(), kGoldenPadding);
    RunTask(task, from.packed, binned);
    ExpectCodes(what, task.out.width, Unpack(task.out, binned.data()), result.out.values);
    ExpectBytes(what, task.out.pitch, binned, result.out.packed);
}

void Run(const Options& options) {
    const std::string folder = options.folder.empty() ? GoldenFolder() : options.folder;
    const Golden golden = ReadGolden(folder);
    if (golden.frames.empty() || golden.results.empty()) {
        throw UserError(folder + "/manifest.json: names no frames or no results");
    }
    for (const GoldenFrame& frame : golden.frames) CheckFrame(frame);
    for (const GoldenResult& result : golden.results) CheckResult(golden, result);
    Say(options.quiet, golden.frames.size(), " frames and ", golden.results.size(), " results of ",
        folder, ": the library agrees with every byte");
}

std::function<void()> Declare(CLI::App& command) {
    const auto o = std::make_shared<Options>();
    AddText(command, "--golden", o->folder, "FOLDER",
            "Where the golden vectors are [as installed with this\nprogram]");
    command.add_flag("-q,--quiet", o->quiet, "Say nothing but errors");
    command.footer(
        "Exit code 1, and the first difference named, when the library differs.\n\n"
        "Example:\n"
        "  tarn selftest\n");
    return [o] { Run(*o); };
}

}  // namespace

const Verb kSelftest{"selftest", "Run the golden vectors through this build of the library",
                     Declare};

}  // namespace tarn::tool
