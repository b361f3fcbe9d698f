#include "pictures/chart.h"

#include <cairo-svg.h>
#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "frames/message.h"

namespace tarn::pictures {
namespace {

constexpr double kWidth = 960, kHeight = 480;
constexpr double kLeft = 80, kRight = kWidth - 30, kTop = 60, kBottom = kHeight - 60;
constexpr size_t kBins = 256;

struct Colour {
    double red, green, blue;
};
// Told apart by colour-blind eyes too; none claims to be the colour of its position.
constexpr Colour kCurves[4] = {{.90, .62, .00}, {.00, .62, .45}, {.34, .71, .91}, {.80, .47, .65}};
constexpr Colour kInk{.2, .2, .2};
constexpr Colour kGrid{.85, .85, .85};

struct Destroy {
    void operator()(cairo_t* cairo) const { cairo_destroy(cairo); }
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
using Surface = std::unique_ptr<cairo_surface_t, Destroy>;
using Cairo = std::unique_ptr<cairo_t, Destroy>;

cairo_status_t Append(void* to, const unsigned char* data, unsigned length) {
    static_cast<Bytes*>(to)->insert(static_cast<Bytes*>(to)->end(), data, data + length);
    return CAIRO_STATUS_SUCCESS;
}

void SetColour(cairo_t* cairo, const Colour& colour) {
    cairo_set_source_rgb(cairo, colour.red, colour.green, colour.blue);
}

void Line(cairo_t* cairo, double x0, double y0, double x1, double y1) {
    cairo_move_to(cairo, x0, y0);
    cairo_line_to(cairo, x1, y1);
    cairo_stroke(cairo);
}

// Text whose anchor is so far along its width: 0 its start, 1 its end.
void Label(cairo_t* cairo, double x, double y, double anchor, const std::string& text) {
    cairo_text_extents_t extents;
    cairo_text_extents(cairo, text.c_str(), &extents);
    cairo_move_to(cairo, x - anchor * extents.x_advance, y);
    cairo_show_text(cairo, text.c_str());
}

// Pixels by ranges of codes.
std::vector<double> Bins(const Tones& tones) {
    std::vector<double> bins(kBins);
    const size_t codes = tones.histogram.size();
    for (size_t code = 0; code < codes; ++code) {
        bins[code * kBins / codes] += double(tones.histogram[code]);
    }
    return bins;
}

struct Scale {
    double codes;
    double decades;  // of pixels

    double X(double code) const { return kLeft + (kRight - kLeft) * code / codes; }
    double Y(double pixels) const {
        return kBottom - (kBottom - kTop) * std::log10(std::max(pixels, 1.0)) / decades;
    }
};

void DrawFrame(cairo_t* cairo, const Scale& scale, const std::string& title) {
    constexpr int kTicks = 8;
    cairo_set_line_width(cairo, 1);
    for (int tick = 0; tick <= kTicks; ++tick) {
        const double code = scale.codes * tick / kTicks;
        SetColour(cairo, kGrid);
        Line(cairo, scale.X(code), kTop, scale.X(code), kBottom);
        SetColour(cairo, kInk);
        Label(cairo, scale.X(code), kBottom + 20, .5, Text(code));
    }
    for (int decade = 0; decade <= scale.decades; ++decade) {
        const double pixels = std::pow(10, decade);
        SetColour(cairo, kGrid);
        Line(cairo, kLeft, scale.Y(pixels), kRight, scale.Y(pixels));
        SetColour(cairo, kInk);
        Label(cairo, kLeft - 8, scale.Y(pixels) + 4, 1, Grouped(int64_t(pixels)));
    }
    Label(cairo, (kLeft + kRight) / 2, kBottom + 44, .5, "code");
    Label(cairo, kLeft, kTop - 34, 0, title);

    const double black = scale.X(scale.codes / 16);
    constexpr double kDashes[] = {4, 4};
    cairo_set_dash(cairo, kDashes, 2, 0);
    Line(cairo, black, kTop, black, kBottom);
    cairo_set_dash(cairo, nullptr, 0, 0);
    Label(cairo, black + 4, kTop + 14, 0, "black");
}

void DrawCurve(cairo_t* cairo, const Scale& scale, const std::vector<double>& bins, int position) {
    SetColour(cairo, kCurves[position]);
    cairo_set_line_width(cairo, 1.5);
    cairo_new_path(cairo);  // a label leaves a point behind
    for (size_t bin = 0; bin < kBins; ++bin) {
        const double step = scale.codes / kBins;
        cairo_line_to(cairo, scale.X(double(bin) * step), scale.Y(bins[bin]));
        cairo_line_to(cairo, scale.X(double(bin + 1) * step), scale.Y(bins[bin]));
    }
    cairo_stroke(cairo);

    const double x = kRight - 250 + 65 * position, y = kTop - 12;
    cairo_set_line_width(cairo, 3);
    Line(cairo, x, y, x + 18, y);
    SetColour(cairo, kInk);
    Label(cairo, x + 23, y + 4, 0, Text("(", position % 2, ", ", position / 2, ")"));
}

void Draw(cairo_t* cairo, const std::string& title, const Statistics& statistics) {
    cairo_set_source_rgb(cairo, 1, 1, 1);
    cairo_paint(cairo);
    cairo_select_font_face(cairo, "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cairo, 13);
    std::vector<double> bins[4];
    double most = 10;
    for (int i = 0; i < 4; ++i) {
        bins[i] = Bins(statistics.position[i]);
        most = std::max(most, *std::max_element(bins[i].begin(), bins[i].end()));
    }
    const Scale scale{double(statistics.position[0].histogram.size()), std::ceil(std::log10(most))};
    DrawFrame(cairo, scale, title);
    for (int i = 0; i < 4; ++i) DrawCurve(cairo, scale, bins[i], i);
}

}  // namespace

Bytes DrawHistogram(ChartKind kind, const std::string& title, const Statistics& statistics) {
    Bytes bytes;
    const Surface surface(
        kind == ChartKind::Svg
            ? cairo_svg_surface_create_for_stream(Append, &bytes, kWidth, kHeight)
            : cairo_image_surface_create(CAIRO_FORMAT_RGB24, int(kWidth), int(kHeight)));
    const Cairo cairo(cairo_create(surface.get()));
    Draw(cairo.get(), title, statistics);
    cairo_status_t status = cairo_status(cairo.get());
    if (status == CAIRO_STATUS_SUCCESS && kind == ChartKind::Png) {
        status = cairo_surface_write_to_png_stream(surface.get(), Append, &bytes);
    }
    cairo_surface_finish(surface.get());
    if (status == CAIRO_STATUS_SUCCESS) status = cairo_surface_status(surface.get());
    if (status != CAIRO_STATUS_SUCCESS) {
        throw RunError(Text("drawing the chart failed: ", cairo_status_to_string(status)));
    }
    return bytes;
}

}  // namespace tarn::pictures
