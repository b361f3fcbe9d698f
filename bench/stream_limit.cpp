#include "bench/stream_limit.h"

#ifdef __x86_64__
#include <immintrin.h>
#endif

namespace tarn::bench {
namespace {

#ifdef __x86_64__
using Vector = __m256i;
[[gnu::target("avx2")]] inline void StorePastCache(Vector* to, Vector value) {
    _mm256_stream_si256(to, value);
}
[[gnu::target("sse2")]] inline void FinishStores() {
    _mm_sfence();
}
#define TARN_BENCH_TARGET [[gnu::target("avx2")]]
#else
typedef uint64_t Vector __attribute__((vector_size(16)));
inline void StorePastCache(Vector* to, Vector value) {
#if __has_builtin(__builtin_nontemporal_store)
    __builtin_nontemporal_store(value, to);
#else
    *to = value;
#endif
}
inline void FinishStores() {}
#define TARN_BENCH_TARGET
#endif

constexpr size_t kAccumulators = 8;
constexpr size_t kStepBytes = kAccumulators * sizeof(Vector);

}  // namespace

TARN_BENCH_TARGET uint64_t RunStreamLimit(const uint8_t* src, size_t inBytes, uint8_t* dst,
                                          size_t outBytes) {
    const Vector* in = reinterpret_cast<const Vector*>(src);
    Vector* out = reinterpret_cast<Vector*>(dst);
    const size_t steps = inBytes / kStepBytes;
    const size_t stores = outBytes / sizeof(Vector);
    Vector sum[kAccumulators] = {};
    // Stores fall due as the accumulated fraction stores / steps passes whole numbers.
    size_t due = 0;
    for (size_t step = 0; step < steps; ++step, in += kAccumulators) {
        for (size_t i = 0; i < kAccumulators; ++i) sum[i] ^= in[i];
        for (due += stores; due >= steps; due -= steps) StorePastCache(out++, sum[0]);
    }
    FinishStores();
    for (size_t i = 1; i < kAccumulators; ++i) sum[0] ^= sum[i];
    uint64_t result = 0;
    for (size_t i = 0; i < sizeof(Vector) / 8; ++i) result ^= static_cast<uint64_t>(sum[0][i]);
    return result;
}

TARN_BENCH_TARGET uint64_t RunInPlaceLimit(uint8_t* data, size_t bytes) {
    Vector* at = reinterpret_cast<Vector*>(data);
    Vector changed{1, 1};  // not what was read, or nothing would be written
    for (size_t step = 0; step < bytes / kStepBytes; ++step, at += kAccumulators) {
        for (size_t i = 0; i < kAccumulators; ++i) at[i] ^= changed;
    }
    return static_cast<uint64_t>(at[-1][0]);
}

}  // namespace tarn::bench
