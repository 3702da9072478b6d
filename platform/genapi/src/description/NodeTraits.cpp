#include "description/NodeTraits.h"

#include "description/ElementRules.h"

namespace GENAPI_NAMESPACE {
namespace {

// Links whose target has a say in the node's own access mode: sources, copies, variables, addresses, entries.
constexpr ElementSet kAccessLinks(Element::pValue, Element::pValueCopy, Element::pIndex, Element::pValueIndexed,
                                  Element::pValueDefault, Element::pVariable, Element::pAddress, Element::IntSwissKnife,
                                  Element::pOffset, Element::pLength, Element::pCommandValue, Element::EnumEntry);

// Links whose target has a say in the node's own limits, when it has none of its own.
constexpr ElementSet kLimitLinks(Element::pValue, Element::pValueCopy, Element::pValueIndexed, Element::pValueDefault);

// Links whose target's value decides the node's own limits.
constexpr ElementSet kLimitingLinks(Element::pMin, Element::pMax, Element::pLength, Element::pVariable);

// Links whose target has a say in the node's own increment, when it has none of its own.
constexpr ElementSet kIncrementLinks(Element::pValue, Element::pValueIndexed, Element::pValueDefault);

// Spreads a property of some nodes to every node that has a link of those elements to one of them, and beyond, unless
// `set` leaves the node without it.
template <class Has, class Set>
void spread(const Description& description, ElementSet links, Has&& has, Set&& set) {
  const NodeIndex count = static_cast<NodeIndex>(description.nodeCount());
  std::vector<NodeIndex> reached;
  for (NodeIndex node = 0; node < count; ++node)
    if (has(node)) reached.push_back(node);
  if (reached.empty()) return;
  const AdjacencyLists followers(count, [&](auto&& visit) {
    for (NodeIndex node = 0; node < count; ++node) {
      for (const Property& property : description.properties(node))
        if (links.has(property.element)) visit(property.target, node);
    }
  });
  for (size_t i = 0; i < reached.size(); ++i) {
    for (const NodeIndex follower : followers.of(reached[i])) {
      if (has(follower)) continue;
      set(follower);
      if (has(follower)) reached.push_back(follower);
    }
  }
}

ECachingMode ownCachingMode(const Description& description, NodeIndex node) {
  const NodeType type = description.node(node).type;
  if (kRegisterKinds.has(type)) {
    const Property* const cachable = description.find(node, Element::Cachable);
    if (cachable != nullptr) return static_cast<ECachingMode>(cachable->word);
    return type == NodeType::FloatReg ? WriteAround : WriteThrough;
  }
  return type == NodeType::Float && description.find(node, Element::Value) != nullptr ? WriteAround : WriteThrough;
}

}  // namespace

NodeTraits::NodeTraits(const Description& description, const AdjacencyLists& parents)
    : traits_(description.nodeCount()) {
  findCachingModes(description, parents);
  findUncacheableIncrements(description);
  findUncacheableAccess(description);
  findValueFollowers(description);
  findFeatures(description);
}

void NodeTraits::findCachingModes(const Description& description, const AdjacencyLists& parents) {
  const NodeIndex count = static_cast<NodeIndex>(traits_.size());
  std::vector<NodeIndex> reached[2];  // NoCache first: what it reaches is decided
  for (NodeIndex node = 0; node < count; ++node) {
    const ECachingMode mode = ownCachingMode(description, node);
    traits_[node].cachingMode = static_cast<uint8_t>(mode);
    if (mode == NoCache) reached[0].push_back(node);
    if (mode == WriteAround) reached[1].push_back(node);
  }
  for (size_t pass = 0; pass < 2; ++pass) {
    const ECachingMode mode = pass == 0 ? NoCache : WriteAround;
    for (size_t i = 0; i < reached[pass].size(); ++i) {
      for (NodeIndex parent : parents.of(reached[pass][i])) {
        const ECachingMode before = static_cast<ECachingMode>(traits_[parent].cachingMode);
        if (Combine(before, mode) == before) continue;
        traits_[parent].cachingMode = static_cast<uint8_t>(mode);
        reached[pass].push_back(parent);
      }
    }
  }
}

// Increments that an uncached value decides.
void NodeTraits::findUncacheableIncrements(const Description& description) {
  const NodeIndex count = static_cast<NodeIndex>(traits_.size());
  const auto hasOwn = [&](NodeIndex node) {
    return description.find(node, Element::Inc) != nullptr || description.find(node, Element::pInc) != nullptr;
  };
  for (NodeIndex node = 0; node < count; ++node) {
    const bool isTable = !kRegisterKinds.has(description.node(node).type) && !hasOwn(node);
    for (const Property& property : description.properties(node)) {
      const bool decides = property.element == Element::pInc || property.element == Element::pVariable ||
                           (isTable && property.element == Element::pIndex);
      if (decides && cachingMode(property.target) == NoCache) traits_[node].incrementCacheable = false;
    }
  }
  spread(
      description, kIncrementLinks, [&](NodeIndex node) { return !traits_[node].incrementCacheable; },
      [&](NodeIndex node) { traits_[node].incrementCacheable = hasOwn(node); });
}

void NodeTraits::findUncacheableAccess(const Description& description) {
  const NodeIndex count = static_cast<NodeIndex>(traits_.size());
  for (NodeIndex node = 0; node < count; ++node) {
    // The index of a table chooses whose mode counts; that of a register only moves its address.
    const bool indexDecides = !kRegisterKinds.has(description.node(node).type);
    // Copies whose increments differ cannot be written together.
    const bool incrementsDecide = description.find(node, Element::pValueCopy) != nullptr;
    for (const Property& property : description.properties(node)) {
      const bool decides = kGuards.has(property.element) || (indexDecides && property.element == Element::pIndex);
      if (decides && cachingMode(property.target) == NoCache) traits_[node].accessModeCacheable = false;
      if (!incrementsDecide || (property.element != Element::pValue && property.element != Element::pValueCopy))
        continue;
      if (!traits_[property.target].incrementCacheable) traits_[node].accessModeCacheable = false;
    }
  }
  spread(
      description, kAccessLinks | kGuards | ElementSet(Element::pPort),
      [&](NodeIndex node) { return !traits_[node].accessModeCacheable; },
      [&](NodeIndex node) { traits_[node].accessModeCacheable = false; });
}

void NodeTraits::findValueFollowers(const Description& description) {
  const NodeIndex count = static_cast<NodeIndex>(traits_.size());
  for (NodeIndex node = 0; node < count; ++node) {
    Traits& traits = traits_[node];
    const bool isTable = description.find(node, Element::pIndex) && !kRegisterKinds.has(description.node(node).type);
    traits.accessModeFollowsValues = traits.limitsFollowValues = isTable;
    for (const Property& property : description.properties(node)) {
      traits.accessModeFollowsValues |= kGuards.has(property.element) || property.element == Element::pValueCopy;
      traits.limitsFollowValues |= kLimitingLinks.has(property.element);
    }
  }
  spread(
      description, kAccessLinks | ElementSet(Element::pPort),
      [&](NodeIndex node) { return traits_[node].accessModeFollowsValues; },
      [&](NodeIndex node) { traits_[node].accessModeFollowsValues = true; });
  spread(
      description, kLimitLinks, [&](NodeIndex node) { return traits_[node].limitsFollowValues; },
      [&](NodeIndex node) { traits_[node].limitsFollowValues = true; });
}

void NodeTraits::findFeatures(const Description& description) {
  const NodeIndex root = description.indexOf("Root");
  if (root == kNoNode || description.node(root).type != NodeType::Category) return;
  std::vector<NodeIndex> categories(1, root);
  while (!categories.empty()) {
    const NodeIndex category = categories.back();
    categories.pop_back();
    for (const Property& property : description.properties(category)) {
      if (property.element != Element::pFeature || traits_[property.target].feature) continue;
      traits_[property.target].feature = true;
      if (description.node(property.target).type == NodeType::Category) categories.push_back(property.target);
    }
  }
}

}  // namespace GENAPI_NAMESPACE
