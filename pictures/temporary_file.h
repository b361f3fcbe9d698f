// Files under construction, which no end of the tool leaves behind.
#ifndef TARN_PICTURES_TEMPORARY_FILE_H_
#define TARN_PICTURES_TEMPORARY_FILE_H_

#include <string>

namespace tarn::pictures {

// Has SIGINT, SIGTERM and SIGHUP, where they are not ignored, remove the temporary files before
// they end the tool. Once, before there are other threads: they must not get these signals. It
// takes a thread; where the system grants none, the signals end the tool and the files stay.
void CatchSignals();

// A new file with a name of its own in a folder, until it gets its final name.
class TemporaryFile {
 public:
    // Throws std::system_error.
    explicit TemporaryFile(const std::string& folder);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    int Descriptor() const { return file_; }
    // Closes and renames it. Both throw std::system_error.
    void Close();
    void RenameTo(const std::string& path);

 private:
    std::string path_;
    int file_;
};

}  // namespace tarn::pictures

#endif  // TARN_PICTURES_TEMPORARY_FILE_H_
