// The noise of a synthetic frame: a stated model, and random numbers that are the same everywhere.
//
// The model is the linear camera's of the EMVA standard 1288: the photoelectrons of a pixel follow
// a Poisson distribution around their mean, the dark noise is normal, and rounding to a code adds
// the rest. In codes, with E electrons per code and a read noise of R codes, a pixel that lies s
// codes above black has a variance of s / E + R^2 (+ 1/12). Fixed patterns are not modelled.
#ifndef TARN_PICTURES_SYNTH_NOISE_H_
#define TARN_PICTURES_SYNTH_NOISE_H_

#include <cstdint>

namespace tarn::pictures {

struct Noise {
    double electronsPerCode;
    double readNoise;  // standard deviation, in codes
    uint64_t seed;

    // What becomes of a signal in codes above black. Depends on the seed, the pixel's number and
    // the signal alone.
    double operator()(double signal, uint64_t pixel) const;
};

// Number `index` of a sequence, evenly distributed between 0 and 1, neither of them included.
double Uniform(uint64_t seed, uint64_t index);
// The value below which a normal variable of deviation 1 lies with this probability.
double NormalQuantile(double probability);
// A count of the Poisson distribution, monotonic in the probability.
double PoissonQuantile(double mean, double probability);

}  // namespace tarn::pictures

#endif  // TARN_PICTURES_SYNTH_NOISE_H_
