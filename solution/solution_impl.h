// The private half of TarnSolution: settings, engines, and the work of every call.
#ifndef TARN_SOLUTION_SOLUTION_IMPL_H_
#define TARN_SOLUTION_SOLUTION_IMPL_H_

#include <cstdint>
#include <memory>

#include "TarnSolution.h"
#include "engines/TarnQCEngine.h"
#include "engines/TarnQCNEONEngine.h"
#include "engines/TarnVXEngine.h"

class TarnSolution::impl {
 public:
    int Init(int option);
    void Release();
    int SetParam(CameraProperty property, float value);
    int Process(unsigned char* src, unsigned char* dst, BufferInfo info);

    // Wall-clock time in milliseconds since the epoch.
    static int64_t getCurrentTimeMilli();

    // With a debug level of 2 or more, writes pitch x height bytes of buffer to a new file named
    // after tag, time, pitch and height in the dump directory.
    void DumpImage(const char* tag, unsigned char* buffer, int pitch, int height) const;

    int32_t debugLevel = 0;  // set by TarnSolution::Init

 private:
    // Destroyed from the last to the first: NEON, VX, QC.
    std::unique_ptr<TarnQCEngine> qcEngine;
    std::unique_ptr<TarnVXEngine> vxEngine;
    std::unique_ptr<TarnQCNEONEngine> neonEngine;
    int32_t initialized = 0;
    int32_t solutionOption = 0;
    int32_t inFormat = 1;
    int32_t outFormat = 0;
    SensorInfo sensorInfo{1.0f, 1.0f};
};

#endif  // TARN_SOLUTION_SOLUTION_IMPL_H_
