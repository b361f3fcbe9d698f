// Runs every operation once, without gain and with one, each between the two hints that
// count_instructions.cpp looks for. Prints a name, a gain and the bytes of input before each.
#include <cstdint>
#include <cstdio>
#include <vector>

#include "engines/TarnQCEngine.h"
#include "engines/TarnQCNEONEngine.h"
#include "engines/TarnVXEngine.h"

namespace {

constexpr int kOutWidth = 4080;
constexpr int kOutHeight = 8;

struct Operation {
    const char* name;
    int cell;
    int bits;
    void (*run)(uint8_t* src, uint8_t* dst, const BufferInfo& info, const SensorInfo& sensor);
};

template <auto Member, int... OutFormat>
void Engine(uint8_t* src, uint8_t* dst, const BufferInfo& info, const SensorInfo& sensor) {
    [&]<class E, class... A>(int (E::*member)(A...)) {
        E engine;
        // The first call of a process also binds symbols.
        (engine.*member)(src, dst, info, sensor, OutFormat...);
        asm volatile("hint #0x70" ::: "memory");
        (engine.*member)(src, dst, info, sensor, OutFormat...);
        asm volatile("hint #0x71" ::: "memory");
    }(Member);
}

using QC = TarnQCEngine;
using VX = TarnVXEngine;
using NEON = TarnQCNEONEngine;

constexpr Operation kOperations[] = {
    {"QC_Tetra10", 2, 10, Engine<&QC::Binning_10bit_Tetra>},
    {"QC_Tetra12", 2, 12, Engine<&QC::Binning_12bit_Tetra>},
    {"QC_Nona10", 3, 10, Engine<&QC::Binning_10bit_Nona>},
    {"QC_Hexadeca10", 4, 10, Engine<&QC::Binning_10bit_Hexadeca>},
    {"VX_Tetra10", 2, 10, Engine<&VX::Binning_10bit_Tetra, 11>},
    {"VX_Tetra10to12", 2, 10, Engine<&VX::Binning_10bit_Tetra, 10>},
    {"VX_Tetra12to10", 2, 12, Engine<&VX::Binning_12bit_Tetra, 19>},
    {"VX_Tetra12", 2, 12, Engine<&VX::Binning_12bit_Tetra, 10>},
    {"VX_Nona10", 3, 10, Engine<&VX::Binning_10bit_Nona, 10>},
    {"VX_Hexadeca10", 4, 10, Engine<&VX::Binning_10bit_Hexadeca, 12>},
    {"VX_Hexadeca10to12", 4, 10, Engine<&VX::Binning_10bit_Hexadeca, 10>},
    {"QC_EV10", 1, 10, Engine<&QC::EVComp_10bit>},
    {"QC_EV12", 1, 12, Engine<&QC::EVComp_12bit>},
    {"VX_EV10", 1, 10, Engine<&VX::EVComp_10bit, 10>},
    {"VX_EV12", 1, 12, Engine<&VX::EVComp_12bit, 0>},
    {"NEON_Tetra10", 2, 10, Engine<&NEON::Binning_10bit_Tetra>},
    {"NEON_Hexadeca10", 4, 10, Engine<&NEON::Binning_10bit_Hexadeca>},
};

}  // namespace

int main() {
    for (const Operation& operation : kOperations) {
        const int inWidth = kOutWidth * operation.cell, inHeight = kOutHeight * operation.cell;
        const int inPitch = inWidth * operation.bits / 8, outPitch = kOutWidth * 3 / 2;
        const int evPitch = kOutWidth * operation.bits / 8;
        const BufferInfo info{
            inWidth,   inPitch, inHeight, kOutWidth, operation.cell == 1 ? evPitch : outPitch,
            kOutHeight};
        std::vector<uint8_t> src(static_cast<size_t>(inPitch) * inHeight, 0x5A);
        std::vector<uint8_t> dst(static_cast<size_t>(outPitch) * kOutHeight);
        for (const float gain : {1.0f, 1.37f}) {
            std::printf("%s %s %zu ", operation.name, gain > 1 ? "gain" : "plain", src.size());
            std::fflush(stdout);
            operation.run(src.data(), dst.data(), info, {1.0f, gain});
        }
    }
    return 0;
}
