// A run of bin: what is asked for, and what came of it.
#ifndef TARN_TOOL_VERBS_BIN_JOB_H_
#define TARN_TOOL_VERBS_BIN_JOB_H_

#include <string>
#include <vector>

#include "pictures/output_names.h"
#include "tools/tarn/cli/frame_options.h"
#include "tools/tarn/cli/result.h"
#include "tools/tarn/verbs/bin_frames.h"

namespace tarn::tool {

struct BinOptions {
    std::vector<std::string> raws;
    FrameOptions frame;
    TaskOptions task;
    ResultOptions result;
    ThreadOptions threads;
    ReportOptions report;
};

struct BinJob {
    const BinOptions& options;
    FrameSpec spec;
    BinPlan plan;
    Target target;
    std::string guessed;  // a note on what was guessed; empty when nothing was
    bool piped = false;   // the frames come one after another, from one pipe
    std::vector<FrameRun> runs{};
    std::vector<std::string> failures{};  // of files that could not be begun
    BinOutcome outcome{};
    double seconds = 0;

    bool Quiet() const { return options.report.Quiet(); }
    // One file for each frame, so that what is wrong with one need not concern the others.
    bool Separate() const {
        const NamePattern pattern(options.result.out);
        return pattern.Numbers() || (pattern.NamesInput() && !piped);
    }
};

// Bins all frames and writes them. Returns the names of the files that were written. Throws
// UserError and RunError as BinFrames and BinPipe do, saying how many files were complete.
std::vector<std::string> RunFrames(BinJob* job);

}  // namespace tarn::tool

#endif  // TARN_TOOL_VERBS_BIN_JOB_H_
