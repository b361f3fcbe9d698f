// Exposure compensation at full resolution, in place: equal widths, one buffer.
#include <TarnSolution.h>

#include <cstdio>
#include <cstring>
#include <memory>

int main() {
    // The pixels 64, 65, 66, 1023 in VX 10-bit packing.
    unsigned char frame[5] = {0x40, 0x04, 0x21, 0xC4, 0xFF};
    const unsigned char doubled[5] = {0x40, 0x08, 0x41, 0xC4, 0xFF};  // 64, 66, 68, 1023

    TarnSolution solution;
    if (solution.Init(1) != 0) return 1;
    solution.SetParam(PROP_BRIGHTNESS_RATIO, 2.0f);
    solution.Process(frame, frame, {4, 5, 1, 4, 5, 1});

    std::printf("%02x %02x %02x %02x %02x\n", frame[0], frame[1], frame[2], frame[3], frame[4]);
    return std::memcmp(frame, doubled, sizeof frame) == 0 ? 0 : 1;
}
