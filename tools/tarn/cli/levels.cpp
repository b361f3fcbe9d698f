#include "tools/tarn/cli/levels.h"

#include <algorithm>

#include "frames/message.h"

namespace tarn::tool {
namespace {

Balance ParseBalance(const std::string& text) {
    if (std::count(text.begin(), text.end(), ',') != 2) {
        throw UserError(Text("--wb: \"", text, "\" is not RED,GREEN,BLUE, such as 1.9,1,1.6"));
    }
    std::istringstream parts(text + ",");
    Balance balance{};
    for (double& factor : balance) {
        std::string part;
        std::getline(parts, part, ',');
        factor = ParseReal("--wb", part, 0.01, 100);
    }
    return balance;
}

}  // namespace

void LevelOptions::Declare(CLI::App& command) {
    AddText(
        command, "--black", black, "LEVEL",
        "Black level for .dng and developed .png [what RAW\ntells; else 64 at 10 bits, 256 at 12]");
    AddText(command, "--white", white, "LEVEL",
            "White level, likewise [what RAW tells; else the\nhighest code]");
    AddText(command, "--wb", balance, "R,G,B",
            "White balance, likewise: factors [what RAW tells; else\ngrey world]");
}

void ApplyLevels(const LevelOptions& options, Picture* picture) {
    if (!options.black.empty()) {
        picture->black = double(ParseNumber("--black", options.black, 0, 65535));
    }
    if (!options.white.empty()) {
        picture->white = double(ParseNumber("--white", options.white, 1, 65535));
    }
    if (!options.balance.empty()) picture->balance = ParseBalance(options.balance);
    if (picture->white <= picture->black || picture->white >= 1 << picture->bits) {
        throw UserError(Text("the white level ", picture->white, " must be above the black level ",
                             picture->black, " and within ", picture->bits, " bits"));
    }
}

}  // namespace tarn::tool
