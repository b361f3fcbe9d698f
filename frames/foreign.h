// Layouts that are taken for ours and are none: to be told by name.
#ifndef TARN_FRAMES_FOREIGN_H_
#define TARN_FRAMES_FOREIGN_H_

#include "frames/bytes.h"

namespace tarn::frames {

struct Foreign {
    const char* name;
    double cost;  // as LayoutCosts
    double lead;  // by how much one of it and ours must be ahead to be believed
};

// The foreign layout that costs least.
Foreign LikeliestForeign(const Bytes& bytes);

}  // namespace tarn::frames

#endif  // TARN_FRAMES_FOREIGN_H_
