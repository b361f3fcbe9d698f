#include <algorithm>
#include <nlohmann/json.hpp>

#include "frames/geometry.h"
#include "tools/tarn/verbs/inspect_report.h"

namespace tarn::tool {
namespace {

using Json = nlohmann::ordered_json;

Json FrameJson(const PackedFrame& frame, int cell) {
    return {{"layout", LayoutName(frame.layout)},
            {"width", frame.width},
            {"height", frame.height},
            {"pitch", frame.pitch},
            {"cell", cell}};
}

Json GuessJson(const Guess& guess) {
    Json runnersUp = Json::array();
    for (size_t i = 1; i < std::min(guess.ranked.size(), kRunnersUp + 1); ++i) {
        runnersUp.push_back(FrameJson(guess.ranked[i].frame, guess.ranked[i].cell));
        runnersUp.back()["behind"] = guess.ranked[i].cost - guess.ranked.front().cost;
    }
    return {{"whole", Name(guess.Whole())},
            {"layout", Name(guess.layout)},
            {"pitch", Name(guess.pitch)},
            {"cell", Name(guess.cell)},
            {"bytes_left_over", guess.leftOver},
            {"may_be_several", guess.maybeSeveral},
            {"runners_up", runnersUp}};
}

Json StatisticsJson(const Statistics& statistics) {
    Json positions = Json::array();
    for (int i = 0; i < 4; ++i) {
        const Tones& tones = statistics.position[i];
        positions.push_back({{"column", i % 2},
                             {"row", i / 2},
                             {"minimum", tones.Percentile(0)},
                             {"maximum", tones.Percentile(100)},
                             {"mean", tones.Mean()},
                             {"p1", tones.Percentile(1)},
                             {"p50", tones.Percentile(50)},
                             {"p99", tones.Percentile(99)},
                             {"histogram", tones.histogram}});
    }
    return {{"colours", positions},
            {"clipped_pixels", statistics.clippedPixels},
            {"clipped_cells", statistics.clippedCells},
            {"below_black", statistics.belowBlack},
            {"cell_imbalance",
             {{"column", statistics.imbalanceColumn},
              {"row", statistics.imbalanceRow},
              {"deviation", statistics.imbalance}}},
            {"row_padding", statistics.padding}};
}

}  // namespace

std::string ReportJson(const Report& report) {
    const Subject& subject = report.subject;
    Json json{{"file", report.file},
              {"bytes", report.bytes},
              {"frame", FrameJson(subject.frame, subject.cell)}};
    if (subject.guess) json["guess"] = GuessJson(*subject.guess);
    json.update(StatisticsJson(report.statistics));
    if (report.byGain) {
        json["gain"] = {{"gain", report.byGain->gain}, {"clipped", report.byGain->clipped}};
    }
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace tarn::tool
