// Documentation addresses with placeholders: $(Sys::ModelName), $(Gain).
#include <climits>
#include <clocale>
#include <string>

#include <unistd.h>

#include "GenApi/IDeviceInfo.h"
#include "GenApi/INodeMap.h"
#include "nodes/NodeBase.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;
using GENICAM_NAMESPACE::Version_t;

namespace {

constexpr std::string_view kUnknown = "Unknown";

std::string versionText(const Version_t& version) {
  return std::to_string(version.Major) + "." + std::to_string(version.Minor) + "." + std::to_string(version.SubMinor);
}

std::string applicationName() {
  char path[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof(path));
  if (length <= 0) return std::string(kUnknown);
  const std::string_view whole(path, static_cast<size_t>(length));
  return std::string(whole.substr(whole.rfind('/') + 1));
}

// "de_DE.UTF-8" is "de"; the C locale has no language and counts as English.
std::string language() {
  const char* locale = std::setlocale(LC_MESSAGES, nullptr);
  const std::string_view name = locale ? locale : "";
  const bool named = name.size() >= 2 && name != "POSIX" && (name.size() == 2 || name[2] == '_' || name[2] == '.');
  return named ? std::string(name.substr(0, 2)) : "en";
}

std::string systemText(const NodeBase& node, std::string_view word) {
  const DeviceTexts& device = node.description().device();
  if (word == "NodeName") return std::string(node.name());
  if (word == "ModelName") return std::string(device.modelName);
  if (word == "VendorName") return std::string(device.vendorName);
  if (word == "StandardNamespace") return std::string(device.standardNameSpace);
  if (word == "DeviceVersion") return versionText(device.deviceVersion);
  if (word == "SchemaVersion") return versionText(device.schemaVersion);
  if (word == "Application") return applicationName();
  if (word == "OperatingSystem") return "Linux";
  if (word == "Language") return language();
  if (word == "GenApiVersion") {
    Version_t version;
    uint16_t build;
    dynamic_cast<const IDeviceInfo&>(node.device().map).GetGenApiVersion(version, build);
    return versionText(version);
  }
  return std::string(kUnknown);
}

std::string placeholderText(const NodeBase& node, std::string_view word) {
  constexpr std::string_view kSystem = "Sys::";
  if (word.starts_with(kSystem)) return systemText(node, word.substr(kSystem.size()));
  auto* value = dynamic_cast<IValue*>(node.device().map.GetNode(gcstring(word)));
  if (!value) return std::string(kUnknown);
  try {
    return std::string(value->ToString().view());
  } catch (const GenericException&) {
    return std::string(kUnknown);
  }
}

}  // namespace

gcstring NodeBase::GetDocuURL() const {
  const Property* given = find(Element::DocuURL);
  if (!given) return {};
  std::string_view rest = given->value();
  std::string url;
  for (size_t start; (start = rest.find("$(")) != std::string_view::npos;) {
    const size_t end = rest.find(')', start);
    if (end == std::string_view::npos) break;
    url += rest.substr(0, start);
    url += placeholderText(*this, rest.substr(start + 2, end - start - 2));
    rest.remove_prefix(end + 1);
  }
  url += rest;
  return gcstring(std::move(url));
}

}  // namespace GENAPI_NAMESPACE
