// A frame operation on any geometry, in buffers of exactly the bytes it may touch, against the
// reference.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>
#include <cstring>
#include <memory>

#include "tests/support/operations.h"

namespace {

using tarn_reference::Extent;

constexpr int64_t kMostBytes = 1 << 14;

// From the lowest byte of an extent to its highest, and where row 0 lies in between.
struct Span {
    int64_t bytes;
    int64_t rowZero;
};

Span SpanOf(const Extent& extent) {
    if (extent.rows < 1 || extent.bytes < 1) return {0, 0};
    const int64_t reach = (extent.rows - 1) * extent.pitch;
    return reach < 0 ? Span{extent.bytes - reach, -reach} : Span{extent.bytes + reach, 0};
}

bool Fits(const Extent& extent) {
    return extent.rows <= kMostBytes && extent.bytes <= kMostBytes &&
           extent.rows * std::abs(extent.pitch) <= kMostBytes &&
           extent.rows * extent.bytes <= kMostBytes;
}

// Mostly small numbers, now and then any.
int Number(FuzzedDataProvider& data) {
    return data.ConsumeIntegralInRange(0, 15) > 0 ? data.ConsumeIntegralInRange(-3, 330)
                                                  : data.ConsumeIntegral<int>();
}

float Gain(FuzzedDataProvider& data) {
    if (data.ConsumeBool()) {
        const auto gains = tarn_test::Gains();
        return gains[data.ConsumeIntegralInRange<size_t>(0, gains.size() - 1)];
    }
    const auto bits = data.ConsumeIntegral<uint32_t>();
    float gain;
    std::memcpy(&gain, &bits, sizeof gain);
    return gain;
}

std::unique_ptr<uint8_t[]> Exactly(int64_t bytes) {
    return std::unique_ptr<uint8_t[]>(new uint8_t[static_cast<size_t>(bytes)]);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    static const auto operations = tarn_test::SelectedOperations();
    FuzzedDataProvider data(bytes, size);
    const auto& operation =
        operations[data.ConsumeIntegralInRange<size_t>(0, operations.size() - 1)];
    const tarn_reference::Geometry geometry = {Number(data), Number(data), Number(data),
                                               Number(data), Number(data), Number(data)};
    const float gain = Gain(data);
    const auto footprint = tarn_reference::FootprintOf(*operation.rule, geometry);
    if (!Fits(footprint.read) || !Fits(footprint.written)) return 0;

    const Span in = SpanOf(footprint.read);
    const Span out = SpanOf(footprint.written);
    const auto source = Exactly(in.bytes);
    const auto result = Exactly(out.bytes);
    const auto expected = Exactly(out.bytes);
    std::memset(source.get(), data.ConsumeIntegral<uint8_t>(), static_cast<size_t>(in.bytes));
    data.ConsumeData(source.get(), static_cast<size_t>(in.bytes));
    std::memset(result.get(), 0xA5, static_cast<size_t>(out.bytes));
    std::memset(expected.get(), 0xA5, static_cast<size_t>(out.bytes));

    const BufferInfo info = {geometry.inWidth,  geometry.inStride,  geometry.inHeight,
                             geometry.outWidth, geometry.outStride, geometry.outHeight};
    const int answer =
        operation.engine(source.get() + in.rowZero, result.get() + out.rowZero, info, {1.0f, gain});
    const int right = tarn_reference::Run(*operation.rule, source.get() + in.rowZero,
                                          expected.get() + out.rowZero, geometry, gain);
    if (answer != right) std::abort();
    if (std::memcmp(result.get(), expected.get(), static_cast<size_t>(out.bytes)) != 0)
        std::abort();
    return 0;
}
