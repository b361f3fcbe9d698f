// Frame descriptions as users write them: layout names, sizes, pitches; and files held against
// them.
#ifndef TARN_TOOL_GEOMETRY_H_
#define TARN_TOOL_GEOMETRY_H_

#include <string>

#include "tools/tarn/safe_call.h"

namespace tarn::tool {

inline constexpr char kLayoutNames[] = "qc10, qc12, vx10, vx12";

// Each parser throws a UserError that names the option.
Layout ParseLayout(const std::string& text);
const char* LayoutName(Layout layout);

// A whole number in a range.
int64_t ParseNumber(const std::string& option, const std::string& text, int64_t least,
                    int64_t most);

struct Size {
    int width;
    int height;
};
Size ParseSize(const std::string& option, const std::string& text);

// "tight", or nothing, gives the row's bytes; else a number of bytes that holds the row.
void SetPitch(const std::string& option, const std::string& text, PackedFrame* frame);

// Throws when a frame would take more memory than any camera's does: 4 GiB.
void CheckMemory(const PackedFrame& frame);

// Throws unless a file of that many bytes is one frame; the last row's padding may be missing.
void CheckFileSize(const std::string& name, int64_t bytes, const PackedFrame& frame);

std::string Describe(const PackedFrame& frame);

// "RGGB", "GRBG", "GBRG" or "BGGR".
void CheckColourOrder(const std::string& option, const std::string& text);

}  // namespace tarn::tool

#endif  // TARN_TOOL_GEOMETRY_H_
