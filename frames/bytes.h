// Memory that holds a file's or a frame's bytes.
#ifndef TARN_FRAMES_BYTES_H_
#define TARN_FRAMES_BYTES_H_

#include <cstdint>
#include <vector>

namespace tarn::frames {

using Bytes = std::vector<uint8_t>;

}  // namespace tarn::frames

#endif  // TARN_FRAMES_BYTES_H_
