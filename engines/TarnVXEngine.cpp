#include "engines/TarnVXEngine.h"

#include "engines/bin_frame.h"
#include "engines/engine_parts.h"
#include "engines/ev_frame.h"
#include "engines/kernels/levels.h"
#include "platform/log.h"

using tarn::BestKernels;
using tarn::Binning;
using tarn::Layout;

namespace {

// The one output format code that asks for 12 bits; the other codes that count as 12-bit elsewhere
// (11..19) do not.
bool TwelveBitOutput(int outFormat) {
    return outFormat == 10;
}

void LogEntry(const char* operation) {
    if (tarn::VerboseCheck()) {
        __android_log_print(ANDROID_LOG_DEBUG, tarn::kLogTag, "%s: VX %s E", operation, operation);
    }
}

}  // namespace

TarnVXEngine::TarnVXEngine() = default;
TarnVXEngine::~TarnVXEngine() = default;

int TarnVXEngine::CalcStride(int width) {
    return tarn::CalcPitch(tarn::kVXPitchUnit, width);
}

int TarnVXEngine::CheckStride(BufferInfo* info) {
    return tarn::CheckStride(tarn::kVXPitchUnit, info);
}

int TarnVXEngine::UnpackToPack_10bit(unsigned short* src, unsigned char* dst, int count,
                                     int bitDepth) {
    return tarn::PackValues(Layout::VXRaw10, src, dst, count, bitDepth);
}

int TarnVXEngine::UnpackToPack_12bit(unsigned short* src, unsigned char* dst, int count,
                                     int bitDepth) {
    return tarn::PackValues(Layout::VXRaw12, src, dst, count, bitDepth);
}

int TarnVXEngine::EVComp(unsigned short* buffer, int count, int bitDepth, float gain) {
    return tarn::CompensateValues(buffer, count, bitDepth, gain);
}

// The frame's geometry is the input half of info, for both buffers.
int TarnVXEngine::EVComp_10bit(unsigned char* src, unsigned char* dst, BufferInfo info,
                               SensorInfo sensor, int /*outFormat*/) {
    tarn::EvFrame(Layout::VXRaw10, BestKernels(), src, dst, info.inHeight, info.inStride,
                  sensor.brightnessRatio);
    return 0;
}

int TarnVXEngine::EVComp_12bit(unsigned char* src, unsigned char* dst, BufferInfo info,
                               SensorInfo sensor, int /*outFormat*/) {
    tarn::EvFrame(Layout::VXRaw12, BestKernels(), src, dst, info.inHeight, info.inStride,
                  sensor.brightnessRatio);
    return 0;
}

int TarnVXEngine::Binning_10bit_Tetra(unsigned char* src, unsigned char* dst, BufferInfo info,
                                      SensorInfo sensor, int outFormat) {
    LogEntry("Binning_10bit_Tetra");
    tarn::BinFrame(TwelveBitOutput(outFormat) ? Binning::VXTetra10To12 : Binning::VXTetra10,
                   BestKernels(), src, dst, info, sensor.brightnessRatio);
    return 0;
}

int TarnVXEngine::Binning_12bit_Tetra(unsigned char* src, unsigned char* dst, BufferInfo info,
                                      SensorInfo sensor, int outFormat) {
    LogEntry("Binning_12bit_Tetra");
    tarn::BinFrame(TwelveBitOutput(outFormat) ? Binning::VXTetra12 : Binning::VXTetra12To10,
                   BestKernels(), src, dst, info, sensor.brightnessRatio);
    return 0;
}

int TarnVXEngine::Binning_10bit_Nona(unsigned char* src, unsigned char* dst, BufferInfo info,
                                     SensorInfo sensor, int /*outFormat*/) {
    tarn::BinFrame(Binning::VXNona, BestKernels(), src, dst, info, sensor.brightnessRatio);
    return 0;
}

int TarnVXEngine::Binning_10bit_Hexadeca(unsigned char* src, unsigned char* dst, BufferInfo info,
                                         SensorInfo sensor, int outFormat) {
    tarn::BinFrame(TwelveBitOutput(outFormat) ? Binning::VXHexadecaTo12 : Binning::VXHexadeca,
                   BestKernels(), src, dst, info, sensor.brightnessRatio);
    return 0;
}
