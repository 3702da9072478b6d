#include <cmath>
#include <limits>
#include <memory>

#include "Commands.h"
#include "Dependents.h"
#include "Description.h"
#include "Value.h"

namespace tool {
namespace {

struct DescribeOptions {
  std::string name;
  bool dependents = true;
};

// The library has no words for the last two.
std::string representationName(const Node& node) {
  switch (node.infoInteger(NI_Representation)) {
    case 5: return "IPV4Address";
    case 6: return "MACAddress";
    default: return node.infoText(NI_Representation);
  }
}

// Adds what `read` yields, unless the node has no such information or cannot tell it now.
template <class Read>
void add(Json& json, const char* key, Read read) {
  try {
    json[key] = read();
  } catch (const Failure& failure) {
    if (failure.code() != OXGENAPI_E_NOT_SUPPORTED && failure.code() != OXGENAPI_E_INVALID_HANDLE)
      json[key] = Json{{"error", toJson(failure)}};
  }
}

void addNumber(Json& json, const Node& node, const char* key, TNodeInfo info) {
  if (node.type() == NT_Integer)
    add(json, key, [&] { return node.infoInteger(info); });
  else if (node.type() == NT_Float)
    add(json, key, [&] { return node.infoReal(info); });
}

void addText(Json& json, const Node& node, const char* key, TNodeInfo info) {
  add(json, key, [&] { return node.infoText(info); });
  const auto text = json.find(key);
  if (text != json.end() && text->is_string() && text->get_ref<const std::string&>().empty()) json.erase(text);
}

Json entry(const NodeMap& map, const std::string& name) {
  const Node node = map.node(name);
  Json json{{"name", node.text()}};
  add(json, "value", [&] { return node.integer(); });
  add(json, "access", [&] { return accessName(node.access()); });
  return json;
}

void addLists(Json& json, const NodeMap& map, const Node& node) {
  if (node.type() == NT_Enumeration) {
    json["entries"] = Json::array();
    for (const std::string& name : node.list(NL_EnumEntries)) json["entries"].push_back(entry(map, name));
  }
  add(json, "selectedBy", [&] { return node.list(NL_SelectingFeatures); });
  add(json, "selects", [&] { return node.list(NL_SelectedFeatures); });
  add(json, node.type() == NT_Category ? "features" : "reads", [&] { return node.list(NL_Children); });
}

Json describe(Session& session, const Node& node, const DescribeOptions& options) {
  Json json{{"name", node.name()}, {"type", typeName(node.type())}};
  addText(json, node, "displayName", NI_DisplayName);
  addText(json, node, "toolTip", NI_ToolTip);
  addText(json, node, "description", NI_Description);
  add(json, "access", [&] { return node.infoText(NI_AccessMode); });
  add(json, "visibility", [&] { return node.infoText(NI_Visibility); });
  if (hasValue(node.type())) add(json, "value", [&] { return valueJson(node); });
  addNumber(json, node, "min", NI_Min);
  addNumber(json, node, "max", NI_Max);
  addNumber(json, node, "increment", NI_Increment);
  addText(json, node, "unit", NI_Unit);
  add(json, "representation", [&] { return representationName(node); });
  add(json, "caching", [&] { return node.infoText(NI_CachingMode); });
  add(json, "pollingTimeMs", [&] { return node.infoInteger(NI_PollingTime); });
  add(json, "registerAddress", [&] { return node.infoInteger(NI_RegisterAddress); });
  add(json, "registerLength", [&] { return node.infoInteger(NI_RegisterLength); });
  addText(json, node, "eventId", NI_EventID);
  addText(json, node, "alias", NI_AliasName);
  add(json, "feature", [&] { return node.infoBoolean(NI_IsFeature); });
  add(json, "streamable", [&] { return node.infoBoolean(NI_IsStreamable); });
  add(json, "deprecated", [&] { return node.infoBoolean(NI_IsDeprecated); });
  addLists(json, session.map(), node);
  if (options.dependents)
    json["dependents"] = dependentFeatures(*loadDescriptionBytes(session.device().description()), node.name());
  return json;
}

// The numbers that stand for "no limit": the ends of what a register of some size can hold.
bool isUnlimited(const Json& value) {
  if (value.is_number_integer()) return value == INT64_MIN || value == INT64_MAX;
  const double number = value.is_number_float() ? std::abs(value.get<double>()) : 0;
  return number == static_cast<double>(std::numeric_limits<float>::max()) ||
         number >= std::numeric_limits<double>::max();
}

std::string fieldText(const std::string& key, const Json& value) {
  if ((key == "min" || key == "max") && isUnlimited(value)) return "none";
  if (value.is_string()) return value.get<std::string>();
  if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
  if (value.is_object()) {
    const Json& error = value.at("error");
    return error.at("text").get<std::string>() + " (" + error.at("code").get<std::string>() + ")";
  }
  if (!value.is_array()) return value.dump();
  std::string text;
  for (const Json& item : value) {
    text += text.empty() ? "" : ", ";
    text += item.is_string() ? item.get<std::string>()
                             : item.at("name").get<std::string>() + " (" + item.value("value", Json(nullptr)).dump() +
                                   ", " + item.value("access", std::string("?")) + ")";
  }
  return text.empty() ? "none" : text;
}

void run(Session& session, const DescribeOptions& options) {
  const Node node = session.map().node(options.name);
  const Json json = describe(session, node, options);
  if (session.output().json()) {
    session.output().document(json);
    return;
  }
  for (const auto& [key, value] : json.items())
    session.output().field(key, key == "value" && !value.is_object() ? valueText(node) : fieldText(key, value));
}

}  // namespace

void addDescribe(const Command& program) {
  auto options = std::make_shared<DescribeOptions>();
  const Command command = program.subcommand("describe", "Show everything that is known about a node");
  command.option("name", options->name, "Node").required().type("NAME");
  command.flag("!--no-dependents", options->dependents, "Leave out the features that depend on it");
  command.footer("Example:\n  oxgenapi describe ExposureTime");
  command.runs([options](Session& session) { run(session, *options); });
}

}  // namespace tool
