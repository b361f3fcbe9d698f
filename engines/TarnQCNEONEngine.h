// Binning of QC 10-bit frames through fixed 5120-byte rows, without gain. Compiles alone, as C++11.
#ifndef TARN_QC_NEON_ENGINE_H_
#define TARN_QC_NEON_ENGINE_H_

#include "TarnSolution.h"

// Without state; TarnSolution never creates it. Each binning operation
// - takes an outWidth of at most 4096 (else -1, nothing written) and pitches as given,
// - ignores SensorInfo,
// - reads whole output groups' worth of input: pixels past outWidth in the last group are real,
// - writes rows of 5120 bytes, zero after the last group, cut to outStride where that is shorter.
class TARN_API TarnQCNEONEngine {
 public:
    TarnQCNEONEngine();
    ~TarnQCNEONEngine();

    // As in TarnQCEngine. No operation of this engine calls them.
    int CalcStride(int width);
    int CheckStride(BufferInfo* info);

    // Copies size bytes; note the order, source first. A size below 1 copies nothing. The buffers
    // must not overlap.
    void neon_Memcpy(void* src, void* dst, int size);

    // 2x2 cells; 10 x ceil(outWidth / 4) bytes are read of each input row.
    int Binning_10bit_Tetra(unsigned char* src, unsigned char* dst, BufferInfo info,
                            SensorInfo sensor);

    // 4x4 cells, each input row's sum divided by four first; 20 x ceil(outWidth / 4) bytes are read
    // of each input row.
    int Binning_10bit_Hexadeca(unsigned char* src, unsigned char* dst, BufferInfo info,
                               SensorInfo sensor);
};

#endif  // TARN_QC_NEON_ENGINE_H_
