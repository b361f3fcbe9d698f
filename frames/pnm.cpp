#include "frames/pnm.h"

#include <cctype>

#include "frames/message.h"

namespace tarn::frames {
namespace {

bool Begins(const Bytes& bytes, uint8_t digit) {
    return bytes.size() > 2 && bytes[0] == 'P' && bytes[1] == digit;
}

// Reads the next number of a header, past blanks and comments; -1 when there is none.
int64_t NextNumber(const Bytes& bytes, size_t* at) {
    while (*at < bytes.size() && (std::isspace(bytes[*at]) || bytes[*at] == '#')) {
        if (bytes[*at] != '#') {
            ++*at;
            continue;
        }
        while (*at < bytes.size() && bytes[*at] != '\n') ++*at;
    }
    int64_t number = -1;
    for (; *at < bytes.size() && std::isdigit(bytes[*at]) && number < 100'000'000; ++*at) {
        number = (number < 0 ? 0 : number) * 10 + (bytes[*at] - '0');
    }
    return number;
}

}  // namespace

bool IsPgm(const Bytes& bytes) {
    return Begins(bytes, '5');
}

bool IsPpm(const Bytes& bytes) {
    return Begins(bytes, '6');
}

Pnm DecodePnm(const std::string& name, const Bytes& bytes) {
    size_t at = 2;
    const int64_t width = NextNumber(bytes, &at);
    const int64_t height = NextNumber(bytes, &at);
    const int64_t maximum = NextNumber(bytes, &at);
    ++at;  // the one blank after the header
    if (width < 1 || height < 1 || maximum < 1 || maximum > 65535) {
        throw UserError(
            Text(name, ": is a ", IsPpm(bytes) ? "PPM" : "PGM", " with a broken header"));
    }
    const int64_t samples = width * height * (IsPpm(bytes) ? 3 : 1);
    const int64_t needed = samples * (maximum > 255 ? 2 : 1);
    const int64_t held = static_cast<int64_t>(bytes.size()) - static_cast<int64_t>(at);
    if (held < needed) {
        throw UserError(Text(name, " holds ", Grouped(held < 0 ? 0 : held), " bytes of samples; ",
                             width, "x", height, " needs ", Grouped(needed)));
    }
    Pnm pnm{static_cast<int>(width), static_cast<int>(height), static_cast<int>(maximum)};
    pnm.samples.resize(static_cast<size_t>(samples));
    for (uint16_t& sample : pnm.samples) {
        sample = bytes[at++];
        if (maximum > 255) sample = static_cast<uint16_t>(sample << 8 | bytes[at++]);
    }
    return pnm;
}

}  // namespace tarn::frames
