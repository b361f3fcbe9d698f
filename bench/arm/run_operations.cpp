// Runs every operation, without gain and with one, each between the two hints that
// count_instructions.cpp looks for. Prints a name, a gain and the bytes of input before each.
#include <cstdint>
#include <cstdio>
#include <vector>

#include "tests/support/operations.h"

namespace {

constexpr int kOutWidth = 4080;
constexpr int kOutHeight = 8;

BufferInfo GeometryOf(const tarn_reference::Operation& rule) {
    const int bits = static_cast<int>(tarn_reference::BitsPerPixel(rule.in));
    const int inWidth = kOutWidth * rule.cell, inPitch = inWidth * bits / 8;
    return {inWidth,
            inPitch,
            kOutHeight * rule.cell,
            kOutWidth,
            rule.cell == 1 ? inPitch : kOutWidth * 3 / 2,
            kOutHeight};
}

}  // namespace

int main() {
    for (const tarn_test::TestedOperation& operation : tarn_test::SelectedOperations()) {
        const BufferInfo info = GeometryOf(*operation.rule);
        std::vector<uint8_t> src(static_cast<size_t>(info.inStride) * info.inHeight, 0x5A);
        std::vector<uint8_t> dst(static_cast<size_t>(info.outStride) * info.outHeight);
        for (const float gain : {1.0f, 1.37f}) {
            const SensorInfo sensor{1.0f, gain};
            std::printf("%s %s %zu ", operation.rule->name, gain > 1 ? "gain" : "plain",
                        src.size());
            std::fflush(stdout);
            // The first call of a process also binds symbols.
            operation.engine(src.data(), dst.data(), info, sensor);
            asm volatile("hint #0x70" ::: "memory");
            operation.engine(src.data(), dst.data(), info, sensor);
            asm volatile("hint #0x71" ::: "memory");
        }
    }
    return 0;
}
