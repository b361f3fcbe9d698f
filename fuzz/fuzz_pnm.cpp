// PGM and PPM files: refused as the user's error, or decoded to what encoding gives back.
#include <bit>
#include <cstdlib>

#include "frames/message.h"
#include "frames/picture.h"
#include "frames/pnm.h"

using namespace tarn::frames;

static void EncodesToTheSame(const Pnm& pnm) {
    Picture picture{.width = pnm.width, .height = pnm.height};
    picture.bits = std::bit_width(static_cast<unsigned>(pnm.maximum));
    picture.codes = pnm.samples;
    const Bytes encoded = EncodePgm(picture);
    if (!IsPgm(encoded)) std::abort();
    if (picture.bits > 8 && DecodePnm("", encoded).samples != pnm.samples) std::abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    const Bytes file(bytes, bytes + size);
    if (!IsPgm(file) && !IsPpm(file)) return 0;
    try {
        const Pnm pnm = DecodePnm("", file);
        const size_t samples = size_t(pnm.width) * size_t(pnm.height) * (IsPpm(file) ? 3 : 1);
        if (pnm.samples.size() != samples || samples > size) std::abort();
        if (IsPgm(file)) EncodesToTheSame(pnm);
    } catch (const UserError&) {
    }
    return 0;
}
