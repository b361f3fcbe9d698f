// What stands in frames/ goes by its own name in pictures/.
#ifndef TARN_PICTURES_NAMES_H_
#define TARN_PICTURES_NAMES_H_

namespace tarn::frames {}

namespace tarn::pictures {
using namespace frames;
}  // namespace tarn::pictures

#endif  // TARN_PICTURES_NAMES_H_
