#include "nodes/Presentation.h"

#include <algorithm>
#include <vector>

#include "description/ElementRules.h"

namespace GENAPI_NAMESPACE {

namespace {

constexpr NodeTypeSet kInheriting(NodeType::Integer, NodeType::Float, NodeType::Converter, NodeType::IntConverter);
constexpr ElementSet kCellLinks(Element::pValueIndexed, Element::pValueDefault);
constexpr ElementSet kCellConstants(Element::ValueIndexed, Element::ValueDefault);

bool sameElement(const Property* a, const Property* b) {
  if (!a || !b) return a == b;
  return a->value() == b->value();
}

}  // namespace

std::optional<const Property*> agreedPresentation(const Description& description, NodeIndex node, Element element) {
  std::optional<const Property*> agreed;
  // Without tables this stays a chain of one node at a time.
  std::vector<NodeIndex> waiting, visited;
  const auto differs = [&](const Property* found) {
    if (!agreed) agreed = found;
    return !sameElement(*agreed, found);
  };
  for (NodeIndex current = node;;) {
    if (description.node(current).defective) return std::nullopt;
    const Property* const own = description.find(current, element);
    const Property* link = nullptr;
    if (!own && kInheriting.has(description.node(current).type)) {
      link = description.find(current, Element::pValue);
      if (!link && description.find(current, Element::pIndex)) {
        for (const Property& each : description.properties(current)) {
          if (kCellConstants.has(each.element) && differs(nullptr)) return std::nullopt;
          if (!kCellLinks.has(each.element)) continue;
          const auto at = std::lower_bound(visited.begin(), visited.end(), each.target);
          if (at != visited.end() && *at == each.target) continue;
          visited.insert(at, each.target);
          waiting.push_back(each.target);
        }
      } else if (!link && differs(nullptr)) {
        return std::nullopt;
      }
    } else if (differs(own)) {
      return std::nullopt;
    }
    if (link) {
      current = link->target;
    } else if (waiting.empty()) {
      return agreed;
    } else {
      current = waiting.back();
      waiting.pop_back();
    }
  }
}

}  // namespace GENAPI_NAMESPACE
