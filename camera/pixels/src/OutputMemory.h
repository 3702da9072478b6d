// The caller's memory for rows of samples, checked before anything is written.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "Failure.h"
#include "OxPixels/Image.h"

namespace ox::pixels {

struct OutputMemory {
  void* data;
  std::size_t size;
  std::size_t stride;  // 0: rows without padding; set by check()
  uint8_t sampleBits;

  /// Checks that the rows asked for are among `height` and fit, each with `samples` samples, in memory that starts with
  /// row `firstRow`. `end` becomes the row after them.
  Result check(uint64_t samples, uint64_t height, uint32_t firstRow, Rows rows, uint64_t& end) noexcept {
    end = std::min<uint64_t>(height, uint64_t{rows.first} + rows.count);
    if (rows.first < firstRow || rows.first >= end) {
      return failure(Code::BadSize, "{} rows from row {} on are not among {} to {}", rows.count, rows.first, firstRow,
                     height - 1);
    }
    if (sampleBits != 8 && sampleBits != 16)
      return failure(Code::BadArgument, "samples of {} bits cannot be made, only of 8 and 16", sampleBits);
    const uint64_t row = samples * sampleBits / 8;
    if (stride == 0) stride = row;
    if (stride < row) return failure(Code::BadSize, "a stride of {} bytes is less than a row of {}", stride, row);
    uint64_t bytes = 0;
    if (__builtin_mul_overflow(stride, end - firstRow - 1, &bytes) || __builtin_add_overflow(bytes, row, &bytes) ||
        bytes > size)
      return failure(Code::BadSize, "{} rows of {} bytes do not fit into {} bytes", end - firstRow, stride, size);
    if (data == nullptr) return failure(Code::BadArgument, "there is no memory for the result");
    if (sampleBits == 16 && (reinterpret_cast<uintptr_t>(data) | stride) % 2 != 0)
      return failure(Code::BadArgument, "samples of 16 bits need an even address and an even stride");
    return {};
  }

  template <class Sample>
  Sample* row(uint64_t y) const noexcept {
    return reinterpret_cast<Sample*>(static_cast<uint8_t*>(data) + y * stride);
  }
};

}  // namespace ox::pixels
