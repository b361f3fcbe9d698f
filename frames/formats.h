// The names by which people know the packed layouts, and the names of what is not one of them.
#ifndef TARN_FRAMES_FORMATS_H_
#define TARN_FRAMES_FORMATS_H_

#include <string>
#include <vector>

#include "layout/packed_layouts.h"

namespace tarn::frames {

struct NamedFormat {
    std::string name;
    Layout layout;
    std::string colours;  // the Bayer order that the name tells; empty when it tells none
    bool grey;            // it names a sensor without colours
    const char* source;   // where the name is used
};

// Every name, those of one layout together. Names differ by case alone ("pgAA", "pGAA").
std::vector<NamedFormat> AllFormats();

// A layout that is easily taken for one of ours.
struct NearMiss {
    std::string name;
    const char* reason;
};
std::vector<NearMiss> AllNearMisses();

// Throws UserError for a near miss, with the reason, and for an unknown name, with what the option
// takes, `others` included.
NamedFormat FindFormat(const std::string& option, std::string name, const std::string& others = "");

// Throws UserError when the name tells another colour order than the frame has.
void CheckSameColours(const std::string& option, const NamedFormat& format,
                      const std::string& colours);

}  // namespace tarn::frames

#endif  // TARN_FRAMES_FORMATS_H_
