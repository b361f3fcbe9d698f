// The AVX-512 level for any processor that has AVX2: the same source, compiled against stand-ins.
#define kAvx512Kernels kEmulatedAvx512Kernels
#include "engines/kernels/avx512.cpp"
