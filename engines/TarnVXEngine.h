// Frame operations on the VX layouts (LSB-first bit streams, 10 and 12 bits). Compiles alone, as
// C++11.
#ifndef TARN_VX_ENGINE_H_
#define TARN_VX_ENGINE_H_

#include "TarnSolution.h"

// Without state: every result depends on the arguments only, and calls may run in parallel.
// Frame operations return 0 and validate nothing; pitches are used as given.
class TARN_API TarnVXEngine {
 public:
    TarnVXEngine();
    ~TarnVXEngine();

    // Row pitch in bytes of a width in pixels: ceil(width / 32) x 40, at any bit depth.
    int CalcStride(int width);

    // Replaces each pitch that is 0, or equal to its width or height, by CalcStride of its width.
    // For callers that want it: no operation of this engine calls it.
    int CheckStride(BufferInfo* info);

    // Packs count 16-bit values of bitDepth significant bits (10..16; 12-bit packer 12..16),
    // keeping the top bits. Whole groups: values are read, and bytes written, up to the end of the
    // last one.
    int UnpackToPack_10bit(unsigned short* src, unsigned char* dst, int count, int bitDepth);
    int UnpackToPack_12bit(unsigned short* src, unsigned char* dst, int count, int bitDepth);

    // Compensates count values in place: with p = 1 << (bitDepth - 4), each v becomes
    // p + gain x (v - p), fused, truncated, held between p and the depth's maximum.
    int EVComp(unsigned short* buffer, int count, int bitDepth, float gain);

    // Compensates inHeight rows of inStride bytes, padding included; src may equal dst. outFormat
    // is not read: the output has the input's layout.
    int EVComp_10bit(unsigned char* src, unsigned char* dst, BufferInfo info, SensorInfo sensor,
                     int outFormat);
    int EVComp_12bit(unsigned char* src, unsigned char* dst, BufferInfo info, SensorInfo sensor,
                     int outFormat);

    // 2x2 cells to one pixel, gain applied to the sum when above 1.0. outFormat 10 gives 12-bit
    // output, any other value 10-bit output.
    int Binning_10bit_Tetra(unsigned char* src, unsigned char* dst, BufferInfo info,
                            SensorInfo sensor, int outFormat);
    int Binning_12bit_Tetra(unsigned char* src, unsigned char* dst, BufferInfo info,
                            SensorInfo sensor, int outFormat);

    // 3x3 cells to one pixel, always 10 bits; 15 x ceil(outWidth / 4) bytes are read of each input
    // row.
    int Binning_10bit_Nona(unsigned char* src, unsigned char* dst, BufferInfo info,
                           SensorInfo sensor, int outFormat);

    // 4x4 cells to one pixel, summed exactly. outFormat 10 gives 12-bit output.
    int Binning_10bit_Hexadeca(unsigned char* src, unsigned char* dst, BufferInfo info,
                               SensorInfo sensor, int outFormat);
};

#endif  // TARN_VX_ENGINE_H_
