// What LibRaw takes a packed frame for, as 16-bit little-endian codes on standard output.
//   libraw_unpack LAYOUT WIDTH HEIGHT PITCH FILE
#include <cstdio>
#include <cstdlib>

#include "frames/formats.h"
#include "frames/geometry.h"
#include "frames/message.h"
#include "pictures/output.h"
#include "pictures/witness.h"

int main(int argc, char** argv) {
    using namespace tarn::pictures;
    if (argc != 6) {
        std::fprintf(stderr, "usage: libraw_unpack LAYOUT WIDTH HEIGHT PITCH FILE\n");
        return 2;
    }
    try {
        const PackedFrame frame{FindFormat("LAYOUT", argv[1]).layout, std::atoi(argv[2]),
                                std::atoi(argv[3]), std::atoi(argv[4])};
        const Bytes packed = ReadFile(argv[5], frame.Bytes());
        CheckFileSize(argv[5], static_cast<int64_t>(packed.size()), frame);
        Bytes codes;
        for (const uint16_t code : LibRawCodes(frame, packed.data())) {
            codes.push_back(static_cast<uint8_t>(code));
            codes.push_back(static_cast<uint8_t>(code >> 8));
        }
        WriteFile("-", codes);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "libraw_unpack: %s\n", error.what());
        return 1;
    }
    return 0;
}
