// tarn verify: the library against the plain reference on this very frame, and its pixels against
// LibRaw where LibRaw knows the layout.
#include <nlohmann/json.hpp>

#include <algorithm>
#include <memory>
#include <span>
#include <vector>

#include "frames/message.h"
#include "frames/picture.h"
#include "pictures/frame_file.h"
#include "pictures/parallel_call.h"
#include "pictures/witness.h"
#include "tools/tarn/cli/result.h"
#include "tools/tarn/cli/say.h"
#include "tools/tarn/cli/verb.h"

namespace tarn::tool {
namespace {

struct Options {
    std::string raw;
    FrameOptions frame;
    TaskOptions task;
    ThreadOptions threads;
    ReportOptions report;
};

struct Difference : RunError {
    using RunError::RunError;
};

// Throws Difference at the first pixel that differs.
void Compare(const std::string& mine, const std::string& theirs, int width,
             const std::vector<uint16_t>& a, const std::vector<uint16_t>& b) {
    const auto differing = std::mismatch(a.begin(), a.end(), b.begin());
    if (differing.first == a.end()) return;
    const int64_t at = differing.first - a.begin();
    int64_t count = 0;
    for (size_t i = 0; i < a.size(); ++i) count += a[i] != b[i];
    throw Difference(Text("pixel (", at % width, ", ", at / width, ") is ", *differing.first,
                          " in ", mine, ", ", *differing.second, " in ", theirs, "; ",
                          Grouped(count), " of ", Grouped(int64_t(a.size())), " pixels differ"));
}

void CompareLastGroups(const PackedFrame& frame, const Bytes& library, const Bytes& reference) {
    const auto differing = std::mismatch(library.begin(), library.end(), reference.begin());
    if (differing.first == library.end()) return;
    const int64_t at = differing.first - library.begin();
    throw Difference(Text("past the pixels of row ", at / frame.pitch, ", byte ", at % frame.pitch,
                          " is ", int{*differing.first}, " in the library's result, ",
                          int{*differing.second}, " in the plain reference's"));
}

void HoldToReference(const BinTask& task, std::span<const uint8_t> frame, int threads) {
    Bytes library(static_cast<size_t>(task.out.Bytes()));
    RunTask(task, frame, library, threads);
    const Bytes reference = ReferenceRows(task, frame.data(), threads);
    Compare("the library's result", "the plain reference's", task.out.width,
            Unpack(task.out, library.data()), Unpack(task.out, reference.data()));
    CompareLastGroups(task.out, library, reference);
}

// Whether there is such a witness, and the unpacked pixels are the same.
bool HoldToLibRaw(const PackedFrame& frame, std::span<const uint8_t> bytes) {
    if (!LibRawUnpacks(frame)) return false;
    Compare("this tool's unpacking", "LibRaw's", frame.width, Unpack(frame, bytes.data()),
            LibRawCodes(frame, bytes.data()));
    return true;
}

void Tell(const Options& options, const BinTask& task, bool byLibRaw) {
    const bool quiet = options.report.Quiet();
    const int64_t pixels = int64_t{task.in.width} * task.in.height;
    if (options.report.json) {
        WriteJson({{"agree", true},
                   {"layout", LayoutName(task.in.layout)},
                   {"result_pixels", int64_t{task.out.width} * task.out.height},
                   {"witnessed_by_libraw", byLibRaw}});
    }
    Say(quiet, "library and plain reference agree: ", Describe(task.out), " from ",
        Describe(task.in, task.cell), ", gain ", task.gain, ", ",
        Grouped(int64_t{task.out.width} * task.out.height), " pixels");
    if (byLibRaw) {
        Say(quiet, "unpacked pixels and LibRaw agree: ", Grouped(pixels), " pixels");
    } else {
        Say(quiet,
            "the unpacked pixels were not held to LibRaw's, which unpacks qc10 and vx12, of "
            "sides up to ",
            Grouped(kLibRawLongestSide));
    }
}

void Run(const Options& options) {
    const FrameSpec spec = ParseFrame(options.frame);
    RequireOneFrame(spec.frames);
    BinTask task = ParseTask(InputName(options.raw), options.task, spec);
    const int threads = options.threads.Count();
    const FrameRun run = ReadFrames(options.raw, spec);
    task.in.pitch = run.frame.pitch;

    bool byLibRaw = false;
    try {
        HoldToReference(task, run.At(0), threads);
        byLibRaw = HoldToLibRaw(task.in, run.At(0));
    } catch (const Difference& difference) {
        if (options.report.json) WriteJson({{"agree", false}, {"difference", difference.what()}});
        throw;
    }
    Tell(options, task, byLibRaw);
}

std::function<void()> Declare(CLI::App& command) {
    const auto o = std::make_shared<Options>();
    AddText(command, "RAW", o->raw, "", "Packed frame; - is standard input")->required();
    o->frame.Declare(command);
    command.get_option("--size")->required();
    command.get_option("--cell")->required();
    o->task.Declare(command);
    o->threads.Declare(command);
    o->report.Declare(command);
    command.footer(
        "Exit code 1, and the first pixel that differs, when they do not agree.\n\n"
        "Example:\n"
        "  tarn verify dump.raw -f qc10 -s 4000x3000 --pitch auto --cell 2 --gain 1.5\n");
    return [o] { Run(*o); };
}

}  // namespace

const Verb kVerify{"verify", "Hold the library to the plain reference on this frame", Declare};

}  // namespace tarn::tool
