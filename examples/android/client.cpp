// The smallest client on a device: one VX 10-bit frame of four pixels by two becomes two pixels.
#include <TarnSolution.h>
#include <stdio.h>

int main() {
    unsigned char src[10] = {0x64, 0x94, 0x61, 0xC6, 0x19, 0x64, 0x94, 0x61, 0xC6, 0x19};
    unsigned char dst[5] = {};
    TarnBinningAbstract* solution = TarnSolution_initialize();
    if (!solution || solution->Init(1) != 0) return 1;
    solution->Process(src, dst, {4, 5, 2, 2, 5, 1});
    TarnSolution_destroy(solution);
    printf("%d %d\n", dst[0] | (dst[1] & 3) << 8, dst[1] >> 2 | (dst[2] & 15) << 6);
    return 0;
}
