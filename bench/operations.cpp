#include "bench/operations.h"

#include <algorithm>

#include "engines/bin_frame.h"
#include "engines/ev_frame.h"

namespace tarn::bench {
namespace {

constexpr float kGain = 1.37f;

// In the order of Binning and of Layout.
constexpr const char* kBinningNames[kBinningCount] = {
    "QCTetra10", "QCTetra12", "VXTetra10",  "VXTetra10To12", "VXTetra12",     "VXTetra12To10",
    "QCNona",    "VXNona",    "QCHexadeca", "VXHexadeca",    "VXHexadecaTo12"};
constexpr const char* kEvNames[kLayoutCount] = {"QCEVComp10", "QCEVComp12", "VXEVComp10",
                                                "VXEVComp12"};
constexpr const char* kPackNames[kLayoutCount] = {"QCPack10", "QCPack12", "VXPack10", "VXPack12"};

FrameOperation BinOperation(Binning binning, double inPixels, int outWidth, float gain) {
    const BinningRecipe& recipe = Recipe(binning);
    const int inWidth = recipe.cell * outWidth;
    const int outHeight = std::max(1, static_cast<int>(inPixels / inWidth / recipe.cell));
    const int inHeight = recipe.cell * outHeight;
    const int inPitch = BytesRead(recipe, outWidth);
    const int outPitch = BytesWritten(recipe, outWidth);
    const BufferInfo info{inWidth, inPitch, inHeight, outWidth, outPitch, outHeight};
    return {std::string(kBinningNames[static_cast<int>(binning)]) + (gain > 1 ? "/gain" : "/plain"),
            static_cast<size_t>(inPitch) * inHeight,
            static_cast<size_t>(outPitch) * outHeight,
            double{1} * inWidth * inHeight,
            double{1} * outWidth * outHeight,
            [=](const RowKernels& kernels, const uint8_t* src, uint8_t* dst) {
                BinFrame(binning, kernels, src, dst, info, gain);
            }};
}

FrameOperation EvOperation(Layout layout, double inPixels, int width) {
    const int height = std::max(1, static_cast<int>(inPixels / width));
    const int pitch = CeilDiv(width, Shape(layout).pixels) * Shape(layout).bytes;
    const size_t bytes = static_cast<size_t>(pitch) * height;
    const double pixels = double{1} * width * height;
    return {std::string(kEvNames[static_cast<int>(layout)]) + "/gain",
            bytes,
            bytes,
            pixels,
            pixels,
            [=](const RowKernels& kernels, const uint8_t* src, uint8_t* dst) {
                EvFrame(layout, kernels, src, dst, height, pitch, kGain);
            }};
}

// Values of 16 bits, a row at a time, to whole groups.
FrameOperation PackOperation(Layout layout, double inPixels, int width) {
    const int height = std::max(1, static_cast<int>(inPixels / width));
    const ptrdiff_t groups = CeilDiv(width, Shape(layout).pixels);
    const ptrdiff_t values = groups * Shape(layout).pixels, bytes = groups * Shape(layout).bytes;
    const double pixels = double{1} * width * height;
    return {std::string(kPackNames[static_cast<int>(layout)]) + "/plain",
            static_cast<size_t>(2 * values * height),
            static_cast<size_t>(bytes * height),
            pixels,
            pixels,
            [=](const RowKernels& kernels, const uint8_t* src, uint8_t* dst) {
                const auto* row = reinterpret_cast<const uint16_t*>(src);
                for (int y = 0; y < height; ++y, row += values, dst += bytes) {
                    kernels.Pack(layout)(row, dst, groups, 16 - Shape(layout).bits);
                }
            }};
}

// Values of 14 bits, a row at a time, in place: what is read is written.
FrameOperation EvValuesOperation(double inPixels, int width) {
    const int height = std::max(1, static_cast<int>(inPixels / width));
    const double pixels = double{1} * width * height;
    const size_t bytes = size_t{2} * width * height;
    return {"EVCompValues/gain",
            bytes,
            bytes,
            pixels,
            pixels,
            [=](const RowKernels& kernels, const uint8_t*, uint8_t* dst) {
                auto* row = reinterpret_cast<uint16_t*>(dst);
                for (int y = 0; y < height; ++y, row += width) {
                    kernels.EvValues()(row, width, EvRuleOfDepth(14, kGain));
                }
            },
            true};
}

}  // namespace

std::vector<FrameOperation> FrameOperations(double inPixels, int outWidth) {
    std::vector<FrameOperation> all;
    for (int i = 0; i < kBinningCount; ++i) {
        for (const float gain : {1.0f, kGain}) {
            all.push_back(BinOperation(Binning{i}, inPixels, outWidth, gain));
        }
    }
    for (int i = 0; i < kLayoutCount; ++i) {
        all.push_back(EvOperation(Layout{i}, inPixels, outWidth));
    }
    all.push_back(EvValuesOperation(inPixels, outWidth));
    for (int i = 0; i < kLayoutCount; ++i) {
        all.push_back(PackOperation(Layout{i}, inPixels, outWidth));
    }
    return all;
}

}  // namespace tarn::bench
