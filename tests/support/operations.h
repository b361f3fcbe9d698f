// The one table over which frame tests run: every operation, with its rule and its calls.
#ifndef TARN_TESTS_SUPPORT_OPERATIONS_H_
#define TARN_TESTS_SUPPORT_OPERATIONS_H_

#include <span>
#include <string>
#include <vector>

#include "TarnSolution.h"
#include "engines/kernels/levels.h"
#include "reference/operation.h"

namespace tarn_test {

struct TestedOperation {
    const tarn_reference::Operation* rule;

    // The engine's own operation: stride check, choice of level and all.
    int (*engine)(uint8_t* src, uint8_t* dst, const BufferInfo& info, const SensorInfo& sensor);

    // The frame loop with the kernels of one level, pitches as given; null: there is none.
    void (*frame)(const tarn::RowKernels& kernels, const uint8_t* src, uint8_t* dst,
                  const BufferInfo& info, float gain);

    bool IsEv() const { return rule->cell == 1; }
};

// All, or those whose name contains TARN_TEST_OPERATION.
std::vector<TestedOperation> SelectedOperations();

// What runs a frame: a level's kernels, or null for the engine's own operation ("engine"). Those
// whose name contains TARN_TEST_LEVEL; levels that this processor lacks are announced.
struct Runner {
    std::string name;
    const tarn::RowKernels* kernels;
};
const std::vector<Runner>& SelectedRunners();

// Whether the runner can be asked for this frame at all (frame loops know no pitch rule).
bool Serves(const Runner& runner, const TestedOperation& operation);

int RunFrame(const Runner& runner, const TestedOperation& operation, const uint8_t* src,
             uint8_t* dst, const tarn_reference::Geometry& geometry, float gain);

// The packer of that layout: UnpackToPack_10bit or _12bit of its family's engine.
int PackByEngine(tarn_reference::Packing packing, uint16_t* values, uint8_t* bytes, int count,
                 int depth);

// What a crash in RunFrame is to name, beside the operation and the runner.
void AnnounceCase(uint64_t seed);

// Gains of every class, the pairs that tell a fused step from two among them.
std::span<const float> Gains();

// Any gain that makes sense, to its last bit, out of 64 random ones.
float GainOf(uint64_t bits);

// Gains(), and TARN_TEST_GAINS more at random.
std::vector<float> ManyGains();

// Where all random work of this run starts: TARN_TEST_SEED, or a new seed each time. Printed once.
uint64_t Seed();

// A number from the environment, or the given one.
long long Setting(const char* name, long long otherwise);

// The everyday amount on this build (TARN_TEST_EFFORT percent), or the environment's `name`.
long long Amount(const char* name, long long everyday);

}  // namespace tarn_test

#endif  // TARN_TESTS_SUPPORT_OPERATIONS_H_
