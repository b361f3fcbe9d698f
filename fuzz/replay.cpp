// Runs a fuzz target once over each file of the given folders: the corpus as an everyday test.
// Folders and files by the C library, whose calls the memory sanitizer knows, unlike the C++
// library's.
#include <dirent.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size);

static bool ReplayFile(const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file) return false;
    std::vector<uint8_t> bytes(1 << 16);
    const size_t size = std::fread(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
    const std::vector<uint8_t> exact(bytes.data(), bytes.data() + size);
    LLVMFuzzerTestOneInput(exact.data(), exact.size());
    return true;
}

static int ReplayFolder(const std::string& folder) {
    DIR* entries = opendir(folder.c_str());
    if (!entries) return 0;
    int files = 0;
    while (const dirent* entry = readdir(entries)) {
        if (entry->d_type != DT_REG) continue;
        if (!ReplayFile(folder + "/" + entry->d_name)) {
            std::printf("%s/%s cannot be read\n", folder.c_str(), entry->d_name);
            std::exit(1);
        }
        ++files;
    }
    closedir(entries);
    return files;
}

int main(int argc, char** argv) {
    int files = 0;
    for (int i = 1; i < argc; ++i) files += ReplayFolder(argv[i]);
    std::printf("%d files replayed\n", files);
    return files > 0 ? 0 : 1;
}
