// tarn verify: the library against the plain reference on this very frame, and its pixels against
// LibRaw where LibRaw knows the layout.
#include "tools/tarn/geometry.h"
#include "tools/tarn/message.h"
#include "tools/tarn/picture.h"
#include "tools/tarn/verb.h"
#include "tools/tarn/witness.h"

namespace tarn::tool {
namespace {

struct Options {
    std::string raw;
    std::string layout;
    std::string size;
    std::string pitch;
    std::string cell;
    std::string outBits;
    float gain = 1;
    bool quiet = false;
};

Layout WithBits(Layout layout, const std::string& text) {
    const int64_t bits = ParseNumber("--out-bits", text, 10, 12);
    if (bits == 11) throw UserError("--out-bits: 11 is neither 10 nor 12");
    if (IsVX(layout)) return bits == 12 ? Layout::VXRaw12 : Layout::VXRaw10;
    return bits == 12 ? Layout::QCRaw12 : Layout::QCRaw10;
}

BinTask MakeTask(const Options& options) {
    BinTask task{};
    const Size size = ParseSize("-s", options.size);
    task.cell = static_cast<int>(ParseNumber("--cell", options.cell, 1, 4));
    task.gain = options.gain;
    task.in = {ParseLayout(options.layout), size.width, size.height, 0};
    SetPitch("--pitch", options.pitch, &task.in);
    task.out = task.in;
    if (!options.outBits.empty()) {
        task.out.layout = WithBits(task.in.layout, options.outBits);
    }
    task.out.width = size.width / task.cell;
    task.out.height = size.height / task.cell;
    task.out.pitch = task.out.RowBytes();
    const std::string objection = Objection(task);
    if (!objection.empty()) throw UserError(objection);
    return task;
}

Bytes ReadFrame(const std::string& path, const PackedFrame& frame) {
    Bytes bytes = ReadFile(path, frame.Bytes());
    CheckFileSize(InputName(path), static_cast<int64_t>(bytes.size()), frame);
    return bytes;
}

// Throws RunError at the first pixel that differs.
void Compare(const std::string& mine, const std::string& theirs, int width,
             const std::vector<uint16_t>& a, const std::vector<uint16_t>& b) {
    const auto differing = std::mismatch(a.begin(), a.end(), b.begin());
    if (differing.first == a.end()) return;
    const int64_t at = differing.first - a.begin();
    int64_t count = 0;
    for (size_t i = 0; i < a.size(); ++i) count += a[i] != b[i];
    throw RunError(Text("pixel (", at % width, ", ", at / width, ") is ", *differing.first, " in ",
                        mine, ", ", *differing.second, " in ", theirs, "; ", Grouped(count), " of ",
                        Grouped(int64_t(a.size())), " pixels differ"));
}

void CompareLastGroups(const PackedFrame& frame, const Bytes& library, const Bytes& reference) {
    const auto differing = std::mismatch(library.begin(), library.end(), reference.begin());
    if (differing.first == library.end()) return;
    const int64_t at = differing.first - library.begin();
    throw RunError(Text("past the pixels of row ", at / frame.pitch, ", byte ", at % frame.pitch,
                        " is ", int{*differing.first}, " in the library's result, ",
                        int{*differing.second}, " in the plain reference's"));
}

void Run(const Options& options) {
    const BinTask task = MakeTask(options);
    const Bytes frame = ReadFrame(options.raw, task.in);

    Bytes library(static_cast<size_t>(task.out.Bytes()));
    RunTask(task, frame.data(), library.data());
    const Bytes reference = ReferenceRows(task, frame.data());
    Compare("the library's result", "the plain reference's", task.out.width,
            Unpack(task.out, library.data()), Unpack(task.out, reference.data()));
    CompareLastGroups(task.out, library, reference);
    Say(options.quiet, "library and plain reference agree: ", Describe(task.out), " from ",
        Describe(task.in), ", cell ", task.cell, ", gain ", task.gain, ", ",
        Grouped(int64_t{task.out.width} * task.out.height), " pixels");

    if (!LibRawUnpacks(task.in)) {
        Say(options.quiet, "LibRaw is no witness for ", LayoutName(task.in.layout),
            " at this size: the unpacked pixels were not held to it");
        return;
    }
    Compare("this tool's unpacking", "LibRaw's", task.in.width, Unpack(task.in, frame.data()),
            LibRawCodes(task.in, frame.data()));
    Say(options.quiet,
        "unpacked pixels and LibRaw agree: ", Grouped(int64_t{task.in.width} * task.in.height),
        " pixels");
}

std::function<void()> Declare(CLI::App& command) {
    const auto o = std::make_shared<Options>();
    command.add_option("RAW", o->raw, "Packed frame; - is standard input")->required();
    command.add_option("-f,--format", o->layout, Text("Layout of RAW: ", kLayoutNames))->required();
    command.add_option("-s,--size", o->size, "WIDTHxHEIGHT of RAW in pixels")->required();
    command.add_option("--cell", o->cell, "1 (gain only), 2, 3 or 4")->required();
    command.add_option("--pitch", o->pitch, "Bytes from one row of RAW to the next [tight]");
    command.add_option("--gain", o->gain, "Gain around the black level [1.0]");
    command.add_option("--out-bits", o->outBits, "10 or 12, for VX frames with cell 2 or 4");
    command.add_flag("-q,--quiet", o->quiet, "Say nothing but errors");
    command.footer("Exit code 1, and the first pixel that differs, when they do not agree.");
    return [o] { Run(*o); };
}

}  // namespace

const Verb kVerify{"verify", "Hold the library to the plain reference on this frame", Declare};

}  // namespace tarn::tool
