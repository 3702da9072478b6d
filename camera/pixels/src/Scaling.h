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

  /// Scales values where they are.
  void apply(uint16_t* values, std::size_t count) const noexcept;

 private:
  uint32_t factor_ = 0;  // of 65536; 0: shift
  unsigned left_ = 0, right_ = 0;
};

}  // namespace ox::pixels
