#include "tools/tarn/cli/file_kind.h"

#include <cctype>

#include "frames/message.h"
#include "tools/tarn/cli/names.h"

namespace tarn::tool {

std::string Ending(const std::string& path) {
    const size_t slash = path.rfind('/');
    const size_t dot = path.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
    std::string ending = path.substr(dot + 1);
    for (char& c : ending) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ending;
}

std::optional<FileKind> FindFileKind(const std::string& name) {
    if (name == "raw") return FileKind::Packed;
    if (name == "pgm") return FileKind::Pgm;
    if (name == "png") return FileKind::Png;
    if (name == "dng") return FileKind::Dng;
    return std::nullopt;
}

FileKind ParseFileKind(const std::string& to, const std::string& path) {
    if (!to.empty()) {
        if (const auto kind = FindFileKind(to)) return *kind;
        throw UserError(Text("--to: \"", to, "\" is none of ", kFileKinds));
    }
    const std::string ending = Ending(path);
    // Whoever asks for one of these wants a picture, which packed rows are not.
    for (const char* other : {"jpg", "jpeg", "tif", "tiff", "bmp", "webp", "ppm", "heic"}) {
        if (ending != other) continue;
        throw UserError(Text("-o: ", path, ": no .", other,
                             " is written; pictures are .pgm, .png and .dng, and --to raw packs "
                             "rows under any name"));
    }
    return FindFileKind(ending).value_or(FileKind::Packed);
}

}  // namespace tarn::tool
