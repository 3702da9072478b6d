#include "Scaling.h"

#include "Vectors.h"

namespace ox::pixels {

// Names of their own, for Vectors.h.
OX_VECTORS void multiplyValues(uint16_t* values, std::size_t count, uint32_t factor) noexcept {
  for (std::size_t i = 0; i < count; ++i) values[i] = static_cast<uint16_t>((values[i] * factor + 32768) >> 16);
}

OX_VECTORS void repeatBits(uint16_t* values, std::size_t count, unsigned left, unsigned right) noexcept {
  for (std::size_t i = 0; i < count; ++i) values[i] = static_cast<uint16_t>(values[i] << left | values[i] >> right);
}

OX_VECTORS void dropBits(uint16_t* values, std::size_t count, unsigned right) noexcept {
  for (std::size_t i = 0; i < count; ++i) values[i] = static_cast<uint16_t>(values[i] >> right);
}

void Scaling::apply(uint16_t* values, std::size_t count) const noexcept {
  if (factor_ != 0) return multiplyValues(values, count, factor_);
  if (left_ != 0) return repeatBits(values, count, left_, right_);
  if (right_ != 0) dropBits(values, count, right_);
}

}  // namespace ox::pixels
