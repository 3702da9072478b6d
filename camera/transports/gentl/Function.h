// One function of a producer, called through its name.
#pragma once

#include <GenTL.h>

namespace ox::camera::gentl {

template <class Pointer>
class Function;

// A function that the producer lacks answers "not implemented". So that nothing foreign passes through us, what a
// function throws is an error without a text.
template <class... Arguments>
class Function<GC_ERROR (*)(Arguments...)> {
 public:
  using Pointer = GC_ERROR (*)(Arguments...);

  explicit Function(const char* name) : name_(name) {}
  void set(void* symbol) { pointer_ = reinterpret_cast<Pointer>(symbol); }

  const char* name() const { return name_; }
  bool isThere() const { return pointer_ != nullptr; }
  GC_ERROR operator()(Arguments... arguments) const noexcept {
    if (pointer_ == nullptr) return GC_ERR_NOT_IMPLEMENTED;
    try {
      return pointer_(arguments...);
    } catch (...) {
      return GC_ERR_ERROR;
    }
  }

 private:
  const char* name_;
  Pointer pointer_ = nullptr;
};

}  // namespace ox::camera::gentl
