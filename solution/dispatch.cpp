#include "solution/dispatch.h"

#include "engines/TarnQCEngine.h"
#include "engines/TarnVXEngine.h"

namespace tarn {
namespace {

constexpr int kHexadecaWidth = 16000;
constexpr int kNonaWidth = 12000;

// Codes 10..19. Unsigned, so that codes near the lower limit cannot overflow.
bool TwelveBit(int format) {
    return static_cast<unsigned>(format) - 10u <= 9u;
}

}  // namespace

Operation ChooseOperation(int option, int inWidth, int outWidth, int inFormat, int outFormat) {
    const bool vx = option == 1;
    if (!vx && option != 0) return Operation::None;
    // The QC operations read and write one depth, so both codes must ask for 12 bits.
    const bool twelve = TwelveBit(inFormat) && (vx || TwelveBit(outFormat));
    if (inWidth == outWidth) {
        if (twelve) return vx ? Operation::VXEVComp12 : Operation::QCEVComp12;
        return vx ? Operation::VXEVComp10 : Operation::QCEVComp10;
    }
    if (inWidth >= kHexadecaWidth) return vx ? Operation::VXHexadeca : Operation::QCHexadeca;
    if (inWidth >= kNonaWidth) return vx ? Operation::VXNona : Operation::QCNona;
    if (twelve) return vx ? Operation::VXTetra12 : Operation::QCTetra12;
    return vx ? Operation::VXTetra10 : Operation::QCTetra10;
}

void RunOperation(Operation operation, unsigned char* src, unsigned char* dst,
                  const BufferInfo& info, const SensorInfo& sensor, int outFormat) {
    // Operations read nothing of their object, so fresh ones serve where Init created none.
    TarnQCEngine qc;
    TarnVXEngine vx;
    switch (operation) {
        case Operation::None: break;
        case Operation::QCEVComp10: qc.EVComp_10bit(src, dst, info, sensor); break;
        case Operation::QCEVComp12: qc.EVComp_12bit(src, dst, info, sensor); break;
        case Operation::QCTetra10: qc.Binning_10bit_Tetra(src, dst, info, sensor); break;
        case Operation::QCTetra12: qc.Binning_12bit_Tetra(src, dst, info, sensor); break;
        case Operation::QCNona: qc.Binning_10bit_Nona(src, dst, info, sensor); break;
        case Operation::QCHexadeca: qc.Binning_10bit_Hexadeca(src, dst, info, sensor); break;
        case Operation::VXEVComp10: vx.EVComp_10bit(src, dst, info, sensor, outFormat); break;
        case Operation::VXEVComp12: vx.EVComp_12bit(src, dst, info, sensor, outFormat); break;
        case Operation::VXTetra10: vx.Binning_10bit_Tetra(src, dst, info, sensor, outFormat); break;
        case Operation::VXTetra12: vx.Binning_12bit_Tetra(src, dst, info, sensor, outFormat); break;
        case Operation::VXNona: vx.Binning_10bit_Nona(src, dst, info, sensor, outFormat); break;
        case Operation::VXHexadeca:
            vx.Binning_10bit_Hexadeca(src, dst, info, sensor, outFormat);
            break;
    }
}

}  // namespace tarn
