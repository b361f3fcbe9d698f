// Frame descriptions as users write them: layout names, sizes, pitches; and files held against
// them.
#ifndef TARN_TOOL_GEOMETRY_H_
#define TARN_TOOL_GEOMETRY_H_

#include <string>

#include "tools/tarn/packed_frame.h"

namespace tarn::tool {

inline constexpr char kLayoutNames[] = "qc10, qc12, vx10, vx12";
const char* LayoutName(Layout layout);

// Each parser throws a UserError that names the option.
// A whole number in a range.
int64_t ParseNumber(const std::string& option, const std::string& text, int64_t least,
                    int64_t most);
// Any number in a range whose end is a whole one.
double ParseReal(const std::string& option, const std::string& text, double least, double most);

struct Size {
    int width;
    int height;
};
Size ParseSize(const std::string& option, const std::string& text);

// Rows are addressed by 32-bit pitches, with room for the few bytes by which Nona may pass a row.
inline constexpr int64_t kLongestPitch = 2'147'483'631;

// Throws unless a row fits the frame's pitch.
void CheckPitch(const std::string& option, const PackedFrame& frame);

// "tight", or nothing, gives the row's bytes; else a number of bytes that holds the row.
void SetPitch(const std::string& option, const std::string& text, PackedFrame* frame);

// What is held in memory at once at most: more than any camera's frame.
inline constexpr int64_t kMostBytes = int64_t{4} << 30;

// Throws when so many frames take more than that.
void CheckMemory(const PackedFrame& frame, int64_t count = 1);

// Throws unless a file of that many bytes is one frame; the last row's padding may be missing.
void CheckFileSize(const std::string& name, int64_t bytes, const PackedFrame& frame);

std::string Describe(const PackedFrame& frame);
std::string Describe(const PackedFrame& frame, int cell);

// Of the top left 2x2, row by row.
inline constexpr const char* kColourOrders[] = {"RGGB", "GRBG", "GBRG", "BGGR"};
void CheckColourOrder(const std::string& option, const std::string& text);

}  // namespace tarn::tool

#endif  // TARN_TOOL_GEOMETRY_H_
