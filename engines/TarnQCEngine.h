/// @file
/// Frame operations on the QC layouts (MIPI CSI-2 RAW10 and RAW12). Compiles alone, as C++11.
#ifndef TARN_QC_ENGINE_H_
#define TARN_QC_ENGINE_H_

#include "TarnSolution.h"

/// Operations of the QC family. Without state: every result depends on the arguments only, and
/// calls may run in parallel.
///
/// Frame operations return 0 unless stated otherwise and validate nothing; docs/integrating.md
/// tabulates the bytes each one reads and writes. Binning does nothing with an outWidth or
/// outHeight below 1, EV with an outStride or outHeight below 1.
class TARN_API TarnQCEngine {
 public:
    TarnQCEngine();
    ~TarnQCEngine();

    /// Row pitch in bytes of a width in pixels: ceil(width / 64) x 80, whatever the bit depth.
    int CalcStride(int width);

    /// Replaces each pitch of info that is 0, or equal to its width or height, by CalcStride of its
    /// width. Returns 0.
    int CheckStride(BufferInfo* info);

    /// Packs values into groups of 4 pixels in 5 bytes (MIPI CSI-2 RAW10). Returns 0.
    /// @param src       values below 2^bitDepth; read up to the end of the last group
    /// @param dst       5 x ceil(count / 4) bytes; does not overlap src
    /// @param count     values to pack; below 1 nothing is done
    /// @param bitDepth  significant bits of the values, 10..16; the top 10 are kept
    int UnpackToPack_10bit(unsigned short* src, unsigned char* dst, int count, int bitDepth);

    /// Packs values into groups of 2 pixels in 3 bytes (MIPI CSI-2 RAW12). Returns 0.
    /// @param src       values below 2^bitDepth; read up to the end of the last group
    /// @param dst       3 x ceil(count / 2) bytes; does not overlap src
    /// @param count     values to pack; below 1 nothing is done
    /// @param bitDepth  significant bits of the values, 12..16; the top 12 are kept
    int UnpackToPack_12bit(unsigned short* src, unsigned char* dst, int count, int bitDepth);

    /// Compensates values in place. With p = 2^(bitDepth - 4), each v becomes p + gain x (v - p),
    /// one fused step in single precision, truncated, held between p and 2^bitDepth - 1. Returns 0.
    /// @param buffer    values, any 16-bit ones
    /// @param count     values to compensate; below 1 nothing is done
    /// @param bitDepth  10..16
    /// @param gain      any float; a NaN gives p everywhere
    int EVComp(unsigned short* buffer, int count, int bitDepth, float gain);

    /// Compensates outHeight rows of outStride bytes of 10-bit groups, row padding included; that
    /// pitch serves both buffers, and src may equal dst. Any gain applies. Bytes of a pitch after
    /// its last whole group stay untouched.
    int EVComp_10bit(unsigned char* src, unsigned char* dst, BufferInfo info, SensorInfo sensor);

    /// The same for 12-bit groups.
    int EVComp_12bit(unsigned char* src, unsigned char* dst, BufferInfo info, SensorInfo sensor);

    /// 2x2 cells to one pixel: the sum, compensated when the gain is above 1.0, divided by four.
    /// Missing pitches are filled in first, as by CheckStride.
    int Binning_10bit_Tetra(unsigned char* src, unsigned char* dst, BufferInfo info,
                            SensorInfo sensor);

    /// The same at 12 bits. Returns -1, buffers untouched, when a pitch that had to be filled in is
    /// too short for a 12-bit row.
    int Binning_12bit_Tetra(unsigned char* src, unsigned char* dst, BufferInfo info,
                            SensorInfo sensor);

    /// 3x3 cells to one pixel: the sum, compensated when the gain is above 1.0, divided by nine.
    /// Pitches are used as given, and 15 x ceil(outWidth / 4) bytes are read of each input row.
    int Binning_10bit_Nona(unsigned char* src, unsigned char* dst, BufferInfo info,
                           SensorInfo sensor);

    /// 4x4 cells to one pixel: each input row's four pixels divided by four, truncating, the rows
    /// added, compensated when the gain is above 1.0, divided by four. Missing pitches are filled
    /// in first, as by CheckStride.
    int Binning_10bit_Hexadeca(unsigned char* src, unsigned char* dst, BufferInfo info,
                               SensorInfo sensor);
};

#endif  // TARN_QC_ENGINE_H_
