#include "pictures/synth/sensor.h"

#include <algorithm>
#include <cmath>

namespace tarn::pictures {

std::vector<uint16_t> Expose(const Sensor& sensor, const Scene& scene, Size frame) {
    const double black = sensor.Black(), white = sensor.White();
    const double scale = sensor.exposure * (white - black);
    const size_t width = size_t(frame.width);
    std::vector<uint16_t> codes(width * size_t(frame.height));
    std::vector<double> light(width);
    for (int y = 0; y < frame.height; ++y) {
        scene.row(y, frame, &light);
        for (size_t x = 0; x < width; ++x) {
            const size_t pixel = width * size_t(y) + x;
            double signal = light[x] * scale;
            if (sensor.noise) signal = (*sensor.noise)(signal, pixel);
            const double code = std::clamp(black + signal, 0.0, white);
            codes[pixel] = static_cast<uint16_t>(std::lround(code));
        }
    }
    return codes;
}

}  // namespace tarn::pictures
