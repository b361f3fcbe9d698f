// Writing results: whole or not at all.
#ifndef TARN_PICTURES_OUTPUT_H_
#define TARN_PICTURES_OUTPUT_H_

#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "pictures/input.h"

namespace tarn::pictures {

// The name of a file in messages: "standard output" for "-".
std::string OutputName(const std::string& path);

// The path of an output as every check is to see it: "-" for what names standard output, such as
// /dev/stdout. Such a link leads on to the file behind it, which would be replaced, not continued.
std::string PlainOutput(const std::string& path);

// Throws UserError when the output cannot be written, before work is spent on it: a folder, an
// unwritable place, or a file that is being read.
void CheckOutput(const std::string& path, const std::string& inputPath);
void CheckOutputs(const std::vector<std::string>& paths, const std::vector<std::string>& inputs);

// The first of them, each of which can be written, that is the same file as one before it, by
// whatever spelling or links. Devices and pipes may be shared.
std::optional<std::string> SharedOutput(const std::vector<std::string>& paths);

class TemporaryFile;

// A file to write. A regular or new one is written under a temporary name in its folder and renamed
// at the end, so that it is never seen half-written and a failure leaves an existing one as it was;
// symbolic links are followed. Devices, pipes and standard output ("-") are written directly.
// Throws UserError when the file cannot be made, RunError when writing breaks off.
class OutputFile {
 public:
    explicit OutputFile(const std::string& path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    // Whether WriteAt can be used, by several threads at once.
    bool TakesAnyOrder() const { return temporary_ != nullptr; }
    void WriteAt(int64_t offset, std::span<const uint8_t> bytes);
    void Append(std::span<const uint8_t> bytes);
    // Without it nothing will have happened.
    void Commit();

 private:
    std::string path_;
    std::string target_;
    std::unique_ptr<TemporaryFile> temporary_;
    int direct_ = -1;
    int64_t written_ = 0;
};

void WriteFile(const std::string& path, std::span<const uint8_t> bytes);

}  // namespace tarn::pictures

#endif  // TARN_PICTURES_OUTPUT_H_
