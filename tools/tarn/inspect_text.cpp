#include "tools/tarn/inspect_report.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iomanip>
#include <nlohmann/json.hpp>

#include "tools/tarn/geometry.h"
#include "tools/tarn/guess_options.h"
#include "tools/tarn/message.h"

namespace tarn::tool {
namespace {

using Json = nlohmann::ordered_json;

constexpr size_t kRunnersUp = 3;

// ---- as text --------------------------------------------------------------------------------

std::string Percent(double share) {
    if (share > 0 && share < 0.00005) return "< 0.01 %";
    return Text(std::fixed, std::setprecision(2), share * 100, " %");
}

std::string DescribeHypothesis(const Hypothesis& hypothesis) {
    return Text(Describe(hypothesis.frame), ", cell ", hypothesis.cell);
}

std::string GuessText(const Guess& guess) {
    std::string text =
        Text(guess.Whole() == Certainty::Certain ? "it is " : "it may be ",
             DescribeHypothesis(guess.ranked.front()), ": a guess; layout ", Name(guess.layout),
             ", pitch ", Name(guess.pitch), ", cell ", Name(guess.cell), "\n");
    for (size_t i = 1; i < std::min(guess.ranked.size(), kRunnersUp + 1); ++i) {
        text +=
            Text(i == 1 ? "next best: " : "           ", DescribeHypothesis(guess.ranked[i]), "\n");
    }
    return text;
}

// As a shell takes it for one word.
std::string Quoted(const std::string& name) {
    constexpr char kPlain[] =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._/+,@%-";
    if (name.find_first_not_of(kPlain) == name.npos) return name;
    std::string quoted = "'";
    for (const char c : name) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

// The command that makes a picture of what was found.
std::string NextStep(const Report& report) {
    const Subject& subject = report.subject;
    const PackedFrame& frame = subject.frame;
    const bool piped = report.file == InputName("-");
    const std::string file = piped ? "FILE" : report.file;
    const std::string picture = std::filesystem::path(file).stem().string() + ".png";
    return Text("to see it:  tarn ", subject.cell > 1 ? "bin " : "convert ", Quoted(file), " -o ",
                Quoted(picture), " -f ", LayoutName(frame.layout), " -s ", frame.width, "x",
                frame.height, " --pitch ", frame.pitch, report.options,
                subject.cell > 1 ? Text(" --cell ", subject.cell) : "", "\n");
}

// 64 ranges of codes as bars of eight heights, the square root of their pixels: rare codes show.
std::string Sparkline(const Tones& tones) {
    constexpr const char* kBars[] = {" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
    constexpr size_t kBins = 64;
    double bins[kBins] = {};
    for (size_t code = 0; code < tones.histogram.size(); ++code) {
        bins[code * kBins / tones.histogram.size()] += double(tones.histogram[code]);
    }
    const double most = *std::max_element(bins, bins + kBins);
    std::string line;
    for (const double bin : bins) {
        line += kBars[most > 0 ? size_t(std::ceil(8 * std::sqrt(bin / most))) : 0];
    }
    return line;
}

std::string StatisticsText(const Subject& subject, const Statistics& statistics) {
    const int bits = Shape(subject.frame.layout).bits;
    std::ostringstream text;
    text << "colours      min     1%    50%    99%    max       mean\n" << std::fixed;
    for (int i = 0; i < 4; ++i) {
        const Tones& tones = statistics.position[i];
        text << "(" << i % 2 << ", " << i / 2 << ")  ";
        for (const double percent : {0.0, 1.0, 50.0, 99.0, 100.0}) {
            text << std::setw(7) << tones.Percentile(percent);
        }
        text << std::setw(11) << std::setprecision(2) << tones.Mean() << "\n";
    }
    for (int i = 0; i < 4; ++i) {
        text << (i == 0 ? "histogram  " : "           ") << "|" << Sparkline(statistics.position[i])
             << "|\n";
    }
    text << "           0" << std::setw(65) << (1 << bits) - 1 << "\n"
         << "clipped      " << Percent(statistics.clippedPixels) << " of pixels";
    if (subject.cell > 1) text << "; " << Percent(statistics.clippedCells) << " of cells hold one";
    text << "\nbelow black  " << Percent(statistics.belowBlack) << " of pixels (black is "
         << (1 << (bits - 4)) << ")\n";
    if (subject.cell > 1) {
        text << "in cells     place (" << statistics.imbalanceColumn << ", "
             << statistics.imbalanceRow << ") is "
             << (statistics.imbalance < 0 ? "darker" : "brighter") << " than the mean by "
             << Percent(std::abs(statistics.imbalance)) << ", the others by less\n";
    }
    text << "row padding  " << statistics.padding << "\n";
    return text.str();
}

// ---- for machines ---------------------------------------------------------------------------

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

std::string DescribeSubject(const Subject& subject) {
    return Text(Describe(subject.frame), ", cell ", subject.cell);
}

std::string ReportText(const Report& report) {
    const Subject& subject = report.subject;
    std::string text = Text(report.file, ": ", Grouped(report.bytes), " bytes\n");
    text += subject.guess ? GuessText(*subject.guess) : DescribeSubject(subject) + "\n";
    if (subject.guess && MayBeSeveral(subject.frame)) {
        text += "taller than wide: it may be several frames of that width; -s tells\n";
    }
    text += NextStep(report);
    text += StatisticsText(subject, report.statistics);
    if (report.byGain) {
        text += Text("gain ", report.byGain->gain, " brings ", Percent(report.byGain->clipped),
                     " of the result's pixels to the highest code\n");
    }
    return text;
}

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
