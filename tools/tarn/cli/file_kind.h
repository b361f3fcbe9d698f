// The kinds of files that results go to.
#ifndef TARN_TOOL_CLI_FILE_KIND_H_
#define TARN_TOOL_CLI_FILE_KIND_H_

#include <optional>
#include <string>

namespace tarn::tool {

enum class FileKind { Packed, Pgm, Png, Dng };

// What --to calls them; none where it is something else.
inline constexpr char kFileKinds[] = "raw, pgm, png, dng";
std::optional<FileKind> FindFileKind(const std::string& name);

// By the --to option where it is given, else by the ending of the file's name. Throws UserError for
// what --to does not call any, and for endings of pictures that are not written.
FileKind ParseFileKind(const std::string& to, const std::string& path);

// The ending of a file's name, in lower case, without the dot.
std::string Ending(const std::string& path);

}  // namespace tarn::tool

#endif  // TARN_TOOL_CLI_FILE_KIND_H_
