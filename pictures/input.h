// Reading files, standard input included.
#ifndef TARN_PICTURES_INPUT_H_
#define TARN_PICTURES_INPUT_H_

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "frames/bytes.h"
#include "pictures/names.h"

namespace tarn::pictures {

// The name of a file in messages: "standard input" for "-". With an offset, of what follows it.
std::string InputName(const std::string& path, int64_t offset = 0);

// A file's name as a shell takes it for one word, and a command for no option.
std::string AsArgument(const std::string& path);
inline constexpr char kNoName[] = "\"\" (an empty name)";

// Size of a regular file in bytes, or -1 for anything that has none (a pipe, say). Throws UserError
// when there is no such file, or it is a folder.
int64_t FileSize(const std::string& path);

// An open file, or standard input for "-". All throw UserError.
class InputFile {
 public:
    explicit InputFile(const std::string& path);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    // Fills the buffer with what comes next; fewer bytes than it holds at the end only.
    int64_t Read(std::span<uint8_t> buffer) const;
    // The same from a byte of a regular file, by several threads at once.
    int64_t ReadAt(int64_t offset, std::span<uint8_t> buffer) const;
    // The same, where the bytes were there when the file was looked at.
    void ReadWholeAt(int64_t offset, std::span<uint8_t> buffer) const;

 private:
    std::string path_;
    int file_;
};

// Reads a file, or standard input for "-", up to its end; when it goes on past `most` bytes, the
// result holds one byte more than that. Only a regular file can be read from a later byte on.
// Throws UserError.
Bytes ReadFile(const std::string& path, int64_t most, int64_t begin = 0);

}  // namespace tarn::pictures

#endif  // TARN_PICTURES_INPUT_H_
