// What a decoder says of the samples it made: any sizes, margins, pitches, levels and patterns,
// over exactly the samples that its pitch and height promise. What is accepted becomes a frame and
// a DNG.
#include <fuzzer/FuzzedDataProvider.h>
#include <libraw/libraw.h>

#include <cstdlib>

#include "frames/message.h"
#include "pictures/dng.h"
#include "pictures/mosaic.h"

namespace {

using namespace tarn::pictures;

constexpr size_t kMostBytes = 1 << 16;

// Mostly small, now and then any.
template <class T>
T Any(FuzzedDataProvider& data) {
    return data.ConsumeIntegralInRange(0, 7) > 0
               ? static_cast<T>(data.ConsumeIntegralInRange<unsigned>(0, 64))
               : data.ConsumeIntegral<T>();
}

void Describe(FuzzedDataProvider& data, libraw_data_t* said) {
    libraw_image_sizes_t& sizes = said->sizes;
    for (ushort* side : {&sizes.raw_width, &sizes.raw_height, &sizes.width, &sizes.height,
                         &sizes.left_margin, &sizes.top_margin})
        *side = Any<ushort>(data);
    sizes.raw_pitch = data.ConsumeBool() ? 2u * sizes.raw_width : Any<unsigned>(data);
    said->idata.filters = data.ConsumeBool()
                              ? data.PickValueInArray({0x94949494u, 0x49494949u, 0x61616161u})
                              : data.ConsumeIntegral<unsigned>();
    said->idata.colors = data.ConsumeIntegralInRange(1, 4);
    data.ConsumeBytesAsString(data.ConsumeIntegralInRange(0, 4)).copy(said->idata.cdesc, 4);
    if (data.ConsumeBool()) std::copy_n("RGBG", 5, said->idata.cdesc);
    said->color.black = Any<unsigned>(data);
    said->color.maximum = Any<unsigned>(data);
    for (int i = 0; i < 6; ++i) said->color.cblack[i] = Any<unsigned>(data);
}

void BecomesAFrameAndADng(const Mosaic& mosaic) {
    if (mosaic.samples.size() != size_t(mosaic.width) * size_t(mosaic.height)) std::abort();
    const int bits = 16;
    const Picture picture{mosaic.width,   mosaic.height,   bits,         mosaic.samples,
                          mosaic.colours, mosaic.black[0], mosaic.white, {}};
    if (EncodeDng(picture).size() < mosaic.samples.size() * 2) std::abort();
    PackedFrame frame{tarn::Layout::VXRaw12, mosaic.width, mosaic.height, 0};
    frame.pitch = frame.RowBytes() + 1;
    const std::vector<uint16_t> codes = Unpack(frame, Pack(frame, mosaic.samples).data());
    for (size_t i = 0; i < codes.size(); ++i) {
        if (codes[i] != (mosaic.samples[i] & 4095)) std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    static const auto raw = std::make_unique<LibRaw>();
    FuzzedDataProvider data(bytes, size);
    Describe(data, &raw->imgdata);
    const size_t promised = size_t{raw->imgdata.sizes.raw_pitch} * raw->imgdata.sizes.raw_height;
    if (promised > kMostBytes) return 0;
    std::vector<ushort> samples(promised / 2);
    for (ushort& sample : samples) sample = data.ConsumeIntegral<ushort>();
    raw->imgdata.rawdata.raw_image = samples.data();
    try {
        BecomesAFrameAndADng(MosaicOf("raw", size_t{1} << 30, raw.get()));
    } catch (const UserError&) {
    }
    raw->imgdata.rawdata.raw_image = nullptr;
    return 0;
}
