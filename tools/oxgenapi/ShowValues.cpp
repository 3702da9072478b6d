#include "ShowValues.h"

#include "Value.h"

namespace tool {

Json showValues(Session& session, const std::vector<const Node*>& nodes) {
  Json values = Json::object();
  for (const Node* node : nodes) {
    try {
      if (!node->readable()) {
        continue;
      }
      values[node->name()] = valueJson(*node);
      if (!session.output().json()) {
        session.output().line("  " + node->name() + " = " + valueText(*node));
      }
    } catch (const Failure& failure) {
      values[node->name()] = Json{{"error", toJson(failure)}};
      session.report(failure);
    }
  }
  return values;
}

}  // namespace tool
