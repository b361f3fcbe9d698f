#include "tests/support/operations.h"

#include <bit>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <stdexcept>

#include "engines/TarnQCEngine.h"
#include "engines/TarnQCNEONEngine.h"
#include "engines/TarnVXEngine.h"
#include "engines/bin_frame.h"
#include "engines/ev_frame.h"

namespace tarn {
#ifdef TARN_EMULATED_AVX512
extern const RowKernels kEmulatedAvx512Kernels;
#endif
}  // namespace tarn

namespace tarn_test {
namespace {

using tarn::Binning;
using tarn::Layout;

template <auto Member, int... OutFormat>
int Engine(uint8_t* src, uint8_t* dst, const BufferInfo& info, const SensorInfo& sensor) {
    return [&]<class E, class... A>(int (E::*member)(A...)) {
        return (E().*member)(src, dst, info, sensor, OutFormat...);
    }(Member);
}

template <Binning Operation>
void Bin(const tarn::RowKernels& kernels, const uint8_t* src, uint8_t* dst, const BufferInfo& info,
         float gain) {
    tarn::BinFrame(Operation, kernels, src, dst, info, gain);
}

template <Layout L, bool Input>
void Ev(const tarn::RowKernels& kernels, const uint8_t* src, uint8_t* dst, const BufferInfo& info,
        float gain) {
    tarn::EvFrame(L, kernels, src, dst, Input ? info.inHeight : info.outHeight,
                  Input ? info.inStride : info.outStride, gain);
}

using QC = TarnQCEngine;
using VX = TarnVXEngine;
using NEON = TarnQCNEONEngine;

struct Calls {
    const char* name;
    decltype(TestedOperation::engine) engine;
    decltype(TestedOperation::frame) frame;
};
constexpr Calls kCalls[] = {
    {"QC_Tetra10", Engine<&QC::Binning_10bit_Tetra>, Bin<Binning::QCTetra10>},
    {"QC_Tetra12", Engine<&QC::Binning_12bit_Tetra>, Bin<Binning::QCTetra12>},
    {"QC_Nona10", Engine<&QC::Binning_10bit_Nona>, Bin<Binning::QCNona>},
    {"QC_Hexadeca10", Engine<&QC::Binning_10bit_Hexadeca>, Bin<Binning::QCHexadeca>},
    {"VX_Tetra10", Engine<&VX::Binning_10bit_Tetra, 11>, Bin<Binning::VXTetra10>},
    {"VX_Tetra10to12", Engine<&VX::Binning_10bit_Tetra, 10>, Bin<Binning::VXTetra10To12>},
    {"VX_Tetra12to10", Engine<&VX::Binning_12bit_Tetra, 19>, Bin<Binning::VXTetra12To10>},
    {"VX_Tetra12", Engine<&VX::Binning_12bit_Tetra, 10>, Bin<Binning::VXTetra12>},
    {"VX_Nona10", Engine<&VX::Binning_10bit_Nona, 10>, Bin<Binning::VXNona>},
    {"VX_Hexadeca10", Engine<&VX::Binning_10bit_Hexadeca, 12>, Bin<Binning::VXHexadeca>},
    {"VX_Hexadeca10to12", Engine<&VX::Binning_10bit_Hexadeca, 10>, Bin<Binning::VXHexadecaTo12>},
    {"QC_EV10", Engine<&QC::EVComp_10bit>, Ev<Layout::QCRaw10, false>},
    {"QC_EV12", Engine<&QC::EVComp_12bit>, Ev<Layout::QCRaw12, false>},
    {"VX_EV10", Engine<&VX::EVComp_10bit, 10>, Ev<Layout::VXRaw10, true>},
    {"VX_EV12", Engine<&VX::EVComp_12bit, 0>, Ev<Layout::VXRaw12, true>},
    {"NEON_Tetra10", Engine<&NEON::Binning_10bit_Tetra>, nullptr},
    {"NEON_Hexadeca10", Engine<&NEON::Binning_10bit_Hexadeca>, nullptr},
};

bool Matches(const char* variable, const std::string& name) {
    const char* filter = std::getenv(variable);
    return !filter || name.find(filter) != std::string::npos;
}

const Calls& CallsOf(const char* name) {
    for (const Calls& calls : kCalls) {
        if (std::strcmp(calls.name, name) == 0) return calls;
    }
    std::abort();  // an operation that nothing tests
}

// What runs, for the moment it meets a protected page.
uint64_t currentSeed = 0;
std::string currentFrame;
struct sigaction previousAction;

void NameCrash(int signal) {
    std::fprintf(stderr, "crash in %s, TARN_TEST_SEED=%llu TARN_TEST_CASES=1\n",
                 currentFrame.c_str(), static_cast<unsigned long long>(currentSeed));
    sigaction(signal, &previousAction, nullptr);  // and on: the access is tried again
}

void ExpectCrash(const std::string& frame) {
    static const bool kInstalled = [] {
        struct sigaction action {};
        action.sa_handler = NameCrash;
        return sigaction(SIGSEGV, &action, &previousAction) == 0;
    }();
    (void)kInstalled;
    currentFrame = frame;
}

}  // namespace

std::vector<TestedOperation> SelectedOperations() {
    std::vector<TestedOperation> operations;
    for (const tarn_reference::Operation& rule : tarn_reference::Operations()) {
        const Calls& calls = CallsOf(rule.name);
        if (!Matches("TARN_TEST_OPERATION", rule.name)) continue;
        operations.push_back({&rule, calls.engine, calls.frame});
    }
    if (operations.empty()) throw std::invalid_argument("TARN_TEST_OPERATION selects nothing");
    return operations;
}

const std::vector<Runner>& SelectedRunners() {
    static const std::vector<Runner> kRunners = [] {
        std::vector<Runner> runners;
        bool known = false;
        const auto add = [&](const char* name, const tarn::RowKernels* kernels, bool supported) {
            const bool asked = Matches("TARN_TEST_LEVEL", name);
            known = known || asked;
            if (!supported) {
                std::printf("SKIPPED %s\n", name);
            } else if (asked) {
                runners.push_back({name, kernels});
            }
        };
        if (!tarn::Levels().begin()->supported()) {
            throw std::logic_error("the defining level runs everywhere");
        }
        add("engine", nullptr, true);
        for (const tarn::Level& level : tarn::Levels()) {
            add(level.kernels->name, level.kernels, level.supported());
        }
#ifdef TARN_EMULATED_AVX512
        add("emulated512", &tarn::kEmulatedAvx512Kernels,
            __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"));
#endif
        if (!known) throw std::invalid_argument("TARN_TEST_LEVEL names no level");
        return runners;
    }();
    return kRunners;
}

bool Serves(const Runner& runner, const TestedOperation& operation) {
    return !runner.kernels || operation.frame;
}

int RunFrame(const Runner& runner, const TestedOperation& operation, const uint8_t* src,
             uint8_t* dst, const tarn_reference::Geometry& geometry, float gain) {
    ExpectCrash(operation.rule->name + (" on " + runner.name));
    tarn_reference::Geometry g = geometry;
    if (!runner.kernels) {
        const BufferInfo info{g.inWidth,  g.inStride,  g.inHeight,
                              g.outWidth, g.outStride, g.outHeight};
        // The ratio that no operation reads is one that would show.
        const SensorInfo sensor{3.0f, gain};
        return operation.engine(const_cast<uint8_t*>(src), dst, info, sensor);
    }
    const int result = tarn_reference::FootprintOf(*operation.rule, g).result;
    if (result != 0) return result;  // refusing is the engine's part
    if (operation.rule->fillsPitches) g = tarn_reference::WithPitches(g, 64);
    operation.frame(*runner.kernels, src, dst,
                    {g.inWidth, g.inStride, g.inHeight, g.outWidth, g.outStride, g.outHeight},
                    gain);
    return 0;
}

int PackByEngine(tarn_reference::Packing packing, uint16_t* values, uint8_t* bytes, int count,
                 int depth) {
    using tarn_reference::Packing;
    switch (packing) {
        case Packing::QCRaw10: return QC().UnpackToPack_10bit(values, bytes, count, depth);
        case Packing::QCRaw12: return QC().UnpackToPack_12bit(values, bytes, count, depth);
        case Packing::VXRaw10: return VX().UnpackToPack_10bit(values, bytes, count, depth);
        case Packing::VXRaw12: return VX().UnpackToPack_12bit(values, bytes, count, depth);
    }
    return -1;
}

void AnnounceCase(uint64_t seed) {
    currentSeed = seed;
}

std::span<const float> Gains() {
    using Limits = std::numeric_limits<float>;
    static const float kGains[] = {
        Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), 0.0f, -0.0f, -1.0f, 0.5f,
        std::nextafter(1.0f, 0.0f), 1.0f, std::nextafter(1.0f, 2.0f), 1.001f, 1.37f, 2.0f, 3.99f,
        // Each tells a fused step from two: at pedestal 64 (value 69), 256, 576, 1024.
        0x1.1ffffep+3f, 0x1.04ec4cp+3f, 0x1.17a6f2p+3f, 0x1.038e36p+3f,
        // Products past the range of 32-bit integers, and of floats.
        4096.5f, 2.1e6f, 1e10f, Limits::max(), -Limits::max(), Limits::denorm_min()};
    return kGains;
}

// A quarter of them hard: beside a power of two, or its negative, or a whole number of 64ths. Of
// the others half lie between 1 and 32, half between 2^-12 and 2^12.
float GainOf(uint64_t bits) {
    const auto any = static_cast<uint32_t>(bits >> 32);
    if (bits % 8 == 0) {
        const uint32_t power = (any % 64 + 95) << 23;  // from 2^-32 on
        return std::bit_cast<float>((any & 1u << 31) + power - 1 + (any >> 8) % 3);
    }
    if (bits % 8 == 1) return static_cast<float>(any % 4096) / 64;
    const uint32_t exponents = (bits % 2 == 1 ? 5u : 24u) << 23;
    return std::bit_cast<float>((bits % 2 == 1 ? 0x3F800000u : 0x39800000u) + any % exponents);
}

std::vector<float> ManyGains() {
    std::vector<float> gains(Gains().begin(), Gains().end());
    std::mt19937_64 random(Seed());
    for (long long i = Amount("TARN_TEST_GAINS", 100); i > 0; --i)
        gains.push_back(GainOf(random()));
    return gains;
}

uint64_t Seed() {
    static const uint64_t kSeed = [] {
        const long long seed = Setting("TARN_TEST_SEED", std::random_device{}());
        std::printf("TARN_TEST_SEED=%lld\n", seed);
        return static_cast<uint64_t>(seed);
    }();
    return kSeed;
}

long long Setting(const char* name, long long otherwise) {
    const char* text = std::getenv(name);
    return text ? std::atoll(text) : otherwise;
}

long long Amount(const char* name, long long everyday) {
    return Setting(name, (everyday * TARN_TEST_EFFORT + 99) / 100);
}

}  // namespace tarn_test
