// Replaces the names in links by node indices and refuses those that lead nowhere or to the wrong kind of node.
#include <array>

#include "description/DescriptionBuilder.h"
#include "description/ElementRules.h"

namespace GENAPI_NAMESPACE {
namespace {

constexpr std::array<uint8_t, kElements> makeKinds() {
  std::array<uint8_t, kElements> kinds{};
  for (size_t i = 0; i < kElements; ++i) {
    const Element element = static_cast<Element>(i);
    if (element == Element::pSelected) kinds[i] |= kSelects;
    if (element == Element::pFeature) kinds[i] |= kLists;
    if (kWritingLinks.has(element)) kinds[i] |= kWrites;
    if (kReadingLinks.has(element)) kinds[i] |= kReads;
  }
  return kinds;
}

constexpr std::array<uint8_t, kElements> kKinds = makeKinds();

class LinkResolver {
 public:
  LinkResolver(DescriptionParts& parts, const NameTable& names) : parts_(parts), names_(names) {
    latest_.fill(kNoNode);
  }

  // The kinds of links that the node has.
  uint8_t resolve(NodeIndex node) {
    uint8_t kinds = 0;
    NodeRecord& record = parts_.nodes[node];
    Property* const first = parts_.properties.data() + record.firstProperty;
    Property* const last = first + record.propertyCount;
    Property* kept = first;
    for (Property* property = first; property != last; ++property) {
      prefetch(property);
      if (kNamingLinks.has(property->element) && !follow(node, *property)) continue;
      kinds |= kKinds[static_cast<size_t>(property->element)];
      if (kept != property) *kept = *property;
      ++kept;
    }
    record.propertyCount = static_cast<uint32_t>(kept - first);
    return kinds;
  }

 private:
  // Names lie all over the text, so they are fetched some links ahead.
  void prefetch(const Property* property) const {
    constexpr ptrdiff_t kNear = 6, kFar = 12;
    const Property* const end = parts_.properties.data() + parts_.properties.size();
    if (end - property <= kFar) return;
    if (kNamingLinks.has(property[kFar].element)) names_.prefetch(static_cast<uint64_t>(property[kFar].integer));
    if (!kNamingLinks.has(property[kNear].element)) return;
    const NodeIndex likely = names_.likely(static_cast<uint64_t>(property[kNear].integer));
    if (likely == kNoNode) return;
    __builtin_prefetch(parts_.nodes[likely].nameData);
    __builtin_prefetch(property[kNear].valueData);
  }

  // False for a link to be left out.
  bool follow(NodeIndex node, Property& link) {
    const NodeRecord& record = parts_.nodes[node];
    const NodeIndex target = find(link);
    if (target == kNoNode) return refuse(node, link, "no node named " + quoted(link.value()));
    const NodeType type = parts_.nodes[target].type;
    if (!linkTargets(link.element, record.type).has(type))
      return refuse(node, link, quoted(link.value()) + " is a node of type " + std::string(nodeTypeName(type)));
    link.target = target;
    if (link.element == Element::pEnumEntry) adopt(node, link);
    return true;
  }

  // Neighbours mostly name the same port, guard or invalidator.
  NodeIndex find(const Property& link) {
    NodeIndex& latest = latest_[static_cast<size_t>(link.element)];
    if (latest == kNoNode || parts_.nodes[latest].name() != link.value()) {
      latest = names_.find(link.value(), static_cast<uint64_t>(link.integer),
                           [this](NodeIndex node) { return parts_.nodes[node].name(); });
    }
    return latest;
  }

  // An entry outside any Enumeration belongs to the first one that names it.
  void adopt(NodeIndex enumeration, Property& link) {
    link.element = Element::EnumEntry;
    NodeRecord& entry = parts_.nodes[link.target];
    if (entry.owner == kNoNode) entry.owner = enumeration;
  }

  bool refuse(NodeIndex node, const Property& link, std::string reason) {
    const NodeRecord& record = parts_.nodes[node];
    const size_t offset = parts_.offsetOf(link.valueData, record.sourceOffset);
    if (!kDescriptiveLinks.has(link.element)) parts_.fatal(offset, record, elementName(link.element), reason);
    parts_.findings.note(offset, node, elementName(link.element), std::move(reason));
    return false;
  }

  DescriptionParts& parts_;
  const NameTable& names_;
  std::array<NodeIndex, kElements> latest_;  // by element, what was named last
};

}  // namespace

LinkKinds resolveLinks(DescriptionParts& parts, const NameTable& names) {
  LinkResolver resolver(parts, names);
  LinkKinds kinds(parts.nodes.size());
  for (NodeIndex node = 0; node < parts.nodes.size(); ++node) kinds[node] = resolver.resolve(node);
  return kinds;
}

}  // namespace GENAPI_NAMESPACE
