// What a verb is given to read: a file of packed frames, or one picture in a PGM, a DNG or another
// camera raw.
#ifndef TARN_TOOL_CLI_SOURCE_H_
#define TARN_TOOL_CLI_SOURCE_H_

#include <optional>
#include <string>
#include <vector>

#include "frames/picture.h"
#include "pictures/frame_file.h"
#include "pictures/output_names.h"
#include "tools/tarn/cli/frame_options.h"

namespace tarn::tool {

struct Source {
    std::string description;      // "16x8 qc10 at pitch 20"
    std::optional<FrameRun> run;  // of a packed file
    bool coloursKnown = false;    // they were told, not assumed
    int cell = 1;
    Picture picture;  // of a packed file all but the codes

    int64_t Count() const { return run ? run->count : 1; }
    std::vector<FrameName> Names(const std::string& path) const;
    Picture At(int64_t i) const;
};

// A file whose format or size is told is packed. Throws UserError.
Source ReadSource(const std::string& path, const FrameOptions& options);

}  // namespace tarn::tool

#endif  // TARN_TOOL_CLI_SOURCE_H_
