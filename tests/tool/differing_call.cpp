// A stand-in for the checked call in a second build of the tool, which the linker puts before the
// real one: what a library with one wrong bit would make of a frame.
#include "frames/safe_call.h"

using tarn::frames::BinTask;

extern "C" {
// __real_ and __wrap_ of tarn::frames::RunTask, as the linker's --wrap names them.
void RealRunTask(const BinTask& task, std::span<const uint8_t> src,
                 std::span<uint8_t> dst) asm("__real_" TARN_RUN_TASK);
void DifferingRunTask(const BinTask& task, std::span<const uint8_t> src,
                      std::span<uint8_t> dst) asm("__wrap_" TARN_RUN_TASK);

void DifferingRunTask(const BinTask& task, std::span<const uint8_t> src, std::span<uint8_t> dst) {
    RealRunTask(task, src, dst);
    dst[size_t(3 * task.out.pitch + 6)] ^= 1;  // pixel (5, 3), bit 2
}
}
