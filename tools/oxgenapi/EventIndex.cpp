#include "EventIndex.h"

#include "Dependents.h"
#include "Description.h"

namespace tool {
namespace {

std::vector<std::string> eventNames(const NodeMap& map) {
  std::vector<std::string> names;
  if (const auto selector = map.tryNode("EventSelector"))
    for (const std::string& entry : selector->list(NL_EnumEntries)) names.push_back(map.node(entry).text());
  return names;
}

// Features of the event Test are called EventTest, EventTestTimestamp and the like. The longest name that fits all of
// them is it, for there may also be an event TestTimestamp.
std::string nameOf(const std::vector<std::string>& features, const std::vector<std::string>& names) {
  std::string best;
  for (const std::string& name : names) {
    const std::string prefix = "Event" + name;
    const bool fits =
        !features.empty() && std::all_of(features.begin(), features.end(),
                                         [&](const std::string& feature) { return feature.starts_with(prefix); });
    if (fits && name.size() > best.size()) best = name;
  }
  return best;
}

}  // namespace

std::map<std::string, EventFacts> eventIndex(Session& session) {
  const NodeMap& map = session.map();
  const Description description = loadDescriptionBytes(session.device().description());
  std::map<std::string, EventFacts> events;
  for (const std::string& name : map.nodeNames()) {
    const auto node = map.tryNode(name);
    const std::string id = node ? node->infoText(NI_EventID) : "";
    if (id.empty()) continue;  // a node without a handle carries no event
    // Mostly a port, through which features read the message.
    const std::vector<std::string> features = dependentFeatures(*description, name);
    std::vector<std::string>& known = events[id].features;
    known.insert(known.end(), features.begin(), features.end());
    if (features.empty()) known.push_back(name);
  }
  const std::vector<std::string> names = eventNames(map);
  for (auto& [id, facts] : events) facts.name = nameOf(facts.features, names);
  return events;
}

}  // namespace tool
