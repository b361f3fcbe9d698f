#include "solution/solution_impl.h"

#include <limits>
#include <new>

#include "platform/errno_kept.h"
#include "platform/log.h"
#include "solution/dispatch.h"

namespace {

constexpr char kVersion[] = "1.0.12";

// Toward zero; beyond the range the nearest limit, NaN gives 0.
int32_t ToFormatCode(float value) {
    constexpr float kLimit = 2147483648.0f;  // 2^31, the first float past the range
    if (value >= kLimit) return std::numeric_limits<int32_t>::max();
    if (value >= -kLimit) return static_cast<int32_t>(value);
    return value < -kLimit ? std::numeric_limits<int32_t>::min() : 0;
}

// Stores a new engine; false when there is no memory for it.
template <class Engine>
bool Create(std::unique_ptr<Engine>& engine) {
    const tarn::ErrnoKept errnoKept;
    engine.reset(new (std::nothrow) Engine);
    return engine != nullptr;
}

}  // namespace

int TarnSolution::impl::Init(int option) {
    solutionOption = option;
    __android_log_print(ANDROID_LOG_INFO, tarn::kLogTag, "initialize E (%s), opt = %d %d", kVersion,
                        option, debugLevel);
    if (initialized) {
        __android_log_print(ANDROID_LOG_ERROR, tarn::kLogTag,
                            "TarnSolution is already initialized!");
        return -1;
    }
    if (option != 0 && option != 1) {
        __android_log_print(ANDROID_LOG_ERROR, tarn::kLogTag,
                            "Please check to the solution option!");
        return -1;
    }
    if (!(option == 1 ? Create(vxEngine) : Create(qcEngine))) return -1;
    initialized = 1;
    return 0;
}

void TarnSolution::impl::Release() {
    initialized = 0;
    qcEngine.reset();
    vxEngine.reset();
    neonEngine.reset();
}

int TarnSolution::impl::SetParam(CameraProperty property, float value) {
    switch (property) {
        case PROP_INPUT_FORMAT: inFormat = ToFormatCode(value); break;
        case PROP_OUTPUT_FORMAT: outFormat = ToFormatCode(value); break;
        case PROP_BRIGHTNESS_RATIO: sensorInfo.brightnessRatio = value; break;
        case PROP_AUX_RATIO: sensorInfo.auxRatio = value; break;
    }
    return 0;
}

int TarnSolution::impl::Process(unsigned char* src, unsigned char* dst, BufferInfo info) {
    using tarn::kLogTag;
    using tarn::VerboseCheck;

    if (VerboseCheck()) {
        __android_log_print(ANDROID_LOG_DEBUG, kLogTag,
                            "%s: %s opt: %d, BR: %f, infmt: %d, outfmt: %d", "Process", "Process",
                            solutionOption, static_cast<double>(sensorInfo.brightnessRatio),
                            inFormat, outFormat);
    }
    if (VerboseCheck()) {
        __android_log_print(ANDROID_LOG_DEBUG, kLogTag, "%s: %s %d, %d, %d, %d, %d, %d", "Process",
                            "Process", info.inWidth, info.inStride, info.inHeight, info.outWidth,
                            info.outStride, info.outHeight);
    }
    const bool timed = debugLevel >= 1;
    const int64_t start = timed ? getCurrentTimeMilli() : 0;

    DumpImage("srcTetraInput", src, info.inStride, info.inHeight);
    tarn::RunOperation(
        tarn::ChooseOperation(solutionOption, info.inWidth, info.outWidth, inFormat, outFormat),
        src, dst, info, sensorInfo, outFormat);
    DumpImage("finalPackOutput", dst, info.outStride, info.outHeight);

    if (timed) {
        const long long elapsed = getCurrentTimeMilli() - start;
        if (VerboseCheck()) {
            __android_log_print(ANDROID_LOG_DEBUG, kLogTag, "%s: Processing Time is %lld",
                                "Process", elapsed);
        }
    }
    return 0;
}
