// Which engine operation a frame takes.
#ifndef TARN_SOLUTION_DISPATCH_H_
#define TARN_SOLUTION_DISPATCH_H_

#include "TarnSolution.h"

namespace tarn {

// In the order of TarnOperation, by which TarnChecked.h tells clients the same: it shares nothing
// with what it checks, and a test compares the two.
enum class Operation {
    None,
    QCEVComp10,
    QCEVComp12,
    QCTetra10,
    QCTetra12,
    QCNona,
    QCHexadeca,
    VXEVComp10,
    VXEVComp12,
    VXTetra10,
    VXTetra12,
    VXNona,
    VXHexadeca,
};

// A pure function of the engine option (0: QC, 1: VX, other: none), the widths and the format
// codes.
Operation ChooseOperation(int option, int inWidth, int outWidth, int inFormat, int outFormat);

// Runs it. outFormat goes to the VX operations only.
void RunOperation(Operation operation, unsigned char* src, unsigned char* dst,
                  const BufferInfo& info, const SensorInfo& sensor, int outFormat);

}  // namespace tarn

#endif  // TARN_SOLUTION_DISPATCH_H_
