#include "description/Description.h"

#include <algorithm>
#include <unordered_map>

#include "description/BuildFindings.h"

namespace GENAPI_NAMESPACE {

namespace {

constexpr size_t kManyProperties = 64;

// Where each element's first property is, of nodes with many: selectors, categories, enumerations.
class FirstProperties final : public Derived {
 public:
  explicit FirstProperties(const Description& description) {
    for (NodeIndex node = 0; node < description.nodeCount(); ++node) {
      const std::span<const Property> all = description.properties(node);
      if (all.size() < kManyProperties) continue;
      for (const Property& each : all) first_.try_emplace(key(node, each.element), &each);
    }
  }
  const Property* find(NodeIndex node, Element element) const {
    const auto found = first_.find(key(node, element));
    return found == first_.end() ? nullptr : found->second;
  }

 private:
  static uint64_t key(NodeIndex node, Element element) { return uint64_t{node} << 8 | static_cast<uint8_t>(element); }
  std::unordered_map<uint64_t, const Property*> first_;
};

}  // namespace

Description::Description() = default;

Description::~Description() = default;

const Property* Description::find(NodeIndex index, Element element) const {
  const std::span<const Property> all = properties(index);
  if (all.size() >= kManyProperties) {
    return derived_
        .get<FirstProperties>(kFirstProperties, [this] { return std::make_unique<const FirstProperties>(*this); })
        .find(index, element);
  }
  for (const Property& property : all)
    if (property.element == element) return &property;
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

uint32_t Description::lineOf(NodeIndex index) const { return lineAt(lineText(), nodes_[index].sourceOffset); }

const DependencyGraph& Description::graph() const {
  return derived_.get<DependencyGraph>(kGraph, [this] { return std::make_unique<const DependencyGraph>(*this); });
}

}  // namespace GENAPI_NAMESPACE
