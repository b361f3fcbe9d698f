// What a dump without a description probably is: layout, pitch, size and cell from its bytes.
//
// A right description makes neighbours of the same colour alike. Each hypothesis is scored by what
// it would cost to write every pixel as its difference from such a neighbour, in bits; the right
// one costs least, and the distance to the next says how far to trust it.
#ifndef TARN_FRAMES_GUESS_H_
#define TARN_FRAMES_GUESS_H_

#include <algorithm>
#include <string>
#include <vector>

#include "frames/hypotheses.h"

namespace tarn::frames {

enum class Certainty { Uncertain, Likely, Certain };

struct Guess {
    std::vector<Hypothesis> ranked;  // the best first; never empty
    // Of the best one's three parts: the weakest of them is the whole's.
    Certainty layout;
    Certainty pitch;
    Certainty cell;
    int64_t leftOver;   // bytes after the best one
    bool maybeSeveral;  // sensors are wider than tall: it may be frames one after another

    Certainty Whole() const { return std::min({layout, pitch, cell}); }
};

const char* Name(Certainty certainty);

// Pitch and height of a name of the form Tarn_<tag>_<time>_<pitch>x<height>.raw, when they give
// the file's size.
Known KnownFromName(const std::string& path, int64_t bytes);

// Throws UserError when the bytes tell nothing: too few, or all alike.
Guess GuessFrame(const std::string& name, const Bytes& bytes, const Known& known);

}  // namespace tarn::frames

#endif  // TARN_FRAMES_GUESS_H_
