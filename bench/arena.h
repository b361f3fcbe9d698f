// Cold memory: frames are taken from a ring far larger than the caches.
#ifndef TARN_BENCH_ARENA_H_
#define TARN_BENCH_ARENA_H_

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace tarn::bench {

// A block of memory that hands out consecutive pieces, from the start again when it is used up.
// Filled with random bytes once: every page is present before anything is measured.
class Arena {
 public:
    explicit Arena(size_t bytes);

    // Aligned to a page; valid until the ring comes round. bytes is at most that of the arena.
    uint8_t* Next(size_t bytes);

 private:
    struct Free {
        void operator()(uint8_t* memory) const { std::free(memory); }
    };
    size_t bytes_;
    std::unique_ptr<uint8_t, Free> memory_;
    size_t next_ = 0;
};

}  // namespace tarn::bench

#endif  // TARN_BENCH_ARENA_H_
