#include "tools/tarn/output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "tools/tarn/message.h"

namespace tarn::tool {
namespace {

namespace fs = std::filesystem;

// What a signal that ends the tool has to remove. Empty when there is nothing.
char temporaryPath[PATH_MAX];

void RemoveTemporaryAndDie(int signal) {
    if (temporaryPath[0]) unlink(temporaryPath);
    std::signal(signal, SIG_DFL);
    raise(signal);
}

[[noreturn]] void Refuse(const std::string& path, int error) {
    throw UserError(Text(path, ": cannot be written: ", std::strerror(error)));
}

void WriteAll(int file, const std::string& name, const Bytes& bytes) {
    for (size_t done = 0; done < bytes.size();) {
        const ssize_t written = write(file, bytes.data() + done, bytes.size() - done);
        if (written < 0 && errno != EINTR) {
            throw RunError(Text(name, ": writing broke off after ", Grouped(int64_t(done)), " of ",
                                Grouped(int64_t(bytes.size())), " bytes: ", std::strerror(errno)));
        }
        if (written > 0) done += static_cast<size_t>(written);
    }
}

void WriteAndClose(int file, const std::string& name, const Bytes& bytes) {
    try {
        WriteAll(file, name, bytes);
    } catch (...) {
        close(file);
        throw;
    }
    if (close(file) != 0) throw RunError(Text(name, ": writing broke off: ", std::strerror(errno)));
}

bool WrittenDirectly(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

// Where a chain of symbolic links ends, be there a file or not.
fs::path Target(fs::path path) {
    constexpr int kMostLinks = 40;
    for (int links = 0; links < kMostLinks && fs::is_symlink(fs::symlink_status(path)); ++links) {
        path = path.parent_path() / fs::read_symlink(path);
    }
    return path;
}

// The mode that the file has, or a new one gets.
mode_t ModeOf(const fs::path& target) {
    struct stat status {};
    if (stat(target.c_str(), &status) == 0) return status.st_mode & 07777;
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

class TemporaryFile {
 public:
    explicit TemporaryFile(const fs::path& target) : target_(target) {
        const std::string pattern = (target.parent_path() / ".tarn-XXXXXX").string();
        if (pattern.size() >= sizeof temporaryPath) Refuse(target, ENAMETOOLONG);
        std::memcpy(temporaryPath, pattern.c_str(), pattern.size() + 1);
        file_ = mkostemp(temporaryPath, O_CLOEXEC);
        const int error = errno;
        if (file_ >= 0) return;
        temporaryPath[0] = '\0';
        Refuse(target, error);
    }
    ~TemporaryFile() {
        if (temporaryPath[0]) unlink(temporaryPath);
        temporaryPath[0] = '\0';
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    void WriteAndRename(const Bytes& bytes) {
        fchmod(file_, ModeOf(target_));
        WriteAndClose(file_, target_, bytes);
        if (rename(temporaryPath, target_.c_str()) != 0) Refuse(target_, errno);
        temporaryPath[0] = '\0';
    }

 private:
    fs::path target_;
    int file_;
};

}  // namespace

std::string OutputName(const std::string& path) {
    return path == "-" ? "standard output" : path;
}

void CheckOutput(const std::string& path, const std::string& inputPath) {
    if (path == "-") return;
    const fs::path target = Target(path);
    std::error_code ignored;
    if (fs::is_directory(target, ignored)) throw UserError(Text(path, ": is a folder, not a file"));
    if (inputPath != "-" && fs::is_regular_file(target, ignored) &&
        fs::equivalent(target, inputPath, ignored)) {
        throw UserError(Text(path, ": is the input itself; give the output another name"));
    }
    if (access(target.c_str(), F_OK) == 0) {
        if (access(target.c_str(), W_OK) != 0) Refuse(path, errno);
    } else if (errno != ENOENT || path.empty()) {
        Refuse(path, errno);
    }
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    if (!WrittenDirectly(path) && access(folder.c_str(), W_OK) != 0) {
        throw UserError(Text(path, ": cannot be written: folder ", folder.string(), ": ",
                             std::strerror(errno)));
    }
}

void WriteFile(const std::string& path, const Bytes& bytes) {
    if (path == "-") return WriteAll(STDOUT_FILENO, OutputName(path), bytes);
    if (WrittenDirectly(path)) {
        const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
        if (file < 0) Refuse(path, errno);
        return WriteAndClose(file, path, bytes);
    }
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        if (std::signal(signal, RemoveTemporaryAndDie) == SIG_IGN) std::signal(signal, SIG_IGN);
    }
    TemporaryFile(Target(path)).WriteAndRename(bytes);
}

}  // namespace tarn::tool
