#include "description/Description.h"

#include <algorithm>

#include "description/BuildFindings.h"

namespace GENAPI_NAMESPACE {

Description::Description() = default;

Description::~Description() = default;

const Property* Description::find(NodeIndex index, Element element) const {
  for (const Property& property : properties(index)) {
    if (property.element == element) return &property;
  }
  return nullptr;
}

NodeIndex Description::indexOf(std::string_view name) const {
  return names_.find(name, NameTable::hashOf(name), [this](NodeIndex node) { return nodes_[node].name(); });
}

std::string Description::defectText(NodeIndex index) const {
  const auto defect = std::lower_bound(defects_.begin(), defects_.end(), index,
                                       [](const NodeDefect& a, NodeIndex node) { return a.node < node; });
  if (defect == defects_.end() || defect->node != index) return {};
  return findingText(findings_[defect->finding]);
}

std::string Description::findingText(const FindingRecord& finding) const {
  std::string text;
  if (finding.line != 0) text = std::to_string(finding.line) + ": ";
  if (finding.node == kNoNode) return text + placedText("", "", finding.element, finding.reason);
  const NodeRecord& record = nodes_[finding.node];
  return text + placedText(nodeTypeName(record.type), record.name(), finding.element, finding.reason);
}

uint32_t Description::lineOf(NodeIndex index) const {
  return lineAt(lineText(), nodes_[index].sourceOffset);
}

const DependencyGraph& Description::graph() const {
  return derived_.get<DependencyGraph>(kGraph, [this] { return std::make_unique<const DependencyGraph>(*this); });
}

}  // namespace GENAPI_NAMESPACE
