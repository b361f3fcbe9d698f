#include "pictures/synth/scene.h"

#include <algorithm>

#include "frames/message.h"
#include "frames/picture.h"

namespace tarn::pictures {
namespace {

double HighestBlack(const Mosaic& mosaic) {
    return *std::max_element(mosaic.black, mosaic.black + 4);
}

// One level, or all four where they differ.
std::string BlackText(const Mosaic& mosaic) {
    const double* black = mosaic.black;
    if (std::count(black, black + 4, black[0]) == 4) return Text(black[0]);
    return Text(black[0], "/", black[1], "/", black[2], "/", black[3]);
}

// Along one axis: the source coordinate of a frame coordinate, two apart inside a cell.
int PermutedFrom(int at, int cell, int period) {
    const int block = 2 * cell;
    const int inBlock = at % block;
    return (at - inBlock + inBlock % cell * 2 + inBlock / cell) % period;
}

}  // namespace

ColourFilter::ColourFilter(const std::string& colours, int pixelsPerSide) : cell(pixelsPerSide) {
    const std::string letters = kColourLetters;
    for (size_t i = 0; i < 4; ++i) colour[i] = static_cast<int>(letters.find(colours[i]));
}

Scene PermutedMosaic(const std::string& name, Mosaic mosaic, int cell) {
    const int block = 2 * cell;
    const Size whole{mosaic.width / block * block, mosaic.height / block * block};
    if (whole.width == 0 || whole.height == 0) {
        throw UserError(Text(name, ": ", mosaic.width, "x", mosaic.height,
                             " is less than one block of ", block, "x", block));
    }
    if (mosaic.white <= HighestBlack(mosaic)) {
        throw UserError(Text("--white ", mosaic.white, " must be above the black level, which is ",
                             HighestBlack(mosaic)));
    }
    Scene scene;
    scene.size = whole;
    scene.colours = mosaic.colours;
    scene.origin =
        Text("from ", mosaic.width, "x", mosaic.height, ", black ", BlackText(mosaic), ", white ",
             mosaic.white, "; samples moved by at most ", cell - 1, " pixels");
    const double range = mosaic.white - HighestBlack(mosaic);
    scene.row = [mosaic = std::move(mosaic), whole, cell, range](int y, Size frame,
                                                                 std::vector<double>* light) {
        const int fromY = PermutedFrom(y, cell, whole.height);
        const uint16_t* row = mosaic.samples.data() + size_t(mosaic.width) * size_t(fromY);
        for (int x = 0; x < frame.width; ++x) {
            const int fromX = PermutedFrom(x, cell, whole.width);
            const double black = mosaic.black[fromY % 2 * 2 + fromX % 2];
            (*light)[size_t(x)] = (row[fromX] - black) / range;
        }
    };
    return scene;
}

Scene FilteredImage(const std::string& name, ColourImage image, int cell,
                    const std::string& colours) {
    const int block = 2 * cell;
    Scene scene;
    scene.size = {image.width / block * block, image.height / block * block};
    if (scene.size.width == 0 || scene.size.height == 0) {
        throw UserError(Text(name, ": ", image.width, "x", image.height,
                             " is less than one block of ", block, "x", block));
    }
    scene.colours = colours;
    scene.origin = Text("from a picture of ", image.width, "x", image.height);
    const Size whole = scene.size;
    scene.row = [image = std::move(image), whole, filter = ColourFilter(colours, cell)](
                    int y, Size frame, std::vector<double>* light) {
        const size_t fromY = size_t(y % whole.height) * size_t(image.width);
        for (int x = 0; x < frame.width; ++x) {
            const size_t from = fromY + size_t(x % whole.width);
            (*light)[size_t(x)] = image.light[3 * from + size_t(filter.At(x, y))] / 65535.0;
        }
    };
    return scene;
}

}  // namespace tarn::pictures
