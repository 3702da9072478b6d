// The calling thread's last error, where something in between may change it. It is set again only if that happened: a
// failing call sets it once.
#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>

namespace orxGenApi {

// Sets code and text unless they are what stands there.
void ensureLastError(uint32_t code, const char* text) noexcept;

// Remembers the last error for a call that must not change it.
class KeptLastError {
 public:
  KeptLastError() noexcept;
  // Only its first bytes are kept when there is no memory for a long text.
  void restore() const noexcept { ensureLastError(code_, text()); }
  uint32_t code() const noexcept { return code_; }
  const char* text() const noexcept { return long_ ? long_.get() : short_; }

 private:
  uint32_t code_ = 0;
  char short_[512];
  std::unique_ptr<char[]> long_;
};

}  // namespace orxGenApi
