// The test charts. Their light is in numbers that anyone can write down: shares of white, linear.
#include <algorithm>
#include <array>

#include "frames/message.h"
#include "pictures/synth/scene.h"

namespace tarn::pictures {
namespace {

using Light = std::array<double, 3>;  // red, green, blue

constexpr double kBackground = 0.18;
constexpr Light kGrey{1, 1, 1};

Light Times(double factor, const Light& light) {
    return {factor * light[0], factor * light[1], factor * light[2]};
}

// A place in a chart that fills a rectangle of pixels.
struct Place {
    double x, y;           // in pixels, of the pixel's middle
    double width, height;  // of the chart

    double Across() const { return x / width; }
    double Down() const { return y / height; }
    Place In(double left, double top, double right, double bottom) const {
        return {x - left * width, y - top * height, (right - left) * width,
                (bottom - top) * height};
    }
};

// Six hues, vivid, middling and pale, and six greys, each half as bright as the one before.
Light Patches(const Place& at) {
    constexpr int kColumns = 6, kRows = 4;
    constexpr double kGap = 0.06;
    constexpr bool kHues[kColumns][3] = {{1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                                         {0, 1, 1}, {0, 0, 1}, {1, 0, 1}};
    constexpr double kLow[] = {0.05, 0.15, 0.3}, kHigh[] = {0.8, 0.5, 0.45};
    const double across = at.Across() * kColumns, down = at.Down() * kRows;
    const int column = std::min(int(across), kColumns - 1), row = std::min(int(down), kRows - 1);
    const auto inGap = [](double part) { return part < kGap || part > 1 - kGap; };
    if (inGap(across - column) || inGap(down - row)) return Times(kBackground, kGrey);
    if (row == kRows - 1) return Times(0.9 / (1 << column), kGrey);
    Light light{};
    for (size_t c = 0; c < 3; ++c) light[c] = (kHues[column][c] ? kHigh : kLow)[row];
    return light;
}

// From dark to light along a line that leans by five degrees, as ISO 12233 measures resolution. A
// pixel on the line gets the share of it that is light.
Light SlantedEdge(const Place& at) {
    constexpr double kSine = 0.0871557427, kCosine = 0.9961946981;
    constexpr double kDark = 0.04, kBright = 0.6;
    const double past = (at.x - at.width / 2) * kCosine + (at.y - at.height / 2) * kSine;
    return Times(kDark + (kBright - kDark) * std::clamp(past + 0.5, 0.0, 1.0), kGrey);
}

// Eight strips: grey, red, green and blue from nothing to twice what clips, then from a sixteenth
// of white down to black.
Light Ramps(const Place& at) {
    constexpr int kStrips = 8;
    constexpr double kPastClipping = 2, kFaint = 1.0 / 16;
    constexpr Light kColours[] = {kGrey, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    const int strip = std::min(int(at.Down() * kStrips), kStrips - 1);
    const double brightness = strip < 4 ? kPastClipping * at.Across() : kFaint * (1 - at.Across());
    return Times(brightness, kColours[strip % 4]);
}

Light All(const Place& at) {
    if (at.Down() >= 2.0 / 3) return Ramps(at.In(0, 2.0 / 3, 1, 1));
    if (at.Across() >= 0.75) return SlantedEdge(at.In(0.75, 0, 1, 2.0 / 3));
    return Patches(at.In(0, 0, 0.75, 2.0 / 3));
}

struct Chart {
    const char* name;
    Light (*light)(const Place&);
};
constexpr Chart kCharts[] = {
    {"all", All}, {"patches", Patches}, {"edge", SlantedEdge}, {"ramps", Ramps}};

}  // namespace

Scene TestChart(const std::string& option, const std::string& chart, int cell,
                const std::string& colours) {
    const Chart* found = std::find_if(std::begin(kCharts), std::end(kCharts),
                                      [&](const Chart& c) { return chart == c.name; });
    if (found == std::end(kCharts)) {
        throw UserError(Text(option, ": \"", chart, "\" is none of all, patches, edge, ramps"));
    }
    constexpr int kWidth = 4000, kHeight = 3000;
    const int block = 2 * cell;
    Scene scene;
    scene.size = {kWidth / block * block, kHeight / block * block};
    scene.colours = colours;
    scene.origin = Text("of the test chart, ", chart);
    scene.row = [light = found->light, filter = ColourFilter(colours, cell)](
                    int y, Size frame, std::vector<double>* row) {
        for (int x = 0; x < frame.width; ++x) {
            const Place place{x + 0.5, y + 0.5, double(frame.width), double(frame.height)};
            (*row)[size_t(x)] = light(place)[size_t(filter.At(x, y))];
        }
    };
    return scene;
}

}  // namespace tarn::pictures
