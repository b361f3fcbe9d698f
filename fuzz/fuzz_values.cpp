// The packers and EVComp on any values, counts and depths, in buffers of exactly the groups they
// may touch, against the reference where the depth is a valid one.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "engines/TarnQCEngine.h"
#include "engines/TarnVXEngine.h"
#include "reference/operation.h"
#include "tests/support/operations.h"

namespace {

using tarn_reference::Packing;

std::vector<uint16_t> Values(FuzzedDataProvider& data, size_t count, unsigned below) {
    std::vector<uint16_t> values(count);
    for (uint16_t& value : values)
        value = static_cast<uint16_t>(data.ConsumeIntegral<uint16_t>() % below);
    return values;
}

void FuzzPacker(FuzzedDataProvider& data, int count, int depth) {
    const auto packing = static_cast<Packing>(data.ConsumeIntegralInRange(0, 3));
    const int bits = static_cast<int>(tarn_reference::BitsPerPixel(packing));
    const bool valid = depth >= bits && depth <= 16;
    const auto pixels = static_cast<size_t>(tarn_reference::GroupPixels(packing));
    const size_t groups = count < 1 ? 0 : (static_cast<size_t>(count) + pixels - 1) / pixels;
    std::vector<uint16_t> src = Values(data, groups * pixels, valid ? 1u << depth : 65536u);
    std::vector<uint8_t> dst(groups * static_cast<size_t>(tarn_reference::GroupBytes(packing)));
    if (tarn_test::PackByEngine(packing, src.data(), dst.data(), count, depth) != 0) std::abort();
    for (size_t x = 0; valid && x < src.size(); ++x) {
        if (tarn_reference::ReadPixel(packing, dst.data(), x) != src[x] >> (depth - bits))
            std::abort();
    }
}

void FuzzValues(FuzzedDataProvider& data, int count, int depth) {
    const auto bits = data.ConsumeIntegral<uint32_t>();
    float gain;
    std::memcpy(&gain, &bits, sizeof gain);
    const std::vector<uint16_t> before =
        Values(data, count < 1 ? 0 : static_cast<size_t>(count), 65536u);
    std::vector<uint16_t> after = before;
    const int answer = data.ConsumeBool() ? TarnQCEngine().EVComp(after.data(), count, depth, gain)
                                          : TarnVXEngine().EVComp(after.data(), count, depth, gain);
    if (answer != 0) std::abort();
    for (size_t i = 0; depth >= 10 && depth <= 16 && i < after.size(); ++i) {
        const unsigned right =
            tarn_reference::Compensate(before[i], 1 << (depth - 4), (1 << depth) - 1, gain);
        if (after[i] != right) std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    FuzzedDataProvider data(bytes, size);
    const int count = data.ConsumeIntegralInRange(-2, 200);
    const int depth = data.ConsumeIntegralInRange(0, 15) > 0 ? data.ConsumeIntegralInRange(8, 18)
                                                             : data.ConsumeIntegral<int>();
    (data.ConsumeBool() ? FuzzPacker : FuzzValues)(data, count, depth);
    return 0;
}
