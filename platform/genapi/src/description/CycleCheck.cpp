// Looks for cycles among links that must not have any. Depth first, with a stack of its own, and only through nodes
// that have a link of the kind in question.
#include "description/DescriptionBuilder.h"
#include "description/ElementRules.h"

namespace GENAPI_NAMESPACE {
namespace {

class CycleSearch {
 public:
  CycleSearch(const DescriptionParts& parts, ElementSet links, const char* kind)
      : parts_(parts), links_(links), kind_(kind), states_(parts.nodes.size(), State::Unseen) {}

  void run() {
    for (NodeIndex node = 0; node < parts_.nodes.size(); ++node) {
      if (states_[node] == State::Unseen) walk(node);
    }
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
        refuse(target);
      } else if (states_[target] == State::Unseen) {
        open(target);
      }
    }
  }

  void open(NodeIndex node) {
    states_[node] = State::Open;
    path_.push_back({node, parts_.nodes[node].firstProperty});
  }

  NodeIndex nextTarget(Step& step) const {
    const NodeRecord& record = parts_.nodes[step.node];
    const uint32_t end = record.firstProperty + record.propertyCount;
    while (step.next < end) {
      const Property& property = parts_.properties[step.next++];
      if (links_.has(property.element)) return property.target;
    }
    return kNoNode;
  }

  [[noreturn]] void refuse(NodeIndex closing) const {
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
    text += quoted(parts_.nodes[closing].name()) + " form a " + kind_ + " cycle";
    parts_.findings.fatal(kNoOffset, std::move(text));
  }

  const DescriptionParts& parts_;
  const ElementSet links_;
  const char* const kind_;
  std::vector<State> states_;
  std::vector<Step> path_;
};

}  // namespace

void refuseCycles(const DescriptionParts& parts, bool isSchema10) {
  CycleSearch(parts, ElementSet(Element::pSelected), "selector").run();
  CycleSearch(parts, ElementSet(Element::pFeature), "feature").run();
  CycleSearch(parts, kWritingLinks, "value").run();
  if (!isSchema10) CycleSearch(parts, kReadingLinks | kWritingLinks, "dependency").run();
}

}  // namespace GENAPI_NAMESPACE
