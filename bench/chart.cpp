// Draws the figures of tarn_bench: each operation's speed beside the stream limit and memcpy.
// usage: tarn_chart results.json picture [level [size]]: writes picture.svg and picture.png
#include <cairo-svg.h>
#include <cairo.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr double kWidth = 760, kLeft = 150, kTop = 70, kRow = 30, kBar = 10, kBottom = 40;

struct Bar {
    std::string operation, gain;
    double speed, limit, memcpy;  // GB/s of input
};

std::vector<Bar> ReadBars(const char* path, const std::string& level, const std::string& size) {
    std::ifstream file(path);
    const nlohmann::json results = nlohmann::json::parse(file);
    std::vector<Bar> bars;
    for (const auto& entry : results.at("benchmarks")) {
        std::istringstream name(entry.at("name").get<std::string>());
        std::string part[4];
        for (std::string& p : part) std::getline(name, p, '/');
        if (part[2] != level || part[3] != size) continue;
        bars.push_back(
            {part[0], part[1], entry.at("GB/s"), entry.at("limit_GB/s"), entry.at("memcpy_GB/s")});
    }
    return bars;
}

// One row per operation, in the order of the measurements.
int RowOf(const std::vector<Bar>& bars, size_t which) {
    int row = 0;
    for (size_t i = 1; i <= which; ++i) row += bars[i].operation != bars[i - 1].operation;
    return row;
}

class Chart {
 public:
    Chart(cairo_surface_t* surface, double fullScale)
        : cr_(cairo_create(surface)), scale_((kWidth - kLeft - 20) / fullScale) {
        cairo_set_source_rgb(cr_, 1, 1, 1);
        cairo_paint(cr_);
        cairo_select_font_face(cr_, "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                               CAIRO_FONT_WEIGHT_NORMAL);
    }
    ~Chart() { cairo_destroy(cr_); }
    Chart(const Chart&) = delete;
    Chart& operator=(const Chart&) = delete;

    void Text(double x, double y, double size, const std::string& text) {
        cairo_set_source_rgb(cr_, .2, .2, .2);
        cairo_set_font_size(cr_, size);
        cairo_move_to(cr_, x, y);
        cairo_show_text(cr_, text.c_str());
    }

    void Box(double x, double y, double width, double height, int rgb) {
        cairo_set_source_rgb(cr_, (rgb >> 16) / 255., (rgb >> 8 & 255) / 255., (rgb & 255) / 255.);
        cairo_rectangle(cr_, x, y, width, height);
        cairo_fill(cr_);
    }

    void Legend(const std::string& title) {
        Text(12, 24, 15, title);
        double x = kLeft;
        for (const auto& [name, rgb] : kLegend) {
            Box(x, 42, 12, 10, rgb);
            Text(x + 17, 51, 11, name);
            x += 105;
        }
    }

    void Axis(double fullScale, double height) {
        for (int gb = 0; gb <= fullScale; gb += 5) {
            Box(kLeft + gb * scale_, kTop - 6, 1, height - kTop - kBottom + 10, 0xDDDDDD);
            Text(kLeft + gb * scale_ - 6, height - kBottom + 18, 11, std::to_string(gb));
        }
        Text(kWidth - 110, height - 6, 11, "GB/s of input");
    }

    void Draw(const Bar& bar, int row) {
        const bool gain = bar.gain == "gain";
        const double y = kTop + row * kRow, barY = y + (gain ? kBar + 1 : 0);
        if (!gain || bar.operation.find("EV") != std::string::npos)
            Text(12, y + 14, 12, bar.operation);
        Box(kLeft, barY, bar.speed * scale_, kBar, kLegend[gain].rgb);
        Box(kLeft + bar.limit * scale_ - 1, barY - 1, 3, kBar + 2, kLegend[2].rgb);
        Box(kLeft + bar.memcpy * scale_ - 1, barY - 1, 3, kBar + 2, kLegend[3].rgb);
    }

 private:
    static constexpr struct {
        const char* name;
        int rgb;
    } kLegend[] = {{"no gain", 0x3B6EA8},
                   {"gain", 0x8FB4DC},
                   {"stream limit", 0xC0392B},
                   {"memcpy of input", 0x222222}};

    cairo_t* cr_;
    double scale_;
};

void DrawAll(cairo_surface_t* surface, const std::vector<Bar>& bars, const std::string& title,
             double height) {
    double fullScale = 0;
    for (const Bar& bar : bars) fullScale = std::max({fullScale, bar.speed, bar.limit, bar.memcpy});
    Chart chart(surface, fullScale);
    chart.Legend(title);
    chart.Axis(fullScale, height);
    for (size_t i = 0; i < bars.size(); ++i) chart.Draw(bars[i], RowOf(bars, i));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: tarn_chart results.json picture [level [size]]\n");
        return 2;
    }
    const std::string picture = argv[2];
    const std::string level = argc > 3 ? argv[3] : "avx2", size = argc > 4 ? argv[4] : "50MP";
    const std::vector<Bar> bars = ReadBars(argv[1], level, size);
    if (bars.empty()) {
        std::fprintf(stderr, "%s: nothing measured at %s, %s\n", argv[1], level.c_str(),
                     size.c_str());
        return 1;
    }
    const double height = kTop + (RowOf(bars, bars.size() - 1) + 1) * kRow + kBottom;
    const std::string title = "One thread, " + level + ", frames of " + size;

    cairo_surface_t* svg = cairo_svg_surface_create((picture + ".svg").c_str(), kWidth, height);
    DrawAll(svg, bars, title, height);
    cairo_surface_destroy(svg);

    cairo_surface_t* png = cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(kWidth),
                                                      static_cast<int>(height));
    DrawAll(png, bars, title, height);
    const cairo_status_t status = cairo_surface_write_to_png(png, (picture + ".png").c_str());
    cairo_surface_destroy(png);
    if (status != CAIRO_STATUS_SUCCESS) {
        std::fprintf(stderr, "%s: %s\n", picture.c_str(), cairo_status_to_string(status));
        return 1;
    }
    std::printf("%s.svg\n%s.png\n", picture.c_str(), picture.c_str());
}
