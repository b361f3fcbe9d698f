// The life cycle in any order, with any settings and property texts, and records that are either
// hostile where nothing may be touched, or accepted by the checked companion header. Dumps find no
// folder to go to.
#include <android/log.h>
#include <fuzzer/FuzzedDataProvider.h>
#include <sys/system_properties.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "TarnChecked.h"
#include "TarnSolution.h"

namespace {
std::string propertyText;
}

extern "C" int __android_log_print(int, const char* tag, const char* format, ...) {
    char text[256];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    if (std::strcmp(tag, "TarnSolution") != 0 || length < 1) std::abort();
    return length;
}

extern "C" int __system_property_get(const char*, char* value) {
    const size_t length = propertyText.copy(value, PROP_VALUE_MAX - 1);
    value[length] = '\0';
    return static_cast<int>(length);
}

namespace {

constexpr long long kMostBytes = 1 << 16;

// What a solution was told.
struct Settings {
    bool released = false;
    int option = 0;
    int inFormat = 1;
    int outFormat = 0;
};

void ExpectAnswer(const Settings& settings, int answer) {
    if (answer != (settings.released ? -1 : 0)) std::abort();
}

int AnyInt(FuzzedDataProvider& data) {
    return data.ConsumeBool() ? data.ConsumeIntegralInRange(-2, 300) : data.ConsumeIntegral<int>();
}

void ProcessFrame(FuzzedDataProvider& data, TarnBinningAbstract* solution,
                  const Settings& settings) {
    BufferInfo info = {AnyInt(data), AnyInt(data), AnyInt(data),
                       AnyInt(data), AnyInt(data), AnyInt(data)};
    const TarnCall call = TarnCheckProcess(settings.option, settings.inFormat, settings.outFormat,
                                           info, kMostBytes, kMostBytes);
    const bool accepted = call.problem == TarnProblem::None;
    if (!accepted) {  // nothing may be touched: whatever else the record says
        info.outHeight = data.ConsumeIntegralInRange(-2, 0);
        info.inHeight = data.ConsumeIntegralInRange(-2, 0);
    }
    std::vector<uint8_t> src(accepted ? static_cast<size_t>(call.srcBytes) : 0);
    std::vector<uint8_t> dst(accepted ? static_cast<size_t>(call.dstBytes) : 0);
    ExpectAnswer(settings, solution->Process(src.data(), dst.data(), info));
}

void SetParam(FuzzedDataProvider& data, TarnBinningAbstract* solution, Settings& settings) {
    const int property = data.ConsumeBool() ? data.ConsumeIntegralInRange(0, 3) * 10 : AnyInt(data);
    const float value = data.ConsumeBool() ? static_cast<float>(data.ConsumeIntegralInRange(-2, 25))
                                           : data.ConsumeFloatingPoint<float>();
    ExpectAnswer(settings, solution->SetParam(static_cast<CameraProperty>(property), value));
    if (property != PROP_INPUT_FORMAT && property != PROP_OUTPUT_FORMAT) return;
    const bool fits = value > -2e9f && value < 2e9f;
    (property == PROP_INPUT_FORMAT ? settings.inFormat : settings.outFormat) =
        fits        ? static_cast<int>(value)
        : value > 0 ? INT32_MAX
        : value < 0 ? INT32_MIN
                    : 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    FuzzedDataProvider data(bytes, size);
    TarnBinningAbstract* solution = TarnSolution_initialize();
    Settings settings;
    while (data.remaining_bytes() > 0) {
        switch (data.ConsumeIntegralInRange(0, 5)) {
            case 0: propertyText = data.ConsumeRandomLengthString(100).c_str(); break;
            case 1: {
                const int option = data.ConsumeIntegralInRange(-1, 2);
                if (solution->Init(option) == 0 && settings.released) std::abort();
                if (!settings.released) settings.option = option;
                break;
            }
            case 2:
            case 3: SetParam(data, solution, settings); break;
            case 4: ProcessFrame(data, solution, settings); break;
            case 5:
                if (data.ConsumeIntegralInRange(0, 7) > 0) break;
                solution->Release();
                settings.released = true;
                break;
        }
    }
    TarnSolution_destroy(solution);
    return 0;
}
