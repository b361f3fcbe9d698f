// Numbers, sizes, pitches and colour orders as users write them.
#ifndef TARN_TOOL_CLI_PARSE_H_
#define TARN_TOOL_CLI_PARSE_H_

#include <string>

#include "frames/geometry.h"
#include "tools/tarn/cli/names.h"

namespace tarn::tool {

// Each parser throws a UserError that names the option.
// A whole number in a range.
int64_t ParseNumber(const std::string& option, const std::string& text, int64_t least,
                    int64_t most);
// Any number in a range whose end is a whole one.
double ParseReal(const std::string& option, const std::string& text, double least, double most);

Size ParseSize(const std::string& option, const std::string& text);

// "tight", or nothing, gives the row's bytes; else a number of bytes that holds the row.
void SetPitch(const std::string& option, const std::string& text, PackedFrame* frame);

void CheckColourOrder(const std::string& option, const std::string& text);

}  // namespace tarn::tool

#endif  // TARN_TOOL_CLI_PARSE_H_
