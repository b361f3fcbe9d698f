// Frame operations on the QC layouts (MIPI CSI-2 RAW10 and RAW12). Compiles alone, as C++11.
#ifndef TARN_QC_ENGINE_H_
#define TARN_QC_ENGINE_H_

#include "TarnSolution.h"

// Without state: every result depends on the arguments only, and calls may run in parallel.
// Frame operations return 0 unless stated otherwise and validate nothing.
class TARN_API TarnQCEngine {
 public:
    TarnQCEngine();
    ~TarnQCEngine();

    // Row pitch in bytes of a width in pixels: ceil(width / 64) x 80, at any bit depth.
    int CalcStride(int width);

    // Replaces each pitch that is 0, or equal to its width or height, by CalcStride of its width.
    int CheckStride(BufferInfo* info);

    // Packs count 16-bit values of bitDepth significant bits (10..16; 12-bit packer 12..16),
    // keeping the top bits. Whole groups: values are read, and bytes written, up to the end of the
    // last one.
    int UnpackToPack_10bit(unsigned short* src, unsigned char* dst, int count, int bitDepth);
    int UnpackToPack_12bit(unsigned short* src, unsigned char* dst, int count, int bitDepth);

    // Compensates count values in place: with p = 1 << (bitDepth - 4), each v becomes
    // p + gain x (v - p), fused, truncated, held between p and the depth's maximum.
    int EVComp(unsigned short* buffer, int count, int bitDepth, float gain);

    // Compensates outHeight rows of outStride bytes, padding included; src may equal dst.
    int EVComp_10bit(unsigned char* src, unsigned char* dst, BufferInfo info, SensorInfo sensor);
    int EVComp_12bit(unsigned char* src, unsigned char* dst, BufferInfo info, SensorInfo sensor);

    // 2x2 cells to one pixel, gain applied to the sum when above 1.0. CheckStride first.
    // The 12-bit operation returns -1, buffers untouched, when a pitch that CheckStride had to fill
    // in is too short for a 12-bit row.
    int Binning_10bit_Tetra(unsigned char* src, unsigned char* dst, BufferInfo info,
                            SensorInfo sensor);
    int Binning_12bit_Tetra(unsigned char* src, unsigned char* dst, BufferInfo info,
                            SensorInfo sensor);

    // 3x3 cells to one pixel. Pitches are used as given; 15 x ceil(outWidth / 4) bytes are read of
    // each input row.
    int Binning_10bit_Nona(unsigned char* src, unsigned char* dst, BufferInfo info,
                           SensorInfo sensor);

    // 4x4 cells to one pixel; each input row's four pixels are divided by four, truncating, before
    // the rows are added. CheckStride first.
    int Binning_10bit_Hexadeca(unsigned char* src, unsigned char* dst, BufferInfo info,
                               SensorInfo sensor);
};

#endif  // TARN_QC_ENGINE_H_
