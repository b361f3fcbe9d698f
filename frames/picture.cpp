#include "frames/picture.h"

#include <algorithm>
#include <vector>

#include "frames/message.h"

namespace tarn::frames {
namespace {

template <class L>
void UnpackRow(const uint8_t* bytes, int width, uint16_t* codes) {
    uint16_t group[L::kGroupPixels];
    for (int x = 0; x < width; x += L::kGroupPixels, bytes += L::kGroupBytes) {
        L::Unpack(bytes, group);
        for (int k = 0; k < L::kGroupPixels && x + k < width; ++k) codes[x + k] = group[k];
    }
}

template <class L>
void PackRow(const uint16_t* codes, int width, uint8_t* bytes) {
    for (int x = 0; x < width; x += L::kGroupPixels, bytes += L::kGroupBytes) {
        uint16_t group[L::kGroupPixels] = {};
        for (int k = 0; k < L::kGroupPixels && x + k < width; ++k) group[k] = codes[x + k];
        L::Pack(group, bytes);
    }
}

// In the order of Layout.
constexpr decltype(&UnpackRow<QCRaw10>) kUnpackRow[] = {UnpackRow<QCRaw10>, UnpackRow<QCRaw12>,
                                                        UnpackRow<VXRaw10>, UnpackRow<VXRaw12>};
constexpr decltype(&PackRow<QCRaw10>) kPackRow[] = {PackRow<QCRaw10>, PackRow<QCRaw12>,
                                                    PackRow<VXRaw10>, PackRow<VXRaw12>};
static_assert(std::size(kUnpackRow) == kLayoutCount && std::size(kPackRow) == kLayoutCount);

}  // namespace

std::vector<uint16_t> Unpack(const PackedFrame& frame, const uint8_t* bytes) {
    const size_t width = static_cast<size_t>(frame.width);
    std::vector<uint16_t> codes(width * static_cast<size_t>(frame.height));
    for (int y = 0; y < frame.height; ++y) {
        kUnpackRow[static_cast<int>(frame.layout)](bytes + y * frame.pitch, frame.width,
                                                   codes.data() + width * size_t(y));
    }
    return codes;
}

Bytes Pack(const PackedFrame& frame, const std::vector<uint16_t>& codes) {
    Bytes bytes(static_cast<size_t>(frame.Bytes()));
    for (int y = 0; y < frame.height; ++y) {
        kPackRow[static_cast<int>(frame.layout)](codes.data() + size_t(frame.width) * size_t(y),
                                                 frame.width, bytes.data() + y * frame.pitch);
    }
    return bytes;
}

void UseOurLevels(Picture* picture) {
    picture->black = 1 << (picture->bits - 4);
    picture->white = (1 << picture->bits) - 1;
}

Balance BalanceOf(const Picture& picture) {
    if (picture.balance[0] > 0) return picture.balance;
    double sum[3] = {}, count[3] = {};
    for (size_t i = 0; i < picture.codes.size(); ++i) {
        const size_t width = static_cast<size_t>(picture.width);
        const char letter = picture.colours[i / width % 2 * 2 + i % width % 2];
        const size_t colour = letter == 'R' ? 0 : letter == 'G' ? 1 : 2;
        if (picture.codes[i] >= picture.white) continue;  // clipped: its colour is lost
        sum[colour] += picture.codes[i] - picture.black;
        count[colour] += 1;
    }
    Balance balance{1, 1, 1};
    for (size_t c = 0; c < 3; ++c) {
        const double factor = sum[1] / std::max(count[1], 1.0) * count[c] / sum[c];
        if (sum[1] > 0 && sum[c] > 0) balance[c] = std::clamp(factor, 0.1, 10.0);
    }
    return balance;
}

Bytes EncodePgm(const Picture& picture) {
    const std::string header =
        Text("P5\n", picture.width, " ", picture.height, "\n", (1 << picture.bits) - 1, "\n");
    Bytes bytes(header.begin(), header.end());
    bytes.reserve(header.size() + picture.codes.size() * 2);
    for (const uint16_t code : picture.codes) {
        bytes.push_back(static_cast<uint8_t>(code >> 8));
        bytes.push_back(static_cast<uint8_t>(code));
    }
    return bytes;
}

}  // namespace tarn::frames
