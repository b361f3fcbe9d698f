#include "pictures/temporary_file.h"

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>

namespace tarn::pictures {
namespace {

[[noreturn]] void Throw(int error) {
    throw std::system_error(error, std::generic_category());
}

// Names of files that exist, or are just being made: who changes that holds the mutex, and so does
// who removes them all. Never destroyed: the thread that waits for signals outlives everything.
struct Registry {
    std::mutex mutex;
    std::set<std::string> paths;
};
Registry& Names() {
    static Registry& names = *new Registry;
    return names;
}

// Ends the tool as the signal would have, without the files. The mutex stays locked: none is made
// any more.
[[noreturn]] void RemoveAllAndDie(int signal) {
    Names().mutex.lock();
    for (const std::string& path : Names().paths) unlink(path.c_str());
    std::signal(signal, SIG_DFL);
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, signal);
    raise(signal);
    pthread_sigmask(SIG_UNBLOCK, &only, nullptr);
    std::_Exit(128 + signal);
}

}  // namespace

void CatchSignals() {
    sigset_t caught;
    sigemptyset(&caught);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        struct sigaction now {};
        if (sigaction(signal, nullptr, &now) == 0 && now.sa_handler != SIG_IGN) {
            sigaddset(&caught, signal);
        }
    }
    pthread_sigmask(SIG_BLOCK, &caught, nullptr);
    try {
        std::thread([caught] {
            int signal = 0;
            if (sigwait(&caught, &signal) == 0) RemoveAllAndDie(signal);
        }).detach();
    } catch (const std::system_error&) {
        pthread_sigmask(SIG_UNBLOCK, &caught, nullptr);
    }
}

TemporaryFile::TemporaryFile(const std::string& folder) : path_(folder + "/.tarn-XXXXXX") {
    const std::lock_guard lock(Names().mutex);
    file_ = mkostemp(path_.data(), O_CLOEXEC);
    if (file_ < 0) Throw(errno);
    Names().paths.insert(path_);
}

TemporaryFile::~TemporaryFile() {
    if (file_ >= 0) close(file_);
    const std::lock_guard lock(Names().mutex);
    if (Names().paths.erase(path_) > 0) unlink(path_.c_str());
}

void TemporaryFile::Close() {
    const int failed = close(file_);
    file_ = -1;
    if (failed) Throw(errno);
}

void TemporaryFile::RenameTo(const std::string& path) {
    const std::lock_guard lock(Names().mutex);
    if (rename(path_.c_str(), path.c_str()) != 0) Throw(errno);
    Names().paths.erase(path_);
}

}  // namespace tarn::pictures
