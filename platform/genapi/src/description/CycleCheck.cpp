// Looks for cycles among links that must not have any. Depth first, with a stack of its own, and only through nodes
// that have a link of the kind in question.
#include "description/DescriptionBuilder.h"
#include "description/ElementRules.h"

namespace GENAPI_NAMESPACE {
namespace {

class CycleSearch {
 public:
  CycleSearch(const DescriptionParts& parts, const LinkKinds& kinds) : parts_(parts), kinds_(kinds) {}

  // Fatal if `links`, which are of the kinds in `mask`, form a cycle; `name` says what kind of cycle.
  void refuse(ElementSet links, uint8_t mask, const char* name) {
    links_ = links;
    mask_ = mask;
    name_ = name;
    states_.assign(parts_.nodes.size(), State::Unseen);
    for (NodeIndex node = 0; node < parts_.nodes.size(); ++node)
      if ((kinds_[node] & mask_) != 0 && states_[node] == State::Unseen) walk(node);
  }

 private:
  enum class State : uint8_t { Unseen, Open, Done };
  struct Step {
    NodeIndex node;
    uint32_t next;  // property to look at next
  };

  void walk(NodeIndex start) {
    open(start);
    while (!path_.empty()) {
      Step& step = path_.back();
      const NodeIndex target = nextTarget(step);
      if (target == kNoNode) {
        states_[step.node] = State::Done;
        path_.pop_back();
      } else if (states_[target] == State::Open) {
        refuseAt(target);
      } else if (states_[target] == State::Unseen) {
        open(target);
      }
    }
  }

  void open(NodeIndex node) {
    states_[node] = State::Open;
    path_.push_back({node, parts_.nodes[node].firstProperty});
  }

  // The next target that links on.
  NodeIndex nextTarget(Step& step) const {
    const NodeRecord& record = parts_.nodes[step.node];
    const uint32_t end = record.firstProperty + record.propertyCount;
    while (step.next < end) {
      const Property& property = parts_.properties[step.next++];
      if (links_.has(property.element) && (kinds_[property.target] & mask_) != 0) return property.target;
    }
    return kNoNode;
  }

  [[noreturn]] void refuseAt(NodeIndex closing) const {
    constexpr size_t kShownNodes = 12;
    size_t first = 0;
    while (path_[first].node != closing) ++first;
    std::string text = "nodes ";
    for (size_t i = first; i < path_.size(); ++i) {
      if (i - first == kShownNodes) {
        text += "... -> ";
        break;
      }
      text += quoted(parts_.nodes[path_[i].node].name()) + " -> ";
    }
    text += quoted(parts_.nodes[closing].name()) + " form a " + name_ + " cycle";
    parts_.findings.fatal(kNoOffset, std::move(text));
  }

  const DescriptionParts& parts_;
  const LinkKinds& kinds_;
  ElementSet links_;
  uint8_t mask_ = 0;
  const char* name_ = "";
  std::vector<State> states_;
  std::vector<Step> path_;
};

}  // namespace

void refuseCycles(const DescriptionParts& parts, const LinkKinds& kinds, bool isSchema10) {
  CycleSearch search(parts, kinds);
  search.refuse(ElementSet(Element::pSelected), kSelects, "selector");
  search.refuse(ElementSet(Element::pFeature), kLists, "feature");
  search.refuse(kWritingLinks, kWrites, "value");
  // Older descriptions may read in circles, which is broken when it happens.
  if (!isSchema10) search.refuse(kReadingLinks | kWritingLinks, kReads | kWrites, "dependency");
}

}  // namespace GENAPI_NAMESPACE
