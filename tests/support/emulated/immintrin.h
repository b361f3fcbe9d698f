// Stands in for the compiler's header where the AVX-512 level is compiled for processors without
// it: each AVX-512 intrinsic is a function of SIMDe's that computes the same in smaller steps.
#ifndef TARN_TESTS_SUPPORT_EMULATED_IMMINTRIN_H_
#define TARN_TESTS_SUPPORT_EMULATED_IMMINTRIN_H_

#include_next <immintrin.h>
#include <stdint.h>
#include <string.h>

#define SIMDE_ENABLE_NATIVE_ALIASES
#include <simde/x86/avx512.h>

// Arguments with commas of their own, and one name that SIMDe gives to another function.
#undef _mm512_dpbusd_epi32
#undef _mm512_madd_epi16
#undef _mm512_packus_epi32
#define _mm512_dpbusd_epi32(...) simde_mm512_dpbusd_epi32(__VA_ARGS__)
#define _mm512_madd_epi16(...) simde_mm512_madd_epi16(__VA_ARGS__)
#define _mm512_packus_epi32(...) simde_mm512_packus_epi32(__VA_ARGS__)

// SIMDe's own shifts by 64, which is not defined.
#undef _mm512_multishift_epi64_epi8
#define _mm512_multishift_epi64_epi8(...) EmulatedMultishift(__VA_ARGS__)

static inline __m512i EmulatedMultishift(__m512i windows, __m512i lanes) {
    uint8_t byte[64];
    uint64_t lane[8];
    memcpy(byte, &windows, sizeof byte);
    memcpy(lane, &lanes, sizeof lane);
    for (int i = 0; i < 64; ++i) {
        byte[i] = (uint8_t)(lane[i / 8] >> (byte[i] & 63) | lane[i / 8] << (-byte[i] & 63));
    }
    memcpy(&windows, byte, sizeof byte);
    return windows;
}

// What SIMDe lacks, by halves.
#define _mm512_cvttps_epi32(a) EmulatedCvttps(a)
#define _mm512_mulhi_epu16(a, b) EmulatedMulhi(a, b)

static inline __m512i EmulatedJoin(__m256i low, __m256i high) {
    return _mm512_inserti64x4(_mm512_castsi256_si512(low), high, 1);
}

static inline __m512i EmulatedCvttps(__m512 a) {
    return EmulatedJoin(_mm256_cvttps_epi32(_mm512_castps512_ps256(a)),
                        _mm256_cvttps_epi32(_mm256_castsi256_ps(
                            _mm512_extracti64x4_epi64(_mm512_castps_si512(a), 1))));
}

static inline __m512i EmulatedMulhi(__m512i a, __m512i b) {
    return EmulatedJoin(
        _mm256_mulhi_epu16(_mm512_castsi512_si256(a), _mm512_castsi512_si256(b)),
        _mm256_mulhi_epu16(_mm512_extracti64x4_epi64(a, 1), _mm512_extracti64x4_epi64(b, 1)));
}

#endif  // TARN_TESTS_SUPPORT_EMULATED_IMMINTRIN_H_
