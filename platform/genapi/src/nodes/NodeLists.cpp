// Relations between nodes, as lists.
#include <algorithm>
#include <utility>

#include "description/ElementRules.h"
#include "nodes/NodeBase.h"

namespace GENAPI_NAMESPACE {

namespace {

// Links that make a node a child of another one.
constexpr ElementSet kChildLinks =
    kReadingLinks | ElementSet(Element::p1212Parser, Element::EnumEntry, Element::pFeature);

void appendOnce(std::vector<NodeIndex>& list, NodeIndex node) {
  if (std::find(list.begin(), list.end(), node) == list.end()) list.push_back(node);
}

std::vector<NodeIndex> linkTargets(const NodeBase& node, ElementSet links) {
  std::vector<NodeIndex> list;
  list.reserve(node.properties().size());
  for (const Property& each : node.properties())
    if (links.has(each.element)) list.push_back(each.target);
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
  const Description& description = node.description();
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
      if (!kWritingLinks.has(links[i].element)) continue;
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
    case ctReadingChildren: return linkTargets(*this, kChildLinks);
    case ctWritingChildren: return linkTargets(*this, kWritingLinks);
    case ctInvalidatingChildren: return linkTargets(*this, kChildLinks | ElementSet(Element::pInvalidator));
    case ctParentNodes: {
      const auto parents = evaluation().graph().readingParents(index_);
      return {parents.begin(), parents.end()};
    }
    case ctDependingNodes: {
      const AutoLock lock(device_.dispatch.lock());
      const auto nodes = evaluation().dependents(index_);
      std::vector<NodeIndex> list(nodes.begin(), nodes.end());
      std::erase(list, index_);
      return list;
    }
    case ctTerminalNodes: return terminals(*this);
  }
  return {};
}

void NodeBase::GetChildren(NodeList_t& Children, ELinkType LinkType) const {
  const std::vector<NodeIndex> list = related(LinkType);
  Children.clear();
  Children.reserve(list.size());
  for (const NodeIndex each : list) Children.push_back(&other(each));
}

void NodeBase::GetParents(NodeList_t& Parents) const { GetChildren(Parents, ctParentNodes); }

namespace {
// Ports have no value and never appear.
void appendValues(const NodeBase& node, const std::vector<NodeIndex>& nodes, FeatureList_t& list) {
  list.clear();
  list.reserve(nodes.size());
  for (const NodeIndex each : nodes)
    if (auto* value = dynamic_cast<IValue*>(&node.other(each))) list.push_back(value);
}
}  // namespace

void NodeBase::GetSelectedFeatures(FeatureList_t& list) const {
  appendValues(*this, evaluation().graph().selected(index_), list);
}

void NodeBase::GetSelectingFeatures(FeatureList_t& list) const {
  appendValues(*this, evaluation().graph().selecting(index_), list);
}

}  // namespace GENAPI_NAMESPACE
