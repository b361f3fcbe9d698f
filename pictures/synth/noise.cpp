// Only additions, multiplications, divisions and square roots, which IEEE 754 defines to the last
// bit: the distributions and elementary functions of standard libraries differ between them.
#include "pictures/synth/noise.h"

#include <algorithm>
#include <cmath>

namespace tarn::pictures {
namespace {

// By the series of the inverse hyperbolic tangent.
double Logarithm(double x) {
    constexpr double kLn2 = 0.693147180559945309;
    int exponent = 0;
    const double mantissa = std::frexp(x, &exponent);  // exact; from 0.5 to 1
    const double z = (mantissa - 1) / (mantissa + 1);
    double sum = 0;
    for (int n = 27; n > 0; n -= 2) sum = sum * z * z + 2.0 / n;
    return exponent * kLn2 + sum * z;
}

// e^-x for x from 0 to 32: Taylor's series of a 1024th, squared ten times.
double ExponentialOfMinus(double x) {
    const double part = -x / 1024;
    double sum = 1;
    for (int n = 10; n > 0; --n) sum = 1 + sum * part / n;
    for (int i = 0; i < 10; ++i) sum *= sum;
    return sum;
}

}  // namespace

// SplitMix64 (Steele, Lea, Flood 2014), whose numbers can be had in any order.
double Uniform(uint64_t seed, uint64_t index) {
    uint64_t z = seed + (index + 1) * 0x9e3779b97f4a7c15;
    z = (z ^ z >> 30) * 0xbf58476d1ce4e5b9;
    z = (z ^ z >> 27) * 0x94d049bb133111eb;
    z ^= z >> 31;
    return (double(z >> 12) + 0.5) / double(uint64_t{1} << 52);
}

// Algorithm AS 241, PPND7 (Wichura 1988): right to about seven digits.
double NormalQuantile(double probability) {
    const double q = probability - 0.5;
    if (std::abs(q) <= 0.425) {
        const double r = 0.180625 - q * q;
        return q * (((59.109374720 * r + 159.29113202) * r + 50.434271938) * r + 3.3871327179) /
               (((67.187563600 * r + 78.757757664) * r + 17.895169469) * r + 1);
    }
    double r = std::sqrt(-Logarithm(q < 0 ? probability : 1 - probability));
    double value = 0;
    if (r <= 5) {
        r -= 1.6;
        value = (((0.17023821103 * r + 1.3067284816) * r + 2.7568153900) * r + 1.4234372777) /
                ((0.12021132975 * r + 0.73700164250) * r + 1);
    } else {
        r -= 5;
        value = (((0.017337203997 * r + 0.42868294337) * r + 3.0812263860) * r + 6.6579051150) /
                ((0.012258202635 * r + 0.24197894225) * r + 1);
    }
    return q < 0 ? -value : value;
}

// Small means by adding up probabilities; above that the normal distribution, corrected for the
// skewness (Cornish and Fisher's second term), is right to a fraction of an electron.
double PoissonQuantile(double mean, double probability) {
    constexpr double kSmall = 32;
    if (mean <= 0) return 0;
    if (mean > kSmall) {
        const double z = NormalQuantile(probability);
        return std::max(std::floor(mean + std::sqrt(mean) * z + (z * z - 1) / 6 + 0.5), 0.0);
    }
    constexpr int kNeverReached = 200;
    double term = ExponentialOfMinus(mean);
    double sum = term;
    int count = 0;
    while (sum < probability && count < kNeverReached) sum += term *= mean / ++count;
    return count;
}

double Noise::operator()(double signal, uint64_t pixel) const {
    // Below black there is no light, only the noise that a source may bring along.
    const double light = std::max(signal, 0.0);
    const double electrons = PoissonQuantile(light * electronsPerCode, Uniform(seed, 2 * pixel));
    const double read = readNoise * NormalQuantile(Uniform(seed, 2 * pixel + 1));
    return electrons / electronsPerCode + (signal - light) + read;
}

}  // namespace tarn::pictures
