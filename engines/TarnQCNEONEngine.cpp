#include "engines/TarnQCNEONEngine.h"

#include <algorithm>
#include <cstring>

#include "engines/bin_frame.h"
#include "engines/engine_parts.h"
#include "engines/kernels/levels.h"

using tarn::Binning;

namespace {

// A packed row of 4096 pixels, delivered whole.
constexpr int kLineBytes = 5120;
constexpr int kLinePixels = 4096;

// Bins row by row into a cleared line, without gain, and delivers each line as far as outStride
// leaves room.
int BinLines(TarnQCNEONEngine* engine, Binning operation, unsigned char* src, unsigned char* dst,
             const BufferInfo& info) {
    if (info.outHeight < 1) return 0;
    if (info.outWidth > kLinePixels) return -1;

    BufferInfo oneRow = info;
    oneRow.outHeight = 1;
    oneRow.outWidth = (std::max(info.outWidth, 0) + 3) / 4 * 4;  // whole groups of real pixels
    const ptrdiff_t cellPitch = ptrdiff_t{tarn::Recipe(operation).cell} * info.inStride;
    const int delivered = std::min(info.outStride, kLineBytes);

    const tarn::RowKernels& kernels = tarn::BestKernels();
    unsigned char line[kLineBytes];
    for (ptrdiff_t y = 0; y < info.outHeight; ++y) {
        std::memset(line, 0, sizeof line);
        tarn::BinFrame(operation, kernels, src + y * cellPitch, line, oneRow, 1.0f);
        engine->neon_Memcpy(line, dst + y * info.outStride, delivered);
    }
    return 0;
}

}  // namespace

TarnQCNEONEngine::TarnQCNEONEngine() = default;
TarnQCNEONEngine::~TarnQCNEONEngine() = default;

int TarnQCNEONEngine::CalcStride(int width) {
    return tarn::CalcPitch(tarn::kQCPitchUnit, width);
}

int TarnQCNEONEngine::CheckStride(BufferInfo* info) {
    return tarn::CheckStride(tarn::kQCPitchUnit, info);
}

void TarnQCNEONEngine::neon_Memcpy(void* src, void* dst, int size) {
    if (size > 0) std::memcpy(dst, src, static_cast<size_t>(size));
}

int TarnQCNEONEngine::Binning_10bit_Tetra(unsigned char* src, unsigned char* dst, BufferInfo info,
                                          SensorInfo /*sensor*/) {
    return BinLines(this, Binning::QCTetra10, src, dst, info);
}

int TarnQCNEONEngine::Binning_10bit_Hexadeca(unsigned char* src, unsigned char* dst,
                                             BufferInfo info, SensorInfo /*sensor*/) {
    return BinLines(this, Binning::QCHexadeca, src, dst, info);
}
