// Frames as users know them: layout names, sizes, pitches; and files held against them.
#ifndef TARN_FRAMES_GEOMETRY_H_
#define TARN_FRAMES_GEOMETRY_H_

#include <string>

#include "frames/packed_frame.h"

namespace tarn::frames {

inline constexpr char kLayoutNames[] = "qc10, qc12, vx10, vx12";
const char* LayoutName(Layout layout);

struct Size {
    int width;
    int height;
};

// Rows are addressed by 32-bit pitches, with room for the few bytes by which Nona may pass a row.
inline constexpr int64_t kLongestPitch = 2'147'483'631;

// Throws unless a row fits the frame's pitch.
void CheckPitch(const std::string& option, const PackedFrame& frame);

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

}  // namespace tarn::frames

#endif  // TARN_FRAMES_GEOMETRY_H_
