// Which file each frame goes to.
#ifndef TARN_PICTURES_OUTPUT_NAMES_H_
#define TARN_PICTURES_OUTPUT_NAMES_H_

#include <cstdint>
#include <string>
#include <vector>

namespace tarn::pictures {

// What the name of an output is made of.
struct FrameName {
    std::string input;  // the file it is from
    int64_t number;
};

// A name in which %d or %03d stands for the frame's number, %s for its input's name without folder
// and ending, and %% for a %. Any other % is one.
class NamePattern {
 public:
    explicit NamePattern(std::string pattern) : pattern_(std::move(pattern)) {}
    bool Numbers() const { return Has('d'); }
    bool NamesInput() const { return Has('s'); }
    std::string Of(const FrameName& frame) const;

 private:
    bool Has(char letter) const;
    std::string pattern_;
};

}  // namespace tarn::pictures

#endif  // TARN_PICTURES_OUTPUT_NAMES_H_
