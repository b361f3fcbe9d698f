// What inspect found, as text and for machines.
#ifndef TARN_TOOL_VERBS_INSPECT_REPORT_H_
#define TARN_TOOL_VERBS_INSPECT_REPORT_H_

#include <optional>
#include <string>

#include "frames/guess.h"
#include "frames/statistics.h"
#include "tools/tarn/cli/names.h"

namespace tarn::tool {

// A frame and, when it was not told, how it came to be known.
struct Subject {
    PackedFrame frame;
    int cell;
    std::optional<Guess> guess;
};

struct GainEffect {
    float gain;
    double clipped;  // share of the result's pixels
};

struct Report {
    std::string file;
    std::string options;  // that were given and are no geometry: where it begins, its colours
    int64_t bytes;
    const Subject& subject;
    const Statistics& statistics;
    std::optional<GainEffect> byGain;
};

inline constexpr size_t kRunnersUp = 3;  // that are told after the best guess

std::string ReportText(const Report& report);
std::string ReportJson(const Report& report);

}  // namespace tarn::tool

#endif  // TARN_TOOL_VERBS_INSPECT_REPORT_H_
