#include "description/DependencyGraph.h"

#include <cstring>
#include <unordered_set>

#include "description/AdjacencyLists.h"
#include "description/Circles.h"
#include "description/Description.h"
#include "description/ElementRules.h"
#include "description/Limits.h"
#include "description/NodeTraits.h"

namespace GENAPI_NAMESPACE {
namespace {

constexpr ElementSet kParentLinks = kReadingLinks | ElementSet(Element::EnumEntry, Element::pFeature);
constexpr ElementSet kDependencyLinks =
    kParentLinks | kGuards |
    ElementSet(Element::pValueCopy, Element::pInvalidator, Element::pPort, Element::p1212Parser);

// Calls visit(node, target) for every link of one of those elements.
template <class Visit>
void forEachLink(const Description& description, ElementSet elements, Visit&& visit) {
  const NodeIndex count = static_cast<NodeIndex>(description.nodeCount());
  for (NodeIndex node = 0; node < count; ++node) {
    for (const Property& property : description.properties(node))
      if (elements.has(property.element)) visit(node, property.target);
  }
}

AdjacencyLists dependentsOf(const Description& description) {
  return AdjacencyLists(description.nodeCount(), [&](auto&& visit) {
    forEachLink(description, kDependencyLinks, [&](NodeIndex node, NodeIndex target) { visit(target, node); });
    forEachLink(description, ElementSet(Element::pSelected), visit);
  });
}

AdjacencyLists backLinks(const Description& description, ElementSet elements) {
  return AdjacencyLists(description.nodeCount(), [&](auto&& visit) {
    forEachLink(description, elements, [&](NodeIndex node, NodeIndex target) { visit(target, node); });
  });
}

// A list of nodes in one allocation.
struct Closure {
  uint32_t size;
  NodeIndex nodes[1];

  static constexpr size_t bytes(size_t count) { return sizeof(Closure) + count * sizeof(NodeIndex); }
  std::span<const NodeIndex> list() const { return {nodes, size}; }

  static const Closure* make(std::span<const NodeIndex> list) {
    Closure* const closure = static_cast<Closure*>(::operator new(bytes(list.size())));
    closure->size = static_cast<uint32_t>(list.size());
    if (!list.empty()) std::memcpy(closure->nodes, list.data(), list.size_bytes());
    return closure;
  }
  static void free(const Closure* closure) { ::operator delete(const_cast<Closure*>(closure)); }
};

}  // namespace

struct DependencyGraph::Data {
  explicit Data(const Description& source)
      : description(source),
        direct(dependentsOf(source)),
        parents(backLinks(source, kParentLinks)),
        selectors(backLinks(source, ElementSet(Element::pSelected))),
        traits(source, parents),
        closures(new std::atomic<const Closure*>[source.nodeCount()]()) {}
  ~Data() {
    for (size_t i = 0; i < description.nodeCount(); ++i) Closure::free(closures[i].load(std::memory_order_relaxed));
  }
  Data(const Data&) = delete;
  Data& operator=(const Data&) = delete;

  bool isCategory(NodeIndex node) const { return description.node(node).type == NodeType::Category; }
  bool isPort(NodeIndex node) const { return description.node(node).type == NodeType::Port; }

