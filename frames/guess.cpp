#include "frames/guess.h"

#include <algorithm>
#include <regex>
#include <vector>

#include "frames/foreign.h"
#include "frames/geometry.h"
#include "frames/message.h"

namespace tarn::frames {
namespace {

// Costs are shares of a layout's bits.
constexpr double kFlat = 0.02;  // below this there is nothing to tell by
constexpr double kNoise = 0.7;  // what leaves as much as this is like noise

// How far behind the next best has to be for a guess to be likely, and to be certain.
constexpr double kLikelyLayout = 0.03, kCertainLayout = 0.06;
constexpr double kLikely = 0.01, kCertain = 0.02;

Certainty Trust(double margin, double likely, double certain) {
    if (margin >= certain) return Certainty::Certain;
    return margin >= likely ? Certainty::Likely : Certainty::Uncertain;
}

// How much worse the best hypothesis is that differs in what is asked.
template <class F>
double Margin(const std::vector<Hypothesis>& ranked, const F& value) {
    for (const Hypothesis& other : ranked) {
        if (value(other) != value(ranked.front())) return other.cost - ranked.front().cost;
    }
    return 1;
}

// How far the likeliest foreign layout leaves ours to be trusted. Throws UserError, naming it, when
// it is the likelier itself.
Certainty TrustBesideForeign(const std::string& name, const Bytes& bytes, double best) {
    const Foreign foreign = LikeliestForeign(bytes);
    if (foreign.cost + foreign.lead > best) {
        return Trust(foreign.cost - best, foreign.lead, 2 * foreign.lead);
    }
    if (foreign.cost > kNoise) return Certainty::Uncertain;
    throw UserError(Text(name, ": looks like ", foreign.name, "; of packed layouts tarn knows ",
                         kLayoutNames, " only (-f names one if this is wrong)"));
}

// A file that is cut, or begins with a header, shifts what is found in it: it shows in bytes left
// over or in rows that are no whole number of cells of a Bayer pattern.
bool IsWhole(const Guess& guess, bool heightKnown) {
    const auto& [frame, cell, cost] = guess.ranked.front();
    return guess.leftOver == 0 && (heightKnown || frame.height % (2 * cell) == 0);
}

Certainty TrustInLayout(const std::vector<Hypothesis>& ranked, LayoutShares costs) {
    std::sort(costs.begin(), costs.end());
    const double margin = Margin(ranked, [](const Hypothesis& h) { return h.frame.layout; });
    return Trust(std::min(costs[1] - costs[0], margin), kLikelyLayout, kCertainLayout);
}

}  // namespace

const char* Name(Certainty certainty) {
    constexpr const char* kNames[] = {"uncertain", "likely", "certain"};
    return kNames[static_cast<int>(certainty)];
}

Known KnownFromName(const std::string& path, int64_t bytes) {
    static const std::regex kDump(R"(Tarn_.*_([0-9]{1,9})x([0-9]{1,9})\.raw)");
    const std::string name = path.substr(path.rfind('/') + 1);
    std::smatch match;
    Known known;
    if (!std::regex_match(name, match, kDump)) return known;
    const int64_t pitch = std::stoll(match[1]), height = std::stoll(match[2]);
    if (pitch < 1 || pitch * height != bytes) return known;
    known.pitch = pitch;
    known.height = static_cast<int>(height);
    return known;
}

Guess GuessFrame(const std::string& name, const Bytes& bytes, const Known& known) {
    const LayoutShares costs = LayoutCosts(bytes);
    const double best = *std::min_element(costs.begin(), costs.end());
    const Certainty besideForeign =
        known.layout ? Certainty::Certain : TrustBesideForeign(name, bytes, best);
    Guess guess{};
    guess.ranked = Ranked(bytes, costs, known);
    if (guess.ranked.empty()) {
        throw UserError(Text(name, " holds ", Grouped(int64_t(bytes.size())),
                             " bytes: no frame of what is given, or of a usual shape, fits them"));
    }
    if (guess.ranked.size() > 1 && (best == 1 || best < kFlat)) {
        throw UserError(Text(name,
                             ": is too small or too uniform to tell its geometry; give -f, -s, "
                             "--pitch and --cell"));
    }
    guess.layout = known.layout ? Certainty::Certain
                                : std::min(besideForeign, TrustInLayout(guess.ranked, costs));
    const PackedFrame& frame = guess.ranked.front().frame;
    guess.leftOver = std::max<int64_t>(int64_t(bytes.size()) - frame.Bytes(), 0);
    guess.maybeSeveral = !known.height && frame.height > frame.width;
    guess.pitch = Trust(Margin(guess.ranked, [](const Hypothesis& h) { return h.frame.pitch; }),
                        kLikely, kCertain);
    if (!IsWhole(guess, known.height.has_value())) {
        guess.pitch = std::min(guess.pitch, Certainty::Likely);
    }
    guess.cell =
        Trust(Margin(guess.ranked, [](const Hypothesis& h) { return h.cell; }), kLikely, kCertain);
    return guess;
}

}  // namespace tarn::frames
