// What to do when something fails half-way: clean up, and report the first failure.
#pragma once

#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

// Runs `work`, whose failure does not matter.
template <class Work>
void quietly(Work&& work) noexcept {
  try {
    work();
  } catch (...) {
  }
}

// Runs `work`. If it throws, runs `cleanUp`, too, and lets the failure of `work` pass.
template <class Work, class CleanUp>
auto orCleanUp(Work&& work, CleanUp&& cleanUp) -> decltype(work()) {
  try {
    return work();
  } catch (...) {
    quietly(cleanUp);
    throw;
  }
}

}  // namespace GENAPI_NAMESPACE
