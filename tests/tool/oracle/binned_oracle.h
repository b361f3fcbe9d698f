// What binning must give, from PGM files alone: the plain sums of the mosaic that a multi-cell
// frame was made of. Shares nothing with the library or the tool.
#ifndef TARN_TESTS_TOOL_ORACLE_BINNED_ORACLE_H_
#define TARN_TESTS_TOOL_ORACLE_BINNED_ORACLE_H_

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

struct Picture {
    int width = 0;
    int height = 0;
    int maximum = 0;
    std::vector<int> codes;

    int At(int x, int y) const { return codes[size_t(y) * size_t(width) + size_t(x)]; }
};

inline Picture ReadPgm(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string magic;
    Picture picture;
    file >> magic >> picture.width >> picture.height >> picture.maximum;
    file.get();
    for (int i = 0; i < picture.width * picture.height; ++i) {
        const int high = file.get();
        picture.codes.push_back(high << 8 | file.get());
    }
    if (magic != "P5" || !file) picture = {};
    return picture;
}

struct BinnedCase {
    int cell = 2;
    float gain = 1;           // applies above 1 only, and always to cells of one pixel
    bool floorsRows = false;  // each input row of a cell is divided by four first (4x4, QC)
};

// A sum of the given range under a gain around its black level.
inline int64_t Compensated(int64_t sum, int range, float gain) {
    const float pedestal = static_cast<float>(range / 16);
    const float raised = std::fma(gain, static_cast<float>(sum) - pedestal, pedestal);
    return static_cast<int64_t>(
        std::clamp(std::trunc(raised), pedestal, static_cast<float>(range - 1)));
}

// The mosaic is the plain frame (cell 1) of the same source; both frames may repeat it.
class BinnedOracle {
 public:
    BinnedOracle(const Picture& mosaic, const Picture& frame, const BinnedCase& what)
        : mosaic_(mosaic), frame_(frame), what_(what), block_(2 * what.cell) {}

    // Inside each block the frame has just the mosaic's samples of each colour position. Empty when
    // that holds, else what does not.
    std::string CheckFrame() const {
        return EachCell([&](int x, int y) {
            const std::vector<int> given = Cell(x, y), wanted = Samples(x, y);
            return std::is_permutation(given.begin(), given.end(), wanted.begin(), wanted.end());
        });
    }

    // Every pixel of the result is the sum over its samples of the mosaic, compensated and divided.
    std::string CheckBinned(const Picture& binned) const {
        if (binned.width != frame_.width / what_.cell ||
            binned.height != frame_.height / what_.cell)
            return "the binned frame has another size";
        const int scale = what_.cell * what_.cell / (what_.floorsRows ? 4 : 1);
        const int range = scale * (frame_.maximum + 1);
        const int divisor = range / (binned.maximum + 1);
        return EachCell([&](int x, int y) {
            int64_t sum = 0;
            if (what_.floorsRows) {
                const std::vector<int> cell = Cell(x, y);
                for (size_t r = 0; r < 16; r += 4) {
                    sum += (cell[r] + cell[r + 1] + cell[r + 2] + cell[r + 3]) / 4;
                }
            } else {
                for (const int sample : Samples(x, y)) sum += sample;
            }
            if (what_.gain > 1 || what_.cell == 1) sum = Compensated(sum, range, what_.gain);
            return binned.At(x, y) == sum / divisor;
        });
    }

 private:
    std::string EachCell(const std::function<bool(int, int)>& right) const {
        if (frame_.codes.empty() || mosaic_.codes.empty()) return "a picture could not be read";
        for (int y = 0; y < frame_.height / what_.cell; ++y) {
            for (int x = 0; x < frame_.width / what_.cell; ++x) {
                if (right(x, y)) continue;
                return "cell " + std::to_string(x) + ", " + std::to_string(y) + " differs";
            }
        }
        return "";
    }

    // The frame's samples of a cell, row by row.
    std::vector<int> Cell(int x, int y) const {
        std::vector<int> samples;
        for (int j = 0; j < what_.cell; ++j) {
            for (int i = 0; i < what_.cell; ++i) {
                samples.push_back(frame_.At(what_.cell * x + i, what_.cell * y + j));
            }
        }
        return samples;
    }

    // The mosaic's samples of the cell's colour position in the cell's block.
    std::vector<int> Samples(int x, int y) const {
        const int left = x / 2 * block_ % (mosaic_.width / block_ * block_) + x % 2;
        const int top = y / 2 * block_ % (mosaic_.height / block_ * block_) + y % 2;
        std::vector<int> samples;
        for (int j = 0; j < block_; j += 2) {
            for (int i = 0; i < block_; i += 2) samples.push_back(mosaic_.At(left + i, top + j));
        }
        return samples;
    }

    const Picture& mosaic_;
    const Picture& frame_;
    BinnedCase what_;
    int block_;
};

#endif  // TARN_TESTS_TOOL_ORACLE_BINNED_ORACLE_H_
