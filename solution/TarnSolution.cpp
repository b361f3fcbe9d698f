#include "TarnSolution.h"

#include <algorithm>
#include <new>

#include "platform/errno_kept.h"
#include "platform/log.h"
#include "solution/solution_impl.h"

namespace {
constexpr int kHighestDebugLevel = 3;
}

// Out of line: this file is the home of the interface's vtable and type information.
TarnBinningAbstract::~TarnBinningAbstract() = default;

// pImpl is null after Release, and when there was no memory; calls that need it then answer -1.
TarnSolution::TarnSolution() : debugLevel(0) {
    const tarn::ErrnoKept errnoKept;
    pImpl.reset(new (std::nothrow) impl);
}
TarnSolution::~TarnSolution() = default;

int TarnSolution::Init(int option) {
    if (!pImpl) return -1;
    const tarn::Verbosity verbosity = tarn::ReadVerbosity();
    if (verbosity.length > 0) debugLevel = std::min(verbosity.value, kHighestDebugLevel);
    pImpl->debugLevel = debugLevel;
    return pImpl->Init(option);
}

void TarnSolution::Release() {
    if (!pImpl) return;
    pImpl->Release();
    pImpl.reset();
}

int TarnSolution::SetParam(CameraProperty property, float value) {
    return pImpl ? pImpl->SetParam(property, value) : -1;
}

int TarnSolution::Process(unsigned char* src, unsigned char* dst, BufferInfo info) {
    if (!pImpl) return -1;
    pImpl->Process(src, dst, info);
    return 0;
}

TarnBinningAbstract* TarnSolution_initialize(void) {
    const tarn::ErrnoKept errnoKept;
    std::unique_ptr<TarnSolution> solution(new (std::nothrow) TarnSolution);
    return solution && solution->pImpl ? solution.release() : nullptr;
}

void TarnSolution_destroy(TarnBinningAbstract* solution) {
    delete solution;
}
