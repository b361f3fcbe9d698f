#include "pictures/input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "frames/message.h"

namespace tarn::pictures {
namespace {

[[noreturn]] void Refuse(const std::string& path) {
    throw UserError(Text(InputName(path), ": cannot be read: ", std::strerror(errno)));
}

// Calls read(buffer) until the buffer is full or the file at its end.
template <class F>
int64_t Fill(const std::string& path, std::span<uint8_t> buffer, const F& read) {
    size_t done = 0;
    while (done < buffer.size()) {
        const ssize_t got = read(buffer.subspan(done), static_cast<int64_t>(done));
        if (got < 0 && errno != EINTR) Refuse(path);
        if (got == 0) break;
        done += static_cast<size_t>(std::max<ssize_t>(got, 0));
    }
    return static_cast<int64_t>(done);
}

}  // namespace

std::string InputName(const std::string& path, int64_t offset) {
    const std::string name = path == "-" ? "standard input" : path.empty() ? kNoName : path;
    return offset > 0 ? Text(name, " after --offset ", offset) : name;
}

std::string AsArgument(const std::string& path) {
    constexpr char kPlain[] =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._/+,@%-";
    std::string name = path.rfind('-', 0) == 0 ? "./" + path : path;
    if (name.find_first_not_of(kPlain) == name.npos) return name;
    std::string quoted = "'";
    for (const char c : name) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

int64_t FileSize(const std::string& path) {
    struct stat status {};
    const int failed = path == "-" ? fstat(STDIN_FILENO, &status) : stat(path.c_str(), &status);
    if (failed) Refuse(path);
    if (S_ISDIR(status.st_mode))
        throw UserError(Text(InputName(path), ": is a folder, not a file"));
    return S_ISREG(status.st_mode) && path != "-" ? status.st_size : -1;
}

InputFile::InputFile(const std::string& path)
    : path_(path), file_(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (file_ < 0) Refuse(path);
}

InputFile::~InputFile() {
    if (file_ != STDIN_FILENO) close(file_);
}

int64_t InputFile::Read(std::span<uint8_t> buffer) const {
    return Fill(path_, buffer, [this](std::span<uint8_t> rest, int64_t) {
        return read(file_, rest.data(), rest.size());
    });
}

int64_t InputFile::ReadAt(int64_t offset, std::span<uint8_t> buffer) const {
    return Fill(path_, buffer, [=, this](std::span<uint8_t> rest, int64_t done) {
        return pread(file_, rest.data(), rest.size(), offset + done);
    });
}

void InputFile::ReadWholeAt(int64_t offset, std::span<uint8_t> buffer) const {
    if (ReadAt(offset, buffer) == static_cast<int64_t>(buffer.size())) return;
    throw UserError(Text(path_, ": became shorter while it was read"));
}

Bytes ReadFile(const std::string& path, int64_t most, int64_t begin) {
    const int64_t size = FileSize(path);
    const InputFile file(path);
    Bytes bytes;
    if (size >= 0) {
        bytes.resize(static_cast<size_t>(std::clamp<int64_t>(size - begin, 0, most + 1)));
        bytes.resize(static_cast<size_t>(file.ReadAt(begin, bytes)));
        return bytes;
    }
    // Grows with what arrives: a geometry may ask for far more than a pipe will ever deliver.
    constexpr int64_t kStep = int64_t{16} << 20;
    for (int64_t held = 0, step = -1, got = -1; got == step; held += got) {
        step = std::min(kStep, most + 1 - held);
        if (step == 0) break;
        bytes.resize(static_cast<size_t>(held + step));
        got = file.Read({bytes.data() + held, static_cast<size_t>(step)});
        bytes.resize(static_cast<size_t>(held + got));
    }
    return bytes;
}

}  // namespace tarn::pictures
