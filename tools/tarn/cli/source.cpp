#include "tools/tarn/cli/source.h"

#include <algorithm>
#include <vector>

#include "frames/message.h"
#include "pictures/mosaic.h"

namespace tarn::tool {
namespace {

// The depth of samples that tell only how high they go.
int DepthOf(const std::string& name, const Mosaic& mosaic) {
    if (!mosaic.camera && mosaic.white < 256) {
        throw UserError(Text(name, ": has a maximum of ", mosaic.white,
                             "; codes of 10 bits and more are converted"));
    }
    const double highest = std::max<double>(
        mosaic.white, *std::max_element(mosaic.samples.begin(), mosaic.samples.end()));
    int bits = 10;
    while (bits < 16 && highest >= 1 << bits) bits += 2;
    return bits;
}

double Mean(const double (&values)[4]) {
    return (values[0] + values[1] + values[2] + values[3]) / 4;
}

Source ReadPacked(const std::string& path, const FrameOptions& options) {
    const FrameSpec spec = ParseFrame(options);
    Source source;
    source.run = ReadFrames(path, spec);
    const PackedFrame& frame = source.run->frame;
    source.description = Describe(frame);
    source.coloursKnown = spec.coloursKnown;
    source.cell = std::max(spec.cell, 1);
    source.picture = {.width = frame.width,
                      .height = frame.height,
                      .bits = Shape(frame.layout).bits,
                      .colours = spec.colours};
    UseOurLevels(&source.picture);
    return source;
}

Mosaic ReadUnpacked(const std::string& path) {
    try {
        return ReadMosaic(path);
    } catch (const NoPicture& error) {
        throw UserError(Text(error.what(), "; a packed frame needs -f and -s"));
    }
}

Source ReadPicture(const std::string& path, const FrameOptions& options) {
    if (!options.TellOnlyColours()) {
        throw UserError(
            "packed frames need both -f and -s; a PGM or DNG takes --cfa and --cell only");
    }
    Mosaic mosaic = ReadUnpacked(path);
    Source source;
    source.description = Text(mosaic.width, "x", mosaic.height, mosaic.camera ? " raw" : " PGM");
    source.coloursKnown = mosaic.camera || !options.colours.empty();
    if (!options.cell.empty()) source.cell = ParseCell(options.cell);
    if (!options.colours.empty()) CheckColourOrder("--cfa", options.colours);
    Picture& picture = source.picture;
    picture.width = mosaic.width;
    picture.height = mosaic.height;
    picture.bits = DepthOf(InputName(path), mosaic);
    picture.colours = options.colours.empty() ? mosaic.colours : options.colours;
    UseOurLevels(&picture);
    if (mosaic.camera) {
        picture.black = Mean(mosaic.black);
        picture.white = mosaic.white;
        std::copy(mosaic.balance, mosaic.balance + 3, picture.balance.begin());
    }
    picture.codes = std::move(mosaic.samples);
    return source;
}

}  // namespace

Picture Source::At(int64_t i) const {
    Picture one = picture;
    if (run) one.codes = Unpack(run->frame, run->At(i).data());
    return one;
}

std::vector<FrameName> Source::Names(const std::string& path) const {
    std::vector<FrameName> names;
    for (int64_t i = 0; i < Count(); ++i) names.push_back({path, (run ? run->first : 0) + i});
    return names;
}

Source ReadSource(const std::string& path, const FrameOptions& options) {
    const bool packed = !options.size.empty() || !options.format.empty();
    return (packed ? ReadPacked : ReadPicture)(path, options);
}

}  // namespace tarn::tool
