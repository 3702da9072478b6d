// An object to put into containers: counts its ends and answers what a test tells it to.
#ifndef TESTS_BASE_PROBE_H
#define TESTS_BASE_PROBE_H

#include <atomic>
#include <functional>
#include <vector>

#include "OxBase/SharedRef.h"

class Probe : public orxBase::enable_shared_from_this<Probe> {
 public:
  static uint64_t interfaceId() { return OxRegisterInterface("Probe"); }

  explicit Probe(std::atomic<int>& ends, std::function<void()> atEnd = {}) : ends_(ends), atEnd_(std::move(atEnd)) {}
  ~Probe() override {
    alive = 0;
    if (atEnd_) atEnd_();
    ++ends_;
  }

  std::atomic<int> alive{1};

 private:
  std::atomic<int>& ends_;
  std::function<void()> atEnd_;
};

using ProbeRef = orxBase::shared_ref<Probe>;

inline ProbeRef makeProbe(std::atomic<int>& ends, std::function<void()> atEnd = {}) {
  return orxBase::detail::make_shared_t<Probe>(ends, std::move(atEnd));
}

// What a fresh look through the handle finds: the object, or null when the handle is refused.
inline Probe* look(OxHandle handle) {
  if (OxIfaceContainerCheckedAddUseCounter(handle) < 0) return nullptr;
  void* found = nullptr;
  OxIfaceContainerQuery(handle, Probe::interfaceId(), &found);
  OxIfaceContainerReleaseUseCounter(handle);
  return static_cast<Probe*>(found);
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define OX_UNDER_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define OX_UNDER_SANITIZER 1
#endif
#endif
#ifndef OX_UNDER_SANITIZER
#define OX_UNDER_SANITIZER 0
#endif

#endif
