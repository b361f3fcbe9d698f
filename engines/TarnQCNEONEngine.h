/// @file
/// Binning of QC 10-bit frames through fixed 5120-byte rows, without gain. Compiles alone, as
/// C++11.
#ifndef TARN_QC_NEON_ENGINE_H_
#define TARN_QC_NEON_ENGINE_H_

#include "TarnSolution.h"

/// Uncompensated binning through a line of 4096 pixels. Without state; TarnSolution never creates
/// it.
///
/// Each binning operation
/// - takes an outWidth of at most 4096 (else it returns -1 and writes nothing) and pitches as
/// given,
/// - ignores SensorInfo,
/// - reads whole output groups' worth of input, so pixels past outWidth in the last group are real,
/// - writes rows of 5120 bytes, zero after the last group, cut to outStride where that is shorter;
///   a width below 1 makes rows of zeros, a height below 1 none.
class TARN_API TarnQCNEONEngine {
 public:
    TarnQCNEONEngine();
    ~TarnQCNEONEngine();

    /// As TarnQCEngine::CalcStride.
    int CalcStride(int width);

    /// As TarnQCEngine::CheckStride. No operation of this engine does so.
    int CheckStride(BufferInfo* info);

    /// Copies size bytes; mind the order, source first. A size below 1 copies nothing. The buffers
    /// do not overlap.
    void neon_Memcpy(void* src, void* dst, int size);

    /// 2x2 cells to one pixel; 10 x ceil(outWidth / 4) bytes are read of each input row.
    int Binning_10bit_Tetra(unsigned char* src, unsigned char* dst, BufferInfo info,
                            SensorInfo sensor);

    /// 4x4 cells to one pixel, each input row's sum divided by four first; 20 x ceil(outWidth / 4)
    /// bytes are read of each input row.
    int Binning_10bit_Hexadeca(unsigned char* src, unsigned char* dst, BufferInfo info,
                               SensorInfo sensor);
};

#endif  // TARN_QC_NEON_ENGINE_H_
