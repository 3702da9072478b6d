// Relations between nodes, as lists.
#include <algorithm>
#include <utility>

#include "nodes/NodeBase.h"

namespace GENAPI_NAMESPACE {

namespace {

bool isReadingLink(Element element) {
  switch (element) {
    case Element::pValue:
    case Element::pMin:
    case Element::pMax:
    case Element::pInc:
    case Element::pIndex:
    case Element::pValueIndexed:
    case Element::pValueDefault:
    case Element::pVariable:
    case Element::pAddress:
    case Element::IntSwissKnife:
    case Element::pOffset:
    case Element::pLength:
    case Element::pCommandValue:
    case Element::pChunkID:
    case Element::p1212Parser:
    case Element::EnumEntry:
    case Element::pFeature:
      return true;
    default:
      return false;
  }
}

bool isWritingLink(Element element) {
  return element == Element::pValue || element == Element::pValueCopy || element == Element::pValueIndexed ||
         element == Element::pValueDefault;
}

void appendOnce(std::vector<NodeIndex>& list, NodeIndex node) {
  if (std::find(list.begin(), list.end(), node) == list.end()) list.push_back(node);
}

template <class Accept>
std::vector<NodeIndex> linkTargets(const NodeBase& node, Accept&& accept) {
  std::vector<NodeIndex> list;
  list.reserve(node.properties().size());
  for (const Property& each : node.properties()) {
    if (accept(each.element)) list.push_back(each.target);
  }
  // Each once, at its first mention; long lists by a sort instead of a search per entry.
  std::vector<NodeIndex> sorted = list;
  std::sort(sorted.begin(), sorted.end());
  if (std::adjacent_find(sorted.begin(), sorted.end()) == sorted.end()) return list;
  sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
  std::vector<uint8_t> seen(sorted.size());
  std::erase_if(list, [&](NodeIndex each) {
    const auto at = std::lower_bound(sorted.begin(), sorted.end(), each) - sorted.begin();
    return std::exchange(seen[static_cast<size_t>(at)], uint8_t{1}) != 0;
  });
  return list;
}

// The ends of the writing chains that start at the node.
std::vector<NodeIndex> terminals(const NodeBase& node) {
  const Description& description = node.map().description();
  std::vector<NodeIndex> ends;
  std::vector<NodeIndex> waiting{node.index()};
  std::vector<bool> visited(description.nodeCount());
  while (!waiting.empty()) {
    const NodeIndex current = waiting.back();
    waiting.pop_back();
    if (visited[current]) continue;
    visited[current] = true;
    bool writesOn = false;
    const auto links = description.properties(current);
    for (size_t i = links.size(); i-- > 0;) {  // the first link is visited first
      if (!isWritingLink(links[i].element)) continue;
      waiting.push_back(links[i].target);
      writesOn = true;
    }
    if (!writesOn) appendOnce(ends, current);
  }
  return ends;
}

}  // namespace

std::vector<NodeIndex> NodeBase::related(ELinkType type) const {
  switch (type) {
    case ctReadingChildren:
      return linkTargets(*this, isReadingLink);
    case ctWritingChildren:
      return linkTargets(*this, isWritingLink);
    case ctInvalidatingChildren:
      return linkTargets(*this, [](Element each) { return isReadingLink(each) || each == Element::pInvalidator; });
    case ctParentNodes: {
      const auto parents = map_.graph().readingParents(index_);
      return {parents.begin(), parents.end()};
    }
    case ctDependingNodes: {
      const AutoLock lock(map_.GetLock());
      const auto nodes = map_.graph().dependents(index_, map_.scratch());
      std::vector<NodeIndex> list(nodes.begin(), nodes.end());
      std::erase(list, index_);
      return list;
    }
    case ctTerminalNodes:
      return terminals(*this);
  }
  return {};
}

void NodeBase::GetChildren(NodeList_t& Children, ELinkType LinkType) const {
  const std::vector<NodeIndex> list = related(LinkType);
  Children.clear();
  Children.reserve(list.size());
  for (const NodeIndex each : list) Children.push_back(&map_.node(each));
}

void NodeBase::GetParents(NodeList_t& Parents) const {
  GetChildren(Parents, ctParentNodes);
}

namespace {
// Ports have no value and never appear.
void appendValues(const NodeMap& map, const std::vector<NodeIndex>& nodes, FeatureList_t& list) {
  list.clear();
  list.reserve(nodes.size());
  for (const NodeIndex each : nodes) {
    if (auto* value = dynamic_cast<IValue*>(&map.node(each))) list.push_back(value);
  }
}
}  // namespace

void NodeBase::GetSelectedFeatures(FeatureList_t& list) const {
  appendValues(map_, map_.graph().selected(index_), list);
}

void NodeBase::GetSelectingFeatures(FeatureList_t& list) const {
  appendValues(map_, map_.graph().selecting(index_), list);
}

}  // namespace GENAPI_NAMESPACE
