// The library loaded and unloaded a hundred times, with a frame in between: nothing of it may stay
// behind in the process.
//   reload LIBRARY
#include <dlfcn.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>

#include "TarnSolution.h"

namespace {

int LinesOfMaps() {
    std::ifstream maps("/proc/self/maps");
    int lines = 0;
    for (std::string line; std::getline(maps, line);) ++lines;
    return lines;
}

// Four pixels of 250 with gain 1.5, as two of a Tetra frame.
bool FrameIsRight(void* library) {
    const auto make = reinterpret_cast<decltype(&TarnSolution_initialize)>(
        dlsym(library, "TarnSolution_initialize"));
    const auto destroy =
        reinterpret_cast<decltype(&TarnSolution_destroy)>(dlsym(library, "TarnSolution_destroy"));
    if (!make || !destroy) return false;
    unsigned char src[2][5] = {{62, 62, 62, 62, 0xAA}, {62, 62, 62, 62, 0xAA}};
    unsigned char dst[5] = {};
    const unsigned char expected[5] = {0x55, 0x55, 0x10, 0x10, 0x0F};
    TarnBinningAbstract* solution = make();
    solution->Init(0);
    solution->SetParam(PROP_BRIGHTNESS_RATIO, 1.5f);
    solution->Process(src[0], dst, {4, 5, 2, 2, 5, 1});
    destroy(solution);
    return std::memcmp(dst, expected, sizeof dst) == 0;
}

bool LoadsAndLeaves(const char* path) {
    void* library = dlopen(path, RTLD_NOW);
    if (!library) return false;
    const bool right = FrameIsRight(library);
    dlclose(library);
    return right && !dlopen(path, RTLD_NOW | RTLD_NOLOAD);
}

}  // namespace

int main(int, char** argv) {
    int mapped = 0;
    for (int turn = 0; turn < 100; ++turn) {
        if (!LoadsAndLeaves(argv[1])) {
            const char* reason = dlerror();
            std::printf("turn %d: %s\n", turn, reason ? reason : "a wrong frame, or still loaded");
            return 1;
        }
        if (turn == 1) mapped = LinesOfMaps();  // the first turn also set up what stays
    }
    if (LinesOfMaps() > mapped + 2)
        std::printf("mappings grew from %d to %d\n", mapped, LinesOfMaps());
    return LinesOfMaps() > mapped + 2;
}
