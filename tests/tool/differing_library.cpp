// A stand-in that is preloaded before the library: the real operation, then one wrong bit.
#include <dlfcn.h>

#include <cstring>

#include "TarnQCEngine.h"

int TarnQCEngine::Binning_10bit_Tetra(unsigned char* src, unsigned char* dst, BufferInfo info,
                                      SensorInfo sensor) {
    using Operation =
        int (*)(TarnQCEngine*, unsigned char*, unsigned char*, BufferInfo, SensorInfo);
    void* symbol =
        dlsym(RTLD_NEXT, "_ZN12TarnQCEngine19Binning_10bit_TetraEPhS0_10BufferInfo10SensorInfo");
    Operation operation = nullptr;
    std::memcpy(&operation, &symbol, sizeof symbol);
    const int result = operation(this, src, dst, info, sensor);
    dst[3 * info.outStride + 6] ^= 1;  // pixel (5, 3), bit 2
    return result;
}
