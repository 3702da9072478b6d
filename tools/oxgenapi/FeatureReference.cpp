#include "FeatureReference.h"

#include <GenApi/IDeviceInfo.h>
#include <GenApi/IEnumeration.h>
#include <GenApi/ISelector.h>

#include "Dependents.h"
#include "Description.h"

namespace tool {
namespace {

using namespace GENAPI_NAMESPACE;

void addText(Json& json, const char* key, std::string text) {
  if (!text.empty()) json[key] = std::move(text);
}

const char* kindOf(INode& node) {
  switch (node.GetPrincipalInterfaceType()) {
    case intfIInteger: return "integer";
    case intfIBoolean: return "boolean";
    case intfICommand: return "command";
    case intfIFloat: return "float";
    case intfIString: return "string";
    case intfIRegister: return "register";
    case intfICategory: return "category";
    case intfIEnumeration: return "enumeration";
    case intfIEnumEntry: return "entry";
    case intfIPort: return "port";
    default: return "node";
  }
}

// The access that the description fixes: the node's own word, else that of the registers it ends in. What changes while
// the device runs is not in the description.
std::string fixedAccess(INodeMap& map, INode& node) {
  std::string own = propertyText(node, "AccessMode");
  std::string imposed = propertyText(node, "ImposedAccessMode");
  if (!imposed.empty() && imposed != "RW") return imposed;
  if (!own.empty()) return own;
  if (propertyText(node, "NodeType").ends_with("SwissKnife")) return "RO";
  std::string common;
  for (const std::string& terminal : words(propertyText(node, "pTerminal"))) {
    INode* end = map.GetNode(terminal.c_str());
    const std::string access = end == nullptr ? "" : propertyText(*end, "AccessMode");
    if (access.empty() || (!common.empty() && access != common)) return "";
    common = access;
  }
  return common;
}

Json namesOf(const FeatureList_t& features) {
  Json names = Json::array();
  for (const IValue* feature : features) names.push_back(textOf(dynamic_cast<const INode&>(*feature).GetName()));
  return names;
}

void addSelectors(Json& json, INode& node) {
  auto* selector = dynamic_cast<ISelector*>(&node);
  if (selector == nullptr) return;
  FeatureList_t selected;
  FeatureList_t selecting;
  selector->GetSelectedFeatures(selected);
  selector->GetSelectingFeatures(selecting);
  if (!selected.empty()) json["selects"] = namesOf(selected);
  if (!selecting.empty()) json["selectedBy"] = namesOf(selecting);
}

// The features that decide whether an entry can be chosen.
std::vector<std::string> decidersOf(INode& entry, const Deciders& deciders, const std::string& enumeration) {
  std::vector<std::string> conditions;
  for (const Link& link : linksOf(entry))
    if (link.element == "pIsAvailable" || link.element == "pIsImplemented") conditions.push_back(link.target);
  return conditions.empty() ? conditions : deciders.of(conditions, enumeration);
}

void addEntries(Json& json, INode& node, const Deciders& deciders) {
  auto* enumeration = dynamic_cast<IEnumeration*>(&node);
  if (enumeration == nullptr) return;
  NodeList_t entries;
  enumeration->GetEntries(entries);
  json["entries"] = Json::array();
  for (INode* entry : entries) {
    json["entries"].push_back(
        Json::array({textOf(dynamic_cast<IEnumEntry&>(*entry).GetSymbolic()), propertyText(*entry, "Value"),
                     textOf(entry->GetToolTip()), decidersOf(*entry, deciders, textOf(node.GetName()))}));
  }
}

// A limit is a number of the description, or what another node says.
void addLimits(Json& json, INode& node) {
  for (const char* limit : {"Min", "Max", "Inc"}) {
    std::string text = propertyText(node, limit);
    addText(json, limit, text.empty() ? propertyText(node, (std::string("p") + limit).c_str()) : std::move(text));
  }
}

Json describe(INodeMap& map, INode& node, const Deciders& deciders) {
  Json json{{"type", propertyText(node, "NodeType")}, {"kind", kindOf(node)}};
  const std::string name = textOf(node.GetName());
  if (std::string display = textOf(node.GetDisplayName()); display != name)
    addText(json, "displayName", std::move(display));
  addText(json, "toolTip", textOf(node.GetToolTip()));
  if (std::string description = textOf(node.GetDescription()); description != json.value("toolTip", ""))
    addText(json, "description", std::move(description));
  json["visibility"] = propertyText(node, "Visibility");
  addText(json, "access", fixedAccess(map, node));
  addText(json, "unit", propertyText(node, "Unit"));
  addText(json, "representation", propertyText(node, "Representation"));
  addLimits(json, node);
  for (const char* property : {"Address", "Length", "Formula", "FormulaTo", "FormulaFrom", "EventID"})
    addText(json, property, propertyText(node, property));
  if (node.IsDeprecated()) json["deprecated"] = true;
  if (node.IsStreamable()) json["streamable"] = true;
  addEntries(json, node, deciders);
  addSelectors(json, node);
  Json links = Json::array();
  for (const Link& link : linksOf(node))
    if (link.element == "pFeature")
      json["features"].push_back(link.target);
    else if (link.element != "pSelected" && link.element != "pEnumEntry" && link.element != "pPort")
      links.push_back(Json::array({link.element, link.target}));
  if (!links.empty()) json["links"] = std::move(links);
  return json;
}

}  // namespace

Json featureReference(INodeMap& map) {
  auto& device = dynamic_cast<IDeviceInfo&>(map);
  const Deciders deciders(map);
  Version_t version{};
  device.GetDeviceVersion(version);
  Json nodes = Json::object();
  NodeList_t all;
  map.GetNodes(all);
  for (INode* node : all) nodes[textOf(node->GetName())] = describe(map, *node, deciders);
  return {{"vendor", textOf(device.GetVendorName())},
          {"model", textOf(device.GetModelName())},
          {"version", std::to_string(version.Major) + "." + std::to_string(version.Minor) + "." +
                          std::to_string(version.SubMinor)},
          {"nodes", std::move(nodes)}};
}

}  // namespace tool
