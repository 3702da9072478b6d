// Replaces the names in links by node indices and refuses those that lead nowhere or to the wrong kind of node.
#include "description/DescriptionBuilder.h"
#include "description/ElementRules.h"

namespace GENAPI_NAMESPACE {
namespace {

class LinkResolver {
 public:
  LinkResolver(DescriptionParts& parts, const Description& description) : parts_(parts), description_(description) {}

  void resolve(NodeIndex node) {
    NodeRecord& record = parts_.nodes[node];
    Property* const first = parts_.properties.data() + record.firstProperty;
    Property* const last = first + record.propertyCount;
    Property* kept = first;
    for (Property* property = first; property != last; ++property) {
      if (isLink(property->element) && !follow(node, *property)) continue;
      if (kept != property) *kept = *property;
      ++kept;
    }
    record.propertyCount = static_cast<uint32_t>(kept - first);
  }

 private:
  // False for a link to be left out.
  bool follow(NodeIndex node, Property& link) {
    const NodeRecord& record = parts_.nodes[node];
    const NodeIndex target = description_.indexOf(link.value());
    if (target == kNoNode) return refuse(node, link, "no node named " + quoted(link.value()));
    const NodeType type = parts_.nodes[target].type;
    if (!linkTargets(link.element, record.type).has(type)) {
      return refuse(node, link, quoted(link.value()) + " is a " + std::string(nodeTypeName(type)));
    }
    link.target = target;
    if (link.element == Element::pEnumEntry) adopt(node, link);
    return true;
  }

  // An entry that stands by itself belongs to the first Enumeration that names it.
  void adopt(NodeIndex enumeration, Property& link) {
    link.element = Element::EnumEntry;
    NodeRecord& entry = parts_.nodes[link.target];
    if (entry.owner == kNoNode) entry.owner = enumeration;
  }

  bool refuse(NodeIndex node, const Property& link, std::string reason) {
    const NodeRecord& record = parts_.nodes[node];
    const size_t offset = parts_.offsetOf(link.valueData, record.sourceOffset);
    if (!isDescriptiveLink(link.element)) parts_.fatal(offset, record, elementName(link.element), reason);
    parts_.findings.note(offset, node, elementName(link.element), std::move(reason));
    return false;
  }

  DescriptionParts& parts_;
  const Description& description_;
};

}  // namespace

void resolveLinks(DescriptionParts& parts, const Description& description) {
  LinkResolver resolver(parts, description);
  for (NodeIndex node = 0; node < parts.nodes.size(); ++node) resolver.resolve(node);
}

}  // namespace GENAPI_NAMESPACE
