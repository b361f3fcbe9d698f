#include "pictures/golden.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <vector>

#include "frames/formats.h"
#include "frames/geometry.h"
#include "frames/message.h"

namespace tarn::pictures {
namespace {

using Json = nlohmann::json;
namespace fs = std::filesystem;

constexpr int64_t kLargestFile = int64_t{1} << 26;

Bytes ReadExactly(const std::string& path, int64_t size) {
    Bytes bytes = ReadFile(path, size);
    if (static_cast<int64_t>(bytes.size()) != size) {
        throw UserError(
            Text(path, ": does not hold the ", Grouped(size), " bytes that the manifest says"));
    }
    return bytes;
}

int Side(const Json& entry, const char* key) {
    const int side = entry.at(key).get<int>();
    if (side < 1 || side > 100'000) throw UserError(Text(key, " ", side, " makes no sense"));
    return side;
}

// A PGM whose header is known to the letter.
std::vector<uint16_t> ReadValues(const std::string& path, const PackedFrame& frame) {
    const int maximum = (1 << Shape(frame.layout).bits) - 1;
    const std::string header = Text("P5\n", frame.width, " ", frame.height, "\n", maximum, "\n");
    const int64_t pixels = int64_t{frame.width} * frame.height;
    const Bytes bytes = ReadExactly(path, static_cast<int64_t>(header.size()) + 2 * pixels);
    if (!std::equal(header.begin(), header.end(), bytes.begin())) {
        throw UserError(path + ": is not a PGM of the size and depth that the manifest says");
    }
    std::vector<uint16_t> values;
    for (size_t at = header.size(); at < bytes.size(); at += 2) {
        values.push_back(static_cast<uint16_t>(bytes[at] << 8 | bytes[at + 1]));
    }
    return values;
}

GoldenFrame ReadFrame(const fs::path& folder, const Json& entry) {
    GoldenFrame golden;
    golden.name = entry.at("name").get<std::string>();
    golden.frame = {
        FindFormat(golden.name + ": layout", entry.at("layout").get<std::string>()).layout,
        Side(entry, "width"), Side(entry, "height"), Side(entry, "pitch")};
    CheckPitch(golden.name + ": pitch", golden.frame);
    golden.packed =
        ReadExactly(folder / entry.at("packed").get<std::string>(), golden.frame.Bytes());
    golden.values = ReadValues(folder / entry.at("values").get<std::string>(), golden.frame);
    return golden;
}

GoldenResult ReadResult(const fs::path& folder, const Json& entry) {
    const std::string gainBits = entry.at("gain_bits").get<std::string>();
    const auto gain = std::bit_cast<float>(uint32_t(std::stoul(gainBits, nullptr, 16)));
    if (!std::isfinite(gain)) throw UserError("gain_bits " + gainBits + " is no finite number");
    return {ReadFrame(folder, entry), entry.at("from").get<std::string>(),
            entry.at("cell").get<int>(), gain};
}

}  // namespace

const GoldenFrame& Golden::Frame(const std::string& name) const {
    for (const GoldenFrame& frame : frames) {
        if (frame.name == name) return frame;
    }
    throw UserError(Text("the manifest has no frame \"", name, "\""));
}

Golden ReadGolden(const std::string& folder) {
    const std::string path = fs::path(folder) / "manifest.json";
    const Bytes text = ReadFile(path, kLargestFile);
    Golden golden;
    try {
        const Json manifest = Json::parse(text.begin(), text.end());
        for (const Json& entry : manifest.at("frames")) {
            golden.frames.push_back(ReadFrame(folder, entry));
        }
        for (const Json& entry : manifest.at("results")) {
            golden.results.push_back(ReadResult(folder, entry));
        }
    } catch (const std::logic_error& error) {  // a number that is none
        throw UserError(Text(path, ": ", error.what()));
    } catch (const Json::exception& error) {
        throw UserError(Text(path, ": ", error.what()));
    }
    return golden;
}

std::string GoldenFolder() {
    std::error_code ignored;
    const fs::path program = fs::read_symlink("/proc/self/exe", ignored);
    const fs::path installed = program.parent_path() / TARN_GOLDEN_FROM_PROGRAM;
    if (fs::exists(installed / "manifest.json", ignored)) return installed.lexically_normal();
    return program.parent_path() / "golden_vectors";  // a link that the build makes
}

}  // namespace tarn::pictures
