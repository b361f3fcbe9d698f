#include "bench/arena.h"

#include <cstring>
#include <new>
#include <random>

namespace tarn::bench {
namespace {

constexpr size_t kPage = 4096;

size_t WholePages(size_t bytes) {
    return (bytes + kPage - 1) / kPage * kPage;
}

}  // namespace

Arena::Arena(size_t bytes)
    : bytes_(WholePages(bytes)), memory_(static_cast<uint8_t*>(std::aligned_alloc(kPage, bytes_))) {
    if (!memory_) throw std::bad_alloc();
    std::mt19937_64 random(1);
    for (size_t i = 0; i < bytes_; i += sizeof(uint64_t)) {
        const uint64_t value = random();
        std::memcpy(memory_.get() + i, &value, sizeof value);
    }
}

uint8_t* Arena::Next(size_t bytes) {
    bytes = WholePages(bytes);
    if (next_ + bytes > bytes_) next_ = 0;
    uint8_t* const piece = memory_.get() + next_;
    next_ += bytes;
    return piece;
}

}  // namespace tarn::bench
