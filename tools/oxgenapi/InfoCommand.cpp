#include "Commands.h"
#include "Versions.h"

namespace tool {
namespace {

std::string version(const NodeMap& map, TNodeMapInfo major, TNodeMapInfo minor, TNodeMapInfo subMinor) {
  return std::to_string(map.infoInteger(major)) + "." + std::to_string(map.infoInteger(minor)) + "." +
         std::to_string(map.infoInteger(subMinor));
}

void printInfo(Session& session) {
  const NodeMap& map = session.map();
  const Json info{
      {"vendor", map.infoText(NMI_VendorName)},
      {"model", map.infoText(NMI_ModelName)},
      {"toolTip", map.infoText(NMI_ToolTip)},
      {"standardNameSpace", map.infoText(NMI_StandardNameSpace)},
      {"schemaVersion", version(map, NMI_SchemaMajorVersion, NMI_SchemaMinorVersion, NMI_SchemaSubMinorVersion)},
      {"deviceVersion", version(map, NMI_DeviceMajorVersion, NMI_DeviceMinorVersion, NMI_DeviceSubMinorVersion)},
      {"productGuid", map.infoText(NMI_ProductGuid)},
      {"versionGuid", map.infoText(NMI_VersionGuid)},
      {"nodes", map.nodeCount()},
      {"ports", session.ports()},
      {"library", Resource_GetOriginalFileName()},
      {"libraryVersion", libraryVersion()},
      {"genApiVersion", genApiVersion()},
  };
  const Output& output = session.output();
  if (output.json()) {
    output.document(info);
    return;
  }
  const auto text = [&](const char* key) { return info.at(key).get<std::string>(); };
  output.field("Vendor", text("vendor"));
  output.field("Model", text("model"));
  output.field("Tool tip", text("toolTip"));
  output.field("Name space", text("standardNameSpace"));
  output.field("Schema", text("schemaVersion"));
  output.field("Device version", text("deviceVersion"));
  output.field("Product GUID", text("productGuid"));
  output.field("Version GUID", text("versionGuid"));
  output.field("Nodes", std::to_string(map.nodeCount()));
  std::string ports;
  for (const std::string& port : session.ports()) ports += ports.empty() ? port : ", " + port;
  output.field("Connected ports", ports.empty() ? "none" : ports);
  output.field("Library", text("library") + " " + text("libraryVersion"));
  output.field("GenApi", text("genApiVersion"));
}

}  // namespace

void addInfo(const Command& program) {
  const Command command = program.subcommand("info", "Show what the description says about the device, and versions");
  command.footer("Example:\n  oxgenapi info --xml camera.xml");
  command.runs(printInfo);
}

}  // namespace tool
