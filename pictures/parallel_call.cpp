#include "pictures/parallel_call.h"

#include "pictures/parallel.h"

namespace tarn::pictures {

void RunTask(const BinTask& task, std::span<const uint8_t> src, std::span<uint8_t> dst,
             int threads) {
    const int64_t rows = task.out.height / threads + 1;
    ParallelFor((task.out.height + rows - 1) / rows, threads, [&](int64_t i, int) {
        const int64_t y = i * rows;
        frames::RunTask(RowsOf(task, y, rows), src.subspan(size_t(y * task.cell * task.in.pitch)),
                        dst.subspan(size_t(y * task.out.pitch)));
        return true;
    });
}

}  // namespace tarn::pictures
