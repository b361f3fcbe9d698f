// The instruction-set levels of this build, and the choice among them.
#ifndef TARN_ENGINES_KERNELS_LEVELS_H_
#define TARN_ENGINES_KERNELS_LEVELS_H_

#include "engines/kernels/row_kernels.h"

namespace tarn {

struct Level {
    const RowKernels* kernels;
    bool (*supported)();  // by the processor that runs this
};

// Every level compiled in, plainest first.
struct LevelList {
    const Level* first;
    int count;
    const Level* begin() const { return first; }
    const Level* end() const { return first + count; }
};
LevelList Levels();

// The best level of this processor. Reads what the C run-time found out about it: no state of ours,
// cheap enough to call once per operation.
const RowKernels& BestKernels();

}  // namespace tarn

#endif  // TARN_ENGINES_KERNELS_LEVELS_H_
