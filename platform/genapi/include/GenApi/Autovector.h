// Owning lists of numbers, as valid value sets are handed out.
#pragma once
#include <cstdint>
#include <utility>
#include <vector>

#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

template <typename T>
class autovector {
 public:
  autovector() = default;
  explicit autovector(std::vector<T> values) : values_(std::move(values)) {}
  size_t size() const { return values_.size(); }
  const T& operator[](size_t index) const { return values_[index]; }
  typename std::vector<T>::const_iterator begin() const { return values_.begin(); }
  typename std::vector<T>::const_iterator end() const { return values_.end(); }

 private:
  std::vector<T> values_;
};

using int64_autovector_t = autovector<int64_t>;
using double_autovector_t = autovector<double>;

}  // namespace GENAPI_NAMESPACE
