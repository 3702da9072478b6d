// From one number of significant bits to another.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ox::pixels {

/// Scales values from `from` to `to` bits, each 1 to 16. Values must not be above the bits they come from.
class Scaling {
 public:
  Scaling(unsigned from, unsigned to) noexcept {
    if (from >= to) {
      right_ = from - to;
    } else if (2 * from >= to) {
      left_ = to - from;
      right_ = from - left_;
    } else {  // so few bits are repeated more than once: 1, 2 and 4 bits exactly, others to the nearest
      const unsigned white = (1u << from) - 1;
      factor_ = static_cast<uint32_t>((((uint64_t{1} << to) - 1) * 65536 + white / 2) / white);
    }
  }

  /// Calls `work` with a function that scales one value. The way to scale is chosen once, outside of the loops in
  /// `work`.
  template <class Work>
  void with(Work&& work) const noexcept {
    if (factor_ != 0) {
      work([factor = factor_](unsigned value) { return (value * factor + 32768) >> 16; });
    } else if (left_ != 0) {
      work([left = left_, right = right_](unsigned value) { return value << left | value >> right; });
    } else if (right_ != 0) {
      work([right = right_](unsigned value) { return value >> right; });
    } else {
      work([](unsigned value) { return value; });
    }
  }

 private:
  uint32_t factor_ = 0;  // of 65536; 0: shift
  unsigned left_ = 0, right_ = 0;
};

}  // namespace ox::pixels
