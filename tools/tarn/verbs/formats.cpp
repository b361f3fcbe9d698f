// tarn formats: the table of names.
#include <iomanip>
#include <map>
#include <nlohmann/json.hpp>

#include "frames/formats.h"
#include "frames/geometry.h"
#include "frames/message.h"
#include "pictures/output.h"
#include "tools/tarn/cli/verb.h"

namespace tarn::tool {
namespace {

using nlohmann::json;

// In the order of Layout.
constexpr const char* kDescriptions[] = {
    "bits 9..2 of four pixels, a byte each, then a byte of their bits 1..0",
    "bits 11..4 of two pixels, a byte each, then a byte of their bits 3..0",
    "one stream of bits, least significant first",
    "one stream of bits, least significant first",
};
static_assert(std::size(kDescriptions) == kLayoutCount);

std::string Table() {
    std::ostringstream text;
    const Layout* layout = nullptr;
    const char* source = nullptr;
    const std::vector<NamedFormat> formats = AllFormats();
    for (const NamedFormat& format : formats) {
        if (!layout || *layout != format.layout) {
            const GroupShape& shape = Shape(format.layout);
            text << (layout ? "\n\n" : "") << LayoutName(format.layout) << ": " << shape.pixels
                 << " pixels in " << shape.bytes << " bytes; "
                 << kDescriptions[static_cast<int>(format.layout)];
            layout = &format.layout;
            source = nullptr;
        }
        if (!source || std::string(source) != format.source) {
            source = format.source;
            text << "\n  " << std::left << std::setw(20) << source;
        }
        text << ' ' << format.name;
    }
    text << "\n\nNot these, though the names are close:\n";
    std::vector<std::pair<std::string, std::string>> reasons;
    for (const NearMiss& miss : AllNearMisses()) {
        if (reasons.empty() || reasons.back().first != miss.reason) {
            reasons.emplace_back(miss.reason, "");
        }
        reasons.back().second += " " + miss.name;
    }
    for (const auto& [reason, names] : reasons) text << "  " << reason << ":\n   " << names << "\n";
    return text.str();
}

std::string Json() {
    json formats = json::array(), refused = json::array();
    for (const NamedFormat& format : AllFormats()) {
        formats.push_back(
            {{"name", format.name},
             {"layout", LayoutName(format.layout)},
             {"bits", Shape(format.layout).bits},
             {"colours", format.colours.empty() ? json(nullptr) : json(format.colours)},
             {"grey", format.grey},
             {"source", format.source}});
    }
    for (const NearMiss& miss : AllNearMisses()) {
        refused.push_back({{"name", miss.name}, {"reason", miss.reason}});
    }
    return json{{"formats", formats}, {"refused", refused}}.dump(2) + "\n";
}

std::function<void()> Declare(CLI::App& command) {
    const auto asJson = std::make_shared<bool>(false);
    command.add_flag("--json", *asJson, "For machines");
    command.footer(
        "Any of the names goes with -f. Case matters: pgAA is GRBG, pGAA is GBRG.\n\n"
        "Example:\n"
        "  tarn formats --json\n");
    return [asJson] {
        const std::string text = *asJson ? Json() : Table();
        WriteFile("-", Bytes(text.begin(), text.end()));
    };
}

}  // namespace

const Verb kFormats{"formats", "List the names by which the packed layouts are known", Declare};

}  // namespace tarn::tool
