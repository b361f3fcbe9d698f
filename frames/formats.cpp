#include "frames/formats.h"

#include <algorithm>
#include <cctype>

#include "frames/geometry.h"
#include "frames/message.h"

namespace tarn::frames {
namespace {

// How a family of names spells the colour order in the place of its '*'.
enum class Spelling { Letters, V4L2Code, Pfnc, None };

struct Order {
    const char* colours;
    const char* spelled[3];
};
constexpr Order kOrders[] = {{"RGGB", {"RGGB", "R", "RG"}},
                             {"GRBG", {"GRBG", "g", "GR"}},
                             {"GBRG", {"GBRG", "G", "GB"}},
                             {"BGGR", {"BGGR", "B", "BG"}}};

struct Family {
    const char* pattern;
    Spelling spelling;
    Layout layout;
    bool grey;
    const char* source;
};
constexpr Family kFamilies[] = {
    {"qc10", Spelling::None, Layout::QCRaw10, false, "tarn"},
    {"RAW10", Spelling::None, Layout::QCRaw10, false, "MIPI CSI-2, Android"},
    {"S*10P", Spelling::Letters, Layout::QCRaw10, false, "V4L2"},
    {"p*AA", Spelling::V4L2Code, Layout::QCRaw10, false, "V4L2 code"},
    {"Y10P", Spelling::None, Layout::QCRaw10, true, "V4L2"},
    {"S*10_CSI2P", Spelling::Letters, Layout::QCRaw10, false, "libcamera"},
    {"R10_CSI2P", Spelling::None, Layout::QCRaw10, true, "libcamera"},
    {"qc12", Spelling::None, Layout::QCRaw12, false, "tarn"},
    {"RAW12", Spelling::None, Layout::QCRaw12, false, "MIPI CSI-2, Android"},
    {"S*12P", Spelling::Letters, Layout::QCRaw12, false, "V4L2"},
    {"p*CC", Spelling::V4L2Code, Layout::QCRaw12, false, "V4L2 code"},
    {"Y12P", Spelling::None, Layout::QCRaw12, true, "V4L2"},
    {"S*12_CSI2P", Spelling::Letters, Layout::QCRaw12, false, "libcamera"},
    {"R12_CSI2P", Spelling::None, Layout::QCRaw12, true, "libcamera"},
    {"vx10", Spelling::None, Layout::VXRaw10, false, "tarn"},
    {"Bayer*10p", Spelling::Pfnc, Layout::VXRaw10, false, "GenICam PFNC"},
    {"Mono10p", Spelling::None, Layout::VXRaw10, true, "GenICam PFNC"},
    {"vx12", Spelling::None, Layout::VXRaw12, false, "tarn"},
    {"Bayer*12p", Spelling::Pfnc, Layout::VXRaw12, false, "GenICam PFNC"},
    {"Mono12p", Spelling::None, Layout::VXRaw12, true, "GenICam PFNC"},
};

constexpr char kIpu3[] = "IPU3 packs 25 pixels into 32 bytes";
constexpr char kMsbFirst[] = "its bit stream has the most significant bits first";
constexpr char kGigE[] = "GigE Vision keeps both pixels' low bits in the middle one of three bytes";
constexpr char kUnpacked[] = "it is unpacked, 16 bits to a pixel";
constexpr char kUnpackedOrIpu3[] =
    "it is unpacked, 16 bits to a pixel, or, where IPU3 says it, 25 pixels in 32 bytes";
constexpr char kLoose[] = "loose RAW10 holds 6 pixels in 8 bytes, two bits of which are unused";
constexpr char kEight[] = "its pixels are compressed to 8 bits";
constexpr char kDepth[] = "only depths of 10 and 12 bits are known here";

struct NearMissFamily {
    const char* patterns;  // with blanks between them
    Spelling spelling;
    const char* reason;
};
constexpr NearMissFamily kNearMisses[] = {
    {"S*10", Spelling::Letters, kUnpackedOrIpu3},
    {"S*12", Spelling::Letters, kUnpacked},
    {"Bayer*10 Bayer*12", Spelling::Pfnc, kUnpacked},
    {"RG10 BA10 GB10 BG10 RG12 BA12 GB12 BG12", Spelling::None, kUnpacked},
    {"Mono10 Mono12 Y10 Y12 RAW16 RAW_SENSOR", Spelling::None, kUnpacked},
    {"IPU3_S*10 S*10_IPU3", Spelling::Letters, kIpu3},
    {"IPU3_Y10 ip3r ip3G ip3g ip3b ip3y", Spelling::None, kIpu3},
    {"Y10BPACK Y10B TIFF DNG", Spelling::None, kMsbFirst},
    {"Bayer*10Packed Bayer*12Packed", Spelling::Pfnc, kGigE},
    {"Mono10Packed Mono12Packed", Spelling::None, kGigE},
    {"RAW10_LOOSE loose", Spelling::None, kLoose},
    {"S*10ALAW8 S*10DPCM8", Spelling::Letters, kEight},
    {"S*8 S*14P S*16", Spelling::Letters, kDepth},
    {"RAW8 RAW14", Spelling::None, kDepth},
};

// Calls use(name, colour order) for the one name of a pattern, or the four.
template <class Use>
void ForEachName(const std::string& pattern, Spelling spelling, const Use& use) {
    if (spelling == Spelling::None) return use(pattern, "");
    const size_t star = pattern.find('*');
    for (const Order& order : kOrders) {
        std::string name = pattern;
        use(name.replace(star, 1, order.spelled[static_cast<int>(spelling)]), order.colours);
    }
}

std::string Lower(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

}  // namespace

std::vector<NamedFormat> AllFormats() {
    std::vector<NamedFormat> all;
    for (const Family& f : kFamilies) {
        ForEachName(f.pattern, f.spelling, [&](const std::string& name, const char* colours) {
            all.push_back({name, f.layout, colours, f.grey, f.source});
        });
    }
    return all;
}

std::vector<NearMiss> AllNearMisses() {
    std::vector<NearMiss> all;
    for (const NearMissFamily& f : kNearMisses) {
        std::istringstream patterns(f.patterns);
        for (std::string pattern; patterns >> pattern;) {
            ForEachName(pattern, f.spelling, [&](const std::string& name, const char*) {
                all.push_back({name, f.reason});
            });
        }
    }
    return all;
}

NamedFormat FindFormat(const std::string& option, std::string name, const std::string& others) {
    const std::string prefix = "V4L2_PIX_FMT_";
    if (name.starts_with(prefix)) name.erase(0, prefix.size());
    const std::vector<NamedFormat> formats = AllFormats();
    for (const NamedFormat& format : formats) {
        if (format.name == name) return format;
    }
    for (const NearMiss& miss : AllNearMisses()) {
        if (miss.name != name) continue;
        throw UserError(Text(option, ": ", name, " is none of these layouts: ", miss.reason,
                             "; see tarn formats"));
    }
    std::string meant;
    for (const NamedFormat& format : formats) {
        if (Lower(format.name) == Lower(name)) {
            meant += Text(meant.empty() ? "; case matters: did you mean " : " or ", format.name);
        }
    }
    throw UserError(Text(option, ": unknown layout \"", name, "\"; there are ", kLayoutNames,
                         " and other names for them", others,
                         meant.empty() ? "; see tarn formats" : meant));
}

void CheckSameColours(const std::string& option, const NamedFormat& format,
                      const std::string& colours) {
    if (format.colours.empty() || format.colours == colours) return;
    throw UserError(Text(option, ": ", format.name, " is ", format.colours, ", the frame is ",
                         colours.empty() ? "without colours" : colours,
                         "; nothing is moved to change that"));
}

}  // namespace tarn::frames
