/// @file
/// What went wrong with single features while settings were saved or loaded.
#ifndef OXGENAPI_CPP_SETTINGS_HPP
#define OXGENAPI_CPP_SETTINGS_HPP

#include <vector>

#include "OxGenApi/cpp/Error.hpp"
#include "OxGenApi/cpp/Node.hpp"

namespace oxgenapi {

/// One Error per feature or line that was passed over; empty: everything was saved or loaded.
using Problems = std::vector<Error>;

/// Whether to go on with the next feature or line.
enum class OnProblem { goOn, stop };

namespace detail {

struct ProblemCollector {
  Problems problems;
  OnProblem then;

  static bool collect(NODE node, uint32_t code, void* collector) noexcept {
    auto& self = *static_cast<ProblemCollector*>(collector);
    try {
      const Error error = lastError(code);
      std::string feature;
      if (node != nullptr) {
        readText(feature, [&](char* to, size_t& size) { return NInfoAsString(node, NI_Name, to, size); });
        OxSetLastError(code, error.what());
      }
      self.problems.emplace_back(code, error.what(), feature);
      return self.then == OnProblem::goOn;
    } catch (...) {
      return false;  // no memory to keep it: the call ends with this problem
    }
  }

  // Throws what ended a call: the problem at which it stopped, which names its feature, or what the call left.
  void finish(uint32_t code, const std::string& name = {}) const {
    if (code != OXGENAPI_OK && then == OnProblem::stop && !problems.empty()) throw problems.back();
    check(code, name);
  }
};

}  // namespace detail
}  // namespace oxgenapi

#endif
