#include "tools/tarn/input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "tools/tarn/message.h"

namespace tarn::tool {
namespace {

[[noreturn]] void Refuse(const std::string& path) {
    throw UserError(Text(InputName(path), ": cannot be read: ", std::strerror(errno)));
}

// Grows with what arrives: a geometry may ask for far more than a pipe will ever deliver.
Bytes ReadToEnd(int file, const std::string& path, int64_t most) {
    constexpr int64_t kStep = int64_t{16} << 20;
    Bytes bytes;
    for (;;) {
        const int64_t held = static_cast<int64_t>(bytes.size());
        const int64_t step = std::min(kStep, most + 1 - held);
        if (step == 0) return bytes;
        bytes.resize(static_cast<size_t>(held + step));
        const ssize_t got = read(file, bytes.data() + held, static_cast<size_t>(step));
        if (got < 0 && errno != EINTR) Refuse(path);
        bytes.resize(static_cast<size_t>(held + std::max<ssize_t>(got, 0)));
        if (got == 0) return bytes;
    }
}

class Descriptor {
 public:
    explicit Descriptor(const std::string& path)
        : owned_(path != "-"),
          value_(owned_ ? open(path.c_str(), O_RDONLY | O_CLOEXEC) : STDIN_FILENO) {
        if (value_ < 0) Refuse(path);
    }
    ~Descriptor() {
        if (owned_) close(value_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Value() const { return value_; }

 private:
    bool owned_;
    int value_;
};

}  // namespace

std::string InputName(const std::string& path) {
    return path == "-" ? "standard input" : path;
}

int64_t FileSize(const std::string& path) {
    struct stat status {};
    const int failed = path == "-" ? fstat(STDIN_FILENO, &status) : stat(path.c_str(), &status);
    if (failed) Refuse(path);
    if (S_ISDIR(status.st_mode))
        throw UserError(Text(InputName(path), ": is a folder, not a file"));
    return S_ISREG(status.st_mode) && path != "-" ? status.st_size : -1;
}

Bytes ReadFile(const std::string& path, int64_t most, int64_t begin) {
    FileSize(path);  // for its complaints
    const Descriptor file(path);
    if (begin > 0 && lseek(file.Value(), begin, SEEK_SET) < 0) Refuse(path);
    return ReadToEnd(file.Value(), path, most);
}

}  // namespace tarn::tool
