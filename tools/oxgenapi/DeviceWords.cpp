#include "DeviceWords.h"

#include <OxCamera/oxcamera.hpp>

namespace tool {

std::vector<std::string> DeviceWords::features() const { return features(NT_Invalid); }

std::vector<std::string> DeviceWords::features(TNodeType type) const {
  std::vector<std::string> found;
  for (const std::string& name : nodes()) {
    const auto node = map_().tryNode(name);
    if (node && node->infoBoolean(NI_IsFeature) && (type == NT_Invalid || node->type() == type)) found.push_back(name);
  }
  return found;
}

std::vector<std::string> DeviceWords::valuesOf(const std::string& feature) const {
  const auto node = map_().tryNode(feature);
  if (!node) return {};
  if (node->type() == NT_Boolean) return {"true", "false"};
  std::vector<std::string> entries;
  if (node->type() == NT_Enumeration) {
    for (const std::string& name : node->list(NL_EnumEntries))
      if (const Node entry = map_().node(name); entry.readable()) entries.push_back(entry.text());
  }
  return entries;
}

std::vector<std::string> DeviceWords::cameras() {
  std::vector<std::string> ids;
  for (oxgenapi::FoundCamera& camera : oxgenapi::findCameras(std::chrono::milliseconds(200)))
    ids.push_back(std::move(camera.id));
  return ids;
}

}  // namespace tool
