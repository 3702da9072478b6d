// Small descriptions for loader tests: the snippet under test stands in the test, the frame around it here.
#pragma once
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Base/GCException.h"
#include "description/Description.h"
#include "description/DescriptionLoader.h"

namespace loading {

using namespace GENAPI_NAMESPACE;

// The frame is one line, so a snippet that begins with a line feed starts on line 2.
inline std::string described(std::string_view nodes, std::string_view version = "1_1") {
  std::string text = "<RegisterDescription ModelName='M' VendorName='V' StandardNameSpace='None' ProductGuid='P'";
  text += " VersionGuid='G' MajorVersion='1' MinorVersion='2' SubMinorVersion='3' SchemaMajorVersion='1'";
  text += " SchemaMinorVersion='1' SchemaSubMinorVersion='0' xmlns='http://www.genicam.org/GenApi/Version_";
  text += version;
  text += "'>";
  text += nodes;
  return text + "</RegisterDescription>";
}

using Loaded = std::shared_ptr<const Description>;

inline Loaded loadText(std::string_view text, EContentType contentType = ContentType_Auto) {
  return loadDescriptionText(text, contentType).description;
}
inline Loaded load(std::string_view nodes, std::string_view version = "1_1") {
  return loadText(described(nodes, version));
}

// Why a text does not load; empty if it does.
inline std::string textFault(std::string_view text, EContentType contentType = ContentType_Auto) {
  try {
    loadDescriptionText(text, contentType);
    return {};
  } catch (const GENICAM_NAMESPACE::RuntimeException& error) {
    return error.GetDescription();
  }
}
inline std::string fault(std::string_view nodes, std::string_view version = "1_1") {
  return textFault(described(nodes, version));
}

inline std::vector<std::string> findings(const Loaded& description, ESeverity severity) {
  std::vector<std::string> texts;
  for (const FindingRecord& finding : description->findings())
    if (finding.severity == severity) texts.push_back(description->findingText(finding));
  return texts;
}
inline std::vector<std::string> notes(const Loaded& description) { return findings(description, svNote); }
inline std::vector<std::string> defects(const Loaded& description) { return findings(description, svDefect); }

inline std::vector<std::string> nodeNames(const Loaded& description) {
  std::vector<std::string> names;
  for (NodeIndex i = 0; i < description->nodeCount(); ++i) names.emplace_back(description->node(i).name());
  return names;
}

// Elements of a node as "pValue=Reg Offset=4", in the order in which they are held; links show their target.
inline std::string elements(const Loaded& description, std::string_view node) {
  std::string text;
  for (const Property& property : description->properties(description->indexOf(node))) {
    if (!text.empty()) text += ' ';
    (text += elementName(property.element)) += '=';
    text += property.value();
    if (property.attributeSize != 0) ((text += '[') += property.attribute()) += ']';
  }
  return text;
}

// Replaces every "$1" in a pattern.
inline std::string filled(std::string pattern, const std::string& text) {
  for (size_t at = pattern.find("$1"); at != std::string::npos; at = pattern.find("$1", at + text.size()))
    pattern.replace(at, 2, text);
  return pattern;
}

// A register without its remarkable elements.
inline std::string reg(std::string_view type, std::string_view name, std::string_view more = "") {
  std::string text = "<" + std::string(type) + " Name='" + std::string(name) + "'><Address>0</Address>";
  text += more.find("Length>") == std::string_view::npos ? "<Length>4</Length>" : "";
  text += more;
  return text + "<pPort>Device</pPort></" + std::string(type) + ">";
}

inline const std::string kPort = "<Port Name='Device'/>";

}  // namespace loading
