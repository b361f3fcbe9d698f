// tarn bin: packed frames through the library.
#include <algorithm>
#include <memory>
#include <span>

#include "frames/message.h"
#include "pictures/output.h"
#include "tools/tarn/cli/guess_options.h"
#include "tools/tarn/cli/verb.h"
#include "tools/tarn/verbs/bin_job.h"
#include "tools/tarn/verbs/bin_report.h"

namespace tarn::tool {
namespace {

// What every frame's picture has in common: all but its codes.
Picture MakeFrameless(const BinJob& job) {
    Picture picture{.width = job.target.packed.width,
                    .height = job.target.packed.height,
                    .bits = job.target.bits,
                    .colours = job.spec.colours};
    UseOurLevels(&picture);
    if (job.target.NeedsBayer()) ApplyLevels(job.options.result.levels, &picture);
    return picture;
}

void CheckInputs(const std::vector<std::string>& raws) {
    if (std::count(raws.begin(), raws.end(), "-") > 1) {
        throw UserError("-: standard input can be read once only");
    }
}

void Run(BinOptions options) {
    options.report.Check(options.result.out);
    CheckInputs(options.raws);
    FilledOptions filled = WithGuess(options.raws.front(), options.frame);
    options.frame = std::move(filled.options);
    BinJob job{.options = options,
               .spec = ParseFrame(options.frame),
               .plan = {},
               .target = {},
               .guessed = std::move(filled.note)};
    BinPlan& plan = job.plan;
    plan.task = ParseTask(InputName(options.raws.front()), options.task, job.spec);
    SetPitch("--out-pitch", options.result.pitch, &plan.task.out);
    plan.threads = options.threads.Count();
    plan.quiet = job.Quiet();
    job.target = MakeTarget(options.result, ParseFileKind(options.result.to, options.result.out),
                            Shape(plan.task.out.layout).bits);
    job.target.packed = plan.task.out;
    CheckColours(job.target, job.spec.colours);
    if (job.target.kind != FileKind::Packed) {
        plan.encode = [target = job.target,
                       frameless = MakeFrameless(job)](std::span<const uint8_t> packed) {
            Picture picture = frameless;
            picture.codes = Unpack(target.packed, packed.data());
            return Encode(target, std::move(picture));
        };
    }
    Report(job, RunFrames(&job));
    TellFailures(job);
}

std::function<void()> Declare(CLI::App& command) {
    const auto o = std::make_shared<BinOptions>();
    command.add_option("RAW", o->raws, "Files of packed frames; - is standard input")
        ->required()
        ->type_name("");
    o->result.Declare(command, "raw|pgm|png|dng", "Kind of FILE, whatever its ending");
    o->frame.Declare(command, Untold::Guessed);
    o->task.Declare(command);
    o->threads.Declare(command);
    o->report.Declare(command);
    command.footer(
        "A cell of N by N pixels becomes one; --cell 1 applies the gain only. When -f, -s or "
        "--cell\n"
        "is missing, what is not told is guessed from the first file, the pitch too, and taken\n"
        "where the guess is certain. Where all three are given, the pitch is tight unless it "
        "is.\n\n"
        "A file is written whole or not at all, also when the run is interrupted. Where each "
        "frame\n"
        "has a file of its own, one that cannot be read is named, and the others are written all\n"
        "the same; where they share one, nothing is. When writing fails, as on a full disk, the\n"
        "run ends there; files that were complete stay.\n\n"
        "Examples:\n"
        "  tarn bin dump.raw -o dump.png -f qc10 -s 4000x3000 --pitch 5120 --cell 2 --gain 1.5\n"
        "  tarn bin dump.raw -o dump.dng -f SRGGB10P -s 4000x3000 --pitch auto --cell 2\n"
        "  tarn bin dump*.raw -o '%s_binned.raw' -f RAW10 -s 4000x3000 --pitch 5120 --cell 2\n"
        "  cat dump.raw dump.raw | tarn bin - -o burst.raw -f qc10 -s 4000x3000 --pitch 5120 "
        "--cell 2 --frame all\n");
    return [o] { Run(*o); };
}

}  // namespace

const Verb kBin{"bin", "Bin packed frames, apply a gain, write them packed, as PGM, PNG or DNG",
                Declare};

}  // namespace tarn::tool
