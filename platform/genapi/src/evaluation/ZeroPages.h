// Memory of zeros, of which only what is touched costs anything.
#pragma once
#include <cstddef>

#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

class ZeroPages {
 public:
  // Throws std::bad_alloc.
  explicit ZeroPages(size_t bytes);
  ~ZeroPages();
  ZeroPages(const ZeroPages&) = delete;
  ZeroPages& operator=(const ZeroPages&) = delete;
  void* start() const { return start_; }

 private:
  size_t bytes_;
  void* start_;
};

}  // namespace GENAPI_NAMESPACE
