#include "tools/tarn/verbs/inspect_report.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iomanip>

#include "frames/geometry.h"
#include "frames/message.h"
#include "pictures/input.h"

namespace tarn::tool {
namespace {

std::string Percent(double share) {
    if (share > 0 && share < 0.00005) return "< 0.01 %";
    return Text(std::fixed, std::setprecision(2), share * 100, " %");
}

std::string DescribeHypothesis(const Hypothesis& hypothesis) {
    return Describe(hypothesis.frame, hypothesis.cell);
}

std::string GuessText(const Guess& guess) {
    std::string text =
        Text(guess.Whole() == Certainty::Certain ? "it is " : "it may be ",
             DescribeHypothesis(guess.ranked.front()), ": a guess; layout ", Name(guess.layout),
             ", pitch ", Name(guess.pitch), ", cell ", Name(guess.cell), "\n");
    if (guess.leftOver > 0) {
        text +=
            Text(Grouped(guess.leftOver),
                 " bytes after it are left over: the file may be cut, or begin with a header\n");
    }
    if (guess.maybeSeveral) {
        text += "taller than wide: it may be several frames of that width; -s tells\n";
    }
    for (size_t i = 1; i < std::min(guess.ranked.size(), kRunnersUp + 1); ++i) {
        text +=
            Text(i == 1 ? "next best: " : "           ", DescribeHypothesis(guess.ranked[i]), "\n");
    }
    return text;
}

// The name of a picture of this file, as -o takes it.
std::string PictureOf(const std::string& file) {
    const std::string stem = std::filesystem::path(file).stem().string();
    std::string name;
    for (const char c : stem) name += c == '%' ? "%%" : std::string(1, c);
    return name + (file == stem + ".png" ? "_seen.png" : ".png");
}

// The command that makes a picture of what was found.
std::string NextStep(const Report& report) {
    const auto& [frame, cell, guess] = report.subject;
    const std::string file = report.file == InputName("-") ? "FILE" : report.file;
    const bool bins = cell > 1 && (cell == 2 || Shape(frame.layout).bits == 10);
    std::string text =
        Text("to see it:  tarn ", bins ? "bin " : "convert ", AsArgument(file), " -o ",
             AsArgument(PictureOf(file)), " -f ", LayoutName(frame.layout), " -s ", frame.width,
             "x", frame.height, " --pitch ", frame.pitch, report.options);
    if (guess && guess->leftOver > 0) text += " --frame 0";
    if (cell > 1) text += bins ? Text(" --cell ", cell) : " --grey";
    return text + "\n";
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

}  // namespace

std::string ReportText(const Report& report) {
    const Subject& subject = report.subject;
    std::string text = Text(report.file, ": ", Grouped(report.bytes), " bytes\n");
    text +=
        subject.guess ? GuessText(*subject.guess) : Describe(subject.frame, subject.cell) + "\n";
    text += NextStep(report);
    text += StatisticsText(subject, report.statistics);
    if (report.byGain) {
        text += Text("gain ", report.byGain->gain, " brings ", Percent(report.byGain->clipped),
                     " of the result's pixels to the highest code\n");
    }
    return text;
}

}  // namespace tarn::tool
