// What a frame is to show, as light: the three kinds of it that synth knows.
#ifndef TARN_PICTURES_SYNTH_SCENE_H_
#define TARN_PICTURES_SYNTH_SCENE_H_

#include <functional>
#include <string>

#include "frames/geometry.h"
#include "pictures/mosaic.h"
#include "pictures/synth/colour_image.h"

namespace tarn::pictures {

struct Scene {
    Size size{};  // what of it there is; a larger frame repeats it, but for a chart
    std::string colours;
    std::string origin;  // for the report
    // Fills in the light of each pixel of a row, behind its colour filter: 0 at the black level, 1
    // where the codes end. Noise of the source and what is brighter than white lie outside.
    std::function<void(int y, Size frame, std::vector<double>* light)> row;
};

// An ordinary Bayer mosaic as a frame of n x n cells, without inventing a sample. A block of 2n x
// 2n of its pixels holds n x n samples of each colour position, as one block of four cells does:
// samples are permuted inside each block. Noise stays real, and the sum over a cell is the sum over
// the block's samples of that colour. Throws UserError when there is not even one block.
Scene PermutedMosaic(const std::string& name, Mosaic mosaic, int cell);

// A picture in colour, of which each pixel of the frame keeps what its filter lets through.
Scene FilteredImage(const std::string& name, ColourImage image, int cell,
                    const std::string& colours);

// A test chart, drawn for the frame's size: "patches", "edge", "ramps", or "all" in one. Throws
// UserError for another name.
inline constexpr char kChartNames[] = "all|patches|edge|ramps";
Scene TestChart(const std::string& option, const std::string& chart, int cell,
                const std::string& colours);

// The colour of the filter over a pixel: 0 red, 1 green, 2 blue.
struct ColourFilter {
    explicit ColourFilter(const std::string& colours, int pixelsPerSide);
    int At(int x, int y) const { return colour[y / cell % 2 * 2 + x / cell % 2]; }

    int cell;
    int colour[4];
};

}  // namespace tarn::pictures

#endif  // TARN_PICTURES_SYNTH_SCENE_H_
