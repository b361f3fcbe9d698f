#include "pictures/output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "frames/message.h"
#include "pictures/temporary_file.h"

namespace tarn::pictures {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Refuse(const std::string& path, int error) {
    throw UserError(Text(OutputName(path), ": cannot be written: ", std::strerror(error)));
}

[[noreturn]] void BreakOff(const std::string& path, int64_t written, int error) {
    throw RunError(Text(OutputName(path), ": writing broke off after ", Grouped(written),
                        " bytes: ", std::strerror(error)));
}

bool WrittenDirectly(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

std::string FolderOf(const fs::path& target) {
    return target.has_parent_path() ? target.parent_path().string() : ".";
}

// One spelling for all those of a file, or a link, in a folder that is there.
fs::path Place(const fs::path& path) {
    return fs::weakly_canonical(FolderOf(path)) / path.filename();
}

bool IsStandardOutput(const fs::path& path) {
    static const fs::path own = Place("/proc/self/fd/1");
    return path.filename() == own.filename() && Place(path) == own;
}

// Where a chain of symbolic links ends, be there a file or not; at standard output in any case.
fs::path Target(fs::path path) {
    constexpr int kMostLinks = 40;
    for (int links = 0; links < kMostLinks && fs::is_symlink(fs::symlink_status(path)); ++links) {
        if (IsStandardOutput(path)) break;
        path = path.parent_path() / fs::read_symlink(path);
    }
    return path;
}

// The mode that the file has, or a new one gets.
mode_t ModeOf(const std::string& target) {
    struct stat status {};
    if (stat(target.c_str(), &status) == 0) return status.st_mode & 07777;
    static const mode_t mask = [] {
        const mode_t now = umask(0);
        umask(now);
        return now;
    }();
    return 0666 & ~mask;
}

using FileId = std::pair<dev_t, ino_t>;

// Of an input, "-" included, which may have been opened from a file.
std::optional<FileId> IdOf(const std::string& path) {
    struct stat status {};
    const int failed = path == "-" ? fstat(STDIN_FILENO, &status) : stat(path.c_str(), &status);
    if (failed || !S_ISREG(status.st_mode)) return std::nullopt;
    return FileId{status.st_dev, status.st_ino};
}

void CheckOutput(const std::string& path, const std::set<FileId>& inputs) {
    if (path == "-") return;
    const fs::path target = Target(path);
    std::error_code ignored;
    if (fs::is_directory(target, ignored)) throw UserError(Text(path, ": is a folder, not a file"));
    const std::optional<FileId> id = IdOf(target);
    if (id && inputs.count(*id) > 0) {
        throw UserError(Text(path, ": is the input itself; give the output another name"));
    }
    if (access(target.c_str(), F_OK) == 0) {
        if (access(target.c_str(), W_OK) != 0) Refuse(path, errno);
    } else if (errno != ENOENT || path.empty()) {
        Refuse(path, errno);
    }
    const std::string folder = FolderOf(target);
    if (!WrittenDirectly(path) && access(folder.c_str(), W_OK) != 0) {
        throw UserError(
            Text(path, ": cannot be written: folder ", folder, ": ", std::strerror(errno)));
    }
}

}  // namespace

std::string OutputName(const std::string& path) {
    return path == "-" ? "standard output" : path.empty() ? kNoName : path;
}

std::string PlainOutput(const std::string& path) {
    return IsStandardOutput(Target(path)) ? "-" : path;
}

void CheckOutput(const std::string& path, const std::string& inputPath) {
    CheckOutputs({path}, {inputPath});
}

void CheckOutputs(const std::vector<std::string>& paths, const std::vector<std::string>& inputs) {
    std::set<FileId> ids;
    for (const std::string& input : inputs) {
        if (const auto id = IdOf(input)) ids.insert(*id);
    }
    for (const std::string& path : paths) CheckOutput(path, ids);
}

std::optional<std::string> SharedOutput(const std::vector<std::string>& paths) {
    std::set<fs::path> places;
    for (const std::string& path : paths) {
        if (!WrittenDirectly(path) && !places.insert(Place(Target(path))).second) return path;
    }
    return std::nullopt;
}

OutputFile::OutputFile(const std::string& path) : path_(path) {
    if (path == "-") {
        direct_ = STDOUT_FILENO;
    } else if (WrittenDirectly(path)) {
        direct_ = open(path.c_str(), O_WRONLY | O_CLOEXEC);
        if (direct_ < 0) Refuse(path, errno);
    } else {
        const fs::path target = Target(path);
        target_ = target;
        try {
            temporary_ = std::make_unique<TemporaryFile>(FolderOf(target));
        } catch (const std::system_error& error) {
            Refuse(path, error.code().value());
        }
        fchmod(temporary_->Descriptor(), ModeOf(target_));
    }
}

OutputFile::~OutputFile() {
    if (direct_ > STDOUT_FILENO) close(direct_);
}

void OutputFile::WriteAt(int64_t offset, std::span<const uint8_t> bytes) {
    for (size_t done = 0; done < bytes.size();) {
        const int64_t at = offset + static_cast<int64_t>(done);
        const ssize_t written =
            pwrite(temporary_->Descriptor(), bytes.data() + done, bytes.size() - done, at);
        if (written < 0 && errno != EINTR) BreakOff(path_, at, errno);
        if (written > 0) done += static_cast<size_t>(written);
    }
}

void OutputFile::Append(std::span<const uint8_t> bytes) {
    const int file = temporary_ ? temporary_->Descriptor() : direct_;
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) BreakOff(path_, written_, errno);
        if (written <= 0) continue;
        written_ += written;
        bytes = bytes.subspan(static_cast<size_t>(written));
    }
}

void OutputFile::Commit() {
    if (!temporary_) {
        const int file = std::exchange(direct_, -1);
        if (file > STDOUT_FILENO && close(file) != 0) BreakOff(path_, written_, errno);
        return;
    }
    try {
        temporary_->Close();
    } catch (const std::system_error& error) {
        BreakOff(path_, written_, error.code().value());
    }
    try {
        temporary_->RenameTo(target_);
    } catch (const std::system_error& error) {
        Refuse(path_, error.code().value());
    }
}

void WriteFile(const std::string& path, std::span<const uint8_t> bytes) {
    OutputFile file(path);
    file.Append(bytes);
    file.Commit();
}

}  // namespace tarn::pictures
