#include "description/DocumentAttributes.h"

#include <optional>

#include "text/Characters.h"
#include "text/NumberSyntax.h"

namespace GENAPI_NAMESPACE {
namespace {

constexpr std::string_view kRootName = "RegisterDescription";
constexpr std::string_view kNamespaceFamily = "http://www.genicam.org/GenApi/Version_";

class RootReader {
 public:
  RootReader(pugi::xml_node root, DescriptionParts& parts) : root_(root), parts_(parts) {}

  std::string_view text(const char* name) {
    const pugi::xml_attribute attribute = root_.attribute(name);
    if (!attribute) note(name, "missing");
    return text::trimmed(attribute.value());
  }

  Version_t version(const char* major, const char* minor, const char* subMinor) {
    Version_t version;
    version.Major = number(major);
    version.Minor = number(minor);
    version.SubMinor = number(subMinor);
    return version;
  }

  [[noreturn]] void fatal(const std::string& reason) {
    parts_.findings.fatal(offset(), placedText(kRootName, "", "", reason));
  }
  void note(const char* attribute, std::string reason) {
    parts_.findings.note(offset(), kNoNode, attribute, std::move(reason));
  }

 private:
  size_t offset() const { return parts_.offsetOf(root_.name(), kNoOffset); }

  uint16_t number(const char* name) {
    const pugi::xml_attribute attribute = root_.attribute(name);
    if (!attribute) {
      note(name, "missing");
      return 0;
    }
    const std::optional<int64_t> value = text::parseInteger(attribute.value());
    if (value && *value >= 0 && *value <= UINT16_MAX) return static_cast<uint16_t>(*value);
    note(name, quoted(attribute.value()) + " is no version number");
    return 0;
  }

  pugi::xml_node root_;
  DescriptionParts& parts_;
};

}  // namespace

DocumentKind readDocumentAttributes(pugi::xml_node root, DescriptionParts& parts) {
  RootReader reader(root, parts);
  const std::string_view rootName = root.name();
  const size_t colon = rootName.find(':');
  const size_t local = colon == std::string_view::npos ? 0 : colon + 1;
  if (rootName.substr(local) != kRootName) {
    parts.findings.fatal(parts.offsetOf(root.name(), kNoOffset),
                         "the root element is " + quoted(rootName) + ", not '" + std::string(kRootName) + "'");
  }
  DeviceTexts& device = parts.device;
  device.modelName = reader.text("ModelName");
  device.vendorName = reader.text("VendorName");
  device.toolTip = text::trimmed(root.attribute("ToolTip").value());
  device.standardNameSpace = reader.text("StandardNameSpace");
  device.productGuid = reader.text("ProductGuid");
  device.versionGuid = reader.text("VersionGuid");
  device.schemaVersion = reader.version("SchemaMajorVersion", "SchemaMinorVersion", "SchemaSubMinorVersion");
  device.deviceVersion = reader.version("MajorVersion", "MinorVersion", "SubMinorVersion");

  const std::string_view prefix = rootName.substr(0, local);
  std::string attribute = "xmlns";
  if (local != 0) (attribute += ':') += prefix.substr(0, local - 1);
  const std::string_view uri = text::trimmed(root.attribute(attribute.c_str()).value());
  const auto refuse = [&](std::string_view version) {
    reader.fatal("schema version " + std::string(version) + " is not supported (1.0, 1.1)");
  };
  if (uri.substr(0, kNamespaceFamily.size()) == kNamespaceFamily) {
    const std::string_view version = uri.substr(kNamespaceFamily.size());
    if (version == "1_0") return {prefix, true};
    if (version == "1_1") return {prefix, false};
    std::string shown(version.substr(0, 40));
    for (char& character : shown) character = character == '_' ? '.' : character;
    refuse(shown);
  }
  if (!uri.empty()) reader.note("xmlns", "unknown name space " + quoted(uri) + ", the schema version decides");
  if (!root.attribute("SchemaMajorVersion") && !root.attribute("SchemaMinorVersion"))
    reader.fatal("neither a name space nor SchemaMajorVersion and SchemaMinorVersion tell the schema version");
  const Version_t& schema = device.schemaVersion;
  if (schema.Major != 1 || schema.Minor > 1) refuse(std::to_string(schema.Major) + "." + std::to_string(schema.Minor));
  return {prefix, schema.Minor == 0};
}

}  // namespace GENAPI_NAMESPACE
