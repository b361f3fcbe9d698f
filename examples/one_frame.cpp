// One frame through the C entry points: a QC 10-bit Tetra frame, brightened by 1.5.
#include <TarnSolution.h>

#include <cstdio>
#include <vector>

int main() {
    // 8000x6000 pixels to 4000x3000; pitches are ceil(width / 64) x 80 bytes.
    const BufferInfo info = {8000, 10000, 6000, 4000, 5040, 3000};
    std::vector<unsigned char> src(static_cast<size_t>(info.inStride) * info.inHeight, 0x20);
    std::vector<unsigned char> dst(static_cast<size_t>(info.outStride) * info.outHeight);

    TarnBinningAbstract* solution = TarnSolution_initialize();
    if (!solution || solution->Init(0) != 0) return 1;
    solution->SetParam(PROP_BRIGHTNESS_RATIO, 1.5f);
    solution->Process(src.data(), dst.data(), info);
    TarnSolution_destroy(solution);

    std::printf("first bytes: %02x %02x %02x %02x %02x\n", dst[0], dst[1], dst[2], dst[3], dst[4]);
    // Cells of 128 become 64 + 1.5 x (128 - 64) = 160, whose upper eight bits are 0x28.
    return dst[0] == 0x28 ? 0 : 1;
}
