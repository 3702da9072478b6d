#include "ShowValues.h"

#include "Value.h"

namespace tool {
namespace {

template <class Show, class Failed>
void forReadable(Session& session, const std::vector<const Node*>& nodes, Show show, Failed failed) {
  for (const Node* node : nodes) {
    try {
      if (node->readable()) show(*node);
    } catch (const Failure& failure) {
      failed(*node, failure);
      session.report(failure);
    }
  }
}

}  // namespace

Json valuesJson(Session& session, const std::vector<const Node*>& nodes) {
  Json values = Json::object();
  forReadable(
      session, nodes, [&](const Node& node) { values[node.name()] = valueJson(node); },
      [&](const Node& node, const Failure& failure) {
        values[node.name()] = Json{{"error", toJson(failure)}};
      });
  return values;
}

void showValues(Session& session, const std::vector<const Node*>& nodes) {
  forReadable(
      session, nodes, [&](const Node& node) { session.output().line("  " + node.name() + " = " + valueText(node)); },
      [](const Node&, const Failure&) {});
}

}  // namespace tool
