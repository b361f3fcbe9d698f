// The checked call on several threads.
#ifndef TARN_PICTURES_PARALLEL_CALL_H_
#define TARN_PICTURES_PARALLEL_CALL_H_

#include <span>

#include "frames/safe_call.h"
#include "pictures/names.h"

namespace tarn::pictures {

// Does a task in strips of rows by so many threads; the result is the same for any number of them.
void RunTask(const BinTask& task, std::span<const uint8_t> src, std::span<uint8_t> dst,
             int threads);

}  // namespace tarn::pictures

#endif  // TARN_PICTURES_PARALLEL_CALL_H_
