// What the loader noticed in a description; for diagnosis. The node map implements IFindings, reached by a cast.
#pragma once
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "Base/GCException.h"
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

// What the load of a description that cannot be used throws: its text says everything, the finding has it in parts.
class DescriptionException : public GENICAM_NAMESPACE::RuntimeException {
 public:
  DescriptionException(const char* description, Finding finding)
      : RuntimeException(description, __FILE__, __LINE__),
        finding_(std::make_shared<const Finding>(std::move(finding))) {}
  const Finding& GetFinding() const noexcept { return *finding_; }

 private:
  std::shared_ptr<const Finding> finding_;
};

class IFindings {
 public:
  // Appends everything noted so far: notes and defects of the load, and formula defects once formulas were parsed.
  virtual void GetFindings(std::vector<Finding>& Findings) const = 0;

 protected:
  ~IFindings() = default;
};

}  // namespace GENAPI_NAMESPACE
