// From light to codes.
#ifndef TARN_PICTURES_SYNTH_SENSOR_H_
#define TARN_PICTURES_SYNTH_SENSOR_H_

#include <optional>
#include <vector>

#include "pictures/synth/noise.h"
#include "pictures/synth/scene.h"

namespace tarn::pictures {

struct Sensor {
    int bits;
    double exposure;  // a factor on the light
    std::optional<Noise> noise;

    // The library's: black at one sixteenth of the range, white at its end.
    int Black() const { return 1 << (bits - 4); }
    int White() const { return (1 << bits) - 1; }
};

// The codes of a frame of that size, row by row.
std::vector<uint16_t> Expose(const Sensor& sensor, const Scene& scene, Size frame);

}  // namespace tarn::pictures

#endif  // TARN_PICTURES_SYNTH_SENSOR_H_
