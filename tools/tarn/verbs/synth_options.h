// What synth can be asked for.
#ifndef TARN_TOOL_VERBS_SYNTH_OPTIONS_H_
#define TARN_TOOL_VERBS_SYNTH_OPTIONS_H_

#include <optional>
#include <string>

#include "frames/formats.h"
#include "frames/picture.h"
#include "pictures/mosaic.h"
#include "pictures/synth/noise.h"
#include "tools/tarn/cli/file_kind.h"
#include "tools/tarn/cli/frame_options.h"

namespace tarn::tool {

inline constexpr const char* kPatterns[] = {"", "plain Bayer", "Tetra", "Nona", "Hexadeca"};

struct SynthOptions {
    std::string source;
    std::string chart;
    std::string out;
    std::string to;
    std::string layout;
    std::string cell;
    std::string pitch;
    std::string size;
    std::string black;
    std::string white;
    std::string colours;
    std::string exposure = "1";
    std::string noise;
    std::string seed;
    ReportOptions report;

    void Declare(CLI::App& command);
    // Each throws UserError for what cannot be.
    int Cell(int bits) const;
    double Exposure() const;
    std::optional<Noise> NoiseModel() const;
    FileKind Kind() const;
    // The order chosen for what has none: a picture, a chart.
    std::string ColoursFor(const NamedFormat& format) const;
    // Puts what was given in the place of what a raw or PGM tells.
    void Override(Mosaic* mosaic) const;
};

}  // namespace tarn::tool

#endif  // TARN_TOOL_VERBS_SYNTH_OPTIONS_H_