  const Description& description;
  AdjacencyLists direct;     // node -> who forgets when it changes
  AdjacencyLists parents;    // node -> who reads it
  AdjacencyLists selectors;  // node -> who names it in pSelected
  NodeTraits traits;
  std::unique_ptr<std::atomic<const Closure*>[]> closures;  // null where not yet asked for, or not remembered
  std::atomic<size_t> closureBytes{0};
  Derivations circles{1};
};

DependencyGraph::DependencyGraph(const Description& description) : data_(std::make_unique<Data>(description)) {}

DependencyGraph::~DependencyGraph() = default;

std::span<const NodeIndex> DependencyGraph::directDependents(NodeIndex x) const { return data_->direct.of(x); }

std::span<const NodeIndex> DependencyGraph::readingParents(NodeIndex x) const { return data_->parents.of(x); }

std::span<const NodeIndex> DependencyGraph::dependents(NodeIndex x, WalkScratch& scratch) const {
  std::atomic<const Closure*>& place = data_->closures[x];
  if (const Closure* known = place.load(std::memory_order_acquire)) return known->list();

  if (scratch.mark.size() != data_->description.nodeCount()) {
    scratch.mark.assign(data_->description.nodeCount(), 0);
    scratch.epoch = 0;
  }
  if (++scratch.epoch == 0) {
    std::fill(scratch.mark.begin(), scratch.mark.end(), 0);
    scratch.epoch = 1;
  }
  std::vector<NodeIndex>& found = scratch.found;
  found.clear();
  const auto reach = [&](NodeIndex from) {
    for (NodeIndex dependent : data_->direct.of(from)) {
      if (scratch.mark[dependent] == scratch.epoch) continue;
      scratch.mark[dependent] = scratch.epoch;
      found.push_back(dependent);
    }
  };
  reach(x);
  for (size_t i = 0; i < found.size(); ++i) reach(found[i]);
  std::sort(found.begin(), found.end());

  const size_t bytes = Closure::bytes(found.size());
  if (data_->closureBytes.fetch_add(bytes, std::memory_order_relaxed) + bytes > kMaxClosureBytes) {
    data_->closureBytes.fetch_sub(bytes, std::memory_order_relaxed);
    return found;
  }
  const Closure* const made = Closure::make(found);
  const Closure* other = nullptr;
  if (place.compare_exchange_strong(other, made, std::memory_order_acq_rel, std::memory_order_acquire))
    return made->list();
  Closure::free(made);
  data_->closureBytes.fetch_sub(bytes, std::memory_order_relaxed);
  return other->list();
}

bool DependencyGraph::dependsOnItself(NodeIndex x) const {
  return data_->circles
      .get<Circles>(0, [&] { return std::make_unique<const Circles>(data_->direct, data_->description.nodeCount()); })
      .has(x);
}

std::vector<NodeIndex> DependencyGraph::selected(NodeIndex x) const {
  std::vector<NodeIndex> result;
  std::unordered_set<NodeIndex> seen;
  for (const Property& property : data_->description.properties(x)) {
    if (property.element != Element::pSelected || data_->isPort(property.target)) continue;
    if (seen.insert(property.target).second) result.push_back(property.target);
  }
  const size_t targets = result.size();
  std::vector<NodeIndex> parents;  // of one target: theirs come after them, level by level
  for (size_t i = 0; i < targets; ++i) {
    parents.assign(1, result[i]);
    for (size_t at = 0; at < parents.size(); ++at) {
      for (NodeIndex parent : data_->parents.of(parents[at]))
        if (!data_->isCategory(parent) && !data_->isPort(parent) && seen.insert(parent).second)
          parents.push_back(parent);
    }
    result.insert(result.end(), parents.begin() + 1, parents.end());
  }
  return result;
}

std::vector<NodeIndex> DependencyGraph::selecting(NodeIndex x) const {
  std::vector<NodeIndex> result;
  if (data_->isPort(x)) return result;
  // Whatever is read to get at x: if that is selected, so is x. Categories are selected only by their own name.
  std::vector<NodeIndex> read(1, x);
  std::unordered_set<NodeIndex> seen;
  seen.insert(x);
  for (size_t at = 0; at < read.size(); ++at) {
    const std::span<const NodeIndex> selectors = data_->selectors.of(read[at]);
    result.insert(result.end(), selectors.begin(), selectors.end());
    if (data_->isCategory(read[at])) continue;
    for (const Property& property : data_->description.properties(read[at]))
      if (kParentLinks.has(property.element) && seen.insert(property.target).second) read.push_back(property.target);
  }
  std::sort(result.begin(), result.end());
  result.erase(std::unique(result.begin(), result.end()), result.end());
  return result;
}

const NodeTraits& DependencyGraph::traits() const { return data_->traits; }

}  // namespace GENAPI_NAMESPACE
