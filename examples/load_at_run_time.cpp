// The library loaded while the program runs, through its two C entry points: nothing is linked.
//
//     load_at_run_time [path of the library]
#include <TarnSolution.h>
#include <dlfcn.h>

#include <cstdio>

int main(int argc, char** argv) {
    void* library = dlopen(argc > 1 ? argv[1] : "libTarn.camera.mirova.so", RTLD_NOW);
    if (!library) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    auto initialize = reinterpret_cast<decltype(&TarnSolution_initialize)>(
        dlsym(library, "TarnSolution_initialize"));
    auto destroy =
        reinterpret_cast<decltype(&TarnSolution_destroy)>(dlsym(library, "TarnSolution_destroy"));
    if (!initialize || !destroy) return 1;

    TarnBinningAbstract* solution = initialize();
    if (!solution || solution->Init(1) != 0) return 1;

    // Two rows of four pixels of 100, 101, 102, 103 in VX 10-bit packing become two pixels.
    unsigned char src[10] = {0x64, 0x94, 0x61, 0xC6, 0x19, 0x64, 0x94, 0x61, 0xC6, 0x19};
    unsigned char dst[5] = {};
    solution->Process(src, dst, {4, 5, 2, 2, 5, 1});
    destroy(solution);
    dlclose(library);

    const int first = dst[0] | (dst[1] & 3) << 8;
    const int second = dst[1] >> 2 | (dst[2] & 15) << 6;
    std::printf("%d %d\n", first, second);
    return first == 100 && second == 102 ? 0 : 1;
}
