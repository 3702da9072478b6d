// What the loader noticed in a description; for diagnosis. The node map implements IFindings, reached by a cast.
#pragma once
#include <cstdint>
#include <vector>

#include "Base/GCString.h"

namespace GENAPI_NAMESPACE {

enum ESeverity {
  svNote,    // no effect
  svDefect,  // one node or formula cannot be used
  svFatal    // the description does not load
};

struct Finding {
  ESeverity Severity;
  uint32_t Line;  // 1-based line of the description text, 0 when unknown
  GENICAM_NAMESPACE::gcstring Node, Element, Reason;
};

class IFindings {
 public:
  // Appends everything noted so far: notes and defects of the load, and formula defects once formulas were parsed.
  virtual void GetFindings(std::vector<Finding>& Findings) const = 0;

 protected:
  ~IFindings() = default;
};

}  // namespace GENAPI_NAMESPACE
