#include "engines/TarnQCEngine.h"

#include "engines/bin_frame.h"
#include "engines/engine_parts.h"
#include "engines/ev_frame.h"
#include "engines/kernels/levels.h"
#include "platform/log.h"

using tarn::BestKernels;
using tarn::Binning;
using tarn::Layout;

TarnQCEngine::TarnQCEngine() = default;
TarnQCEngine::~TarnQCEngine() = default;

int TarnQCEngine::CalcStride(int width) {
    return tarn::CalcPitch(tarn::kQCPitchUnit, width);
}

int TarnQCEngine::CheckStride(BufferInfo* info) {
    return tarn::CheckStride(tarn::kQCPitchUnit, info);
}

int TarnQCEngine::UnpackToPack_10bit(unsigned short* src, unsigned char* dst, int count,
                                     int bitDepth) {
    return tarn::PackValues(Layout::QCRaw10, src, dst, count, bitDepth);
}

int TarnQCEngine::UnpackToPack_12bit(unsigned short* src, unsigned char* dst, int count,
                                     int bitDepth) {
    return tarn::PackValues(Layout::QCRaw12, src, dst, count, bitDepth);
}

int TarnQCEngine::EVComp(unsigned short* buffer, int count, int bitDepth, float gain) {
    return tarn::CompensateValues(buffer, count, bitDepth, gain);
}

// The frame's geometry is the output half of info, for both buffers.
int TarnQCEngine::EVComp_10bit(unsigned char* src, unsigned char* dst, BufferInfo info,
                               SensorInfo sensor) {
    tarn::EvFrame(Layout::QCRaw10, BestKernels(), src, dst, info.outHeight, info.outStride,
                  sensor.brightnessRatio);
    return 0;
}

int TarnQCEngine::EVComp_12bit(unsigned char* src, unsigned char* dst, BufferInfo info,
                               SensorInfo sensor) {
    tarn::EvFrame(Layout::QCRaw12, BestKernels(), src, dst, info.outHeight, info.outStride,
                  sensor.brightnessRatio);
    return 0;
}

int TarnQCEngine::Binning_10bit_Tetra(unsigned char* src, unsigned char* dst, BufferInfo info,
                                      SensorInfo sensor) {
    CheckStride(&info);
    tarn::BinFrame(Binning::QCTetra10, BestKernels(), src, dst, info, sensor.brightnessRatio);
    return 0;
}

int TarnQCEngine::Binning_12bit_Tetra(unsigned char* src, unsigned char* dst, BufferInfo info,
                                      SensorInfo sensor) {
    if (tarn::VerboseCheck()) {
        __android_log_print(ANDROID_LOG_DEBUG, tarn::kLogTag, "%s: %s S", "Binning_12bit_Tetra",
                            "Binning_12bit_Tetra");
    }
    const bool inFilled = tarn::PitchMissing(info.inStride, info.inWidth, info.inHeight);
    const bool outFilled = tarn::PitchMissing(info.outStride, info.outWidth, info.outHeight);
    CheckStride(&info);
    if (info.outHeight < 1 || info.outWidth < 1) return 0;

    // The pitch rule knows 10-bit rows only: rows of 12 bits at a pitch it filled in may overlap,
    // and the last one leave the buffer.
    const long long inBytes = 3LL * info.outWidth;
    const long long outBytes = 3LL * ((info.outWidth + 1LL) / 2);
    if ((inFilled && info.inStride < inBytes) || (outFilled && info.outStride < outBytes)) {
        return -1;
    }
    tarn::BinFrame(Binning::QCTetra12, BestKernels(), src, dst, info, sensor.brightnessRatio);
    return 0;
}

int TarnQCEngine::Binning_10bit_Nona(unsigned char* src, unsigned char* dst, BufferInfo info,
                                     SensorInfo sensor) {
    tarn::BinFrame(Binning::QCNona, BestKernels(), src, dst, info, sensor.brightnessRatio);
    return 0;
}

int TarnQCEngine::Binning_10bit_Hexadeca(unsigned char* src, unsigned char* dst, BufferInfo info,
                                         SensorInfo sensor) {
    CheckStride(&info);
    tarn::BinFrame(Binning::QCHexadeca, BestKernels(), src, dst, info, sensor.brightnessRatio);
    return 0;
}
