#include "firmware/UpdateControlReader.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <initializer_list>
#include <set>
#include <string_view>
#include <unordered_map>

#include "FirmwareUpdate/FirmwareUpdateInfo.h"
#include "firmware/GufLimits.h"
#include "text/Characters.h"
#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {

namespace {

// Every element or other markup takes a '<', so an accepted file cannot hold more of them than this; tested before
// a tree is built from it.
constexpr size_t kMaxTagBrackets = 4 * kMaxControlNodes;

// Which attribute an element has twice, which the parser does not mind; null for none.
const char* repeatedAttribute(pugi::xml_node element) {
  if (!element.first_attribute().next_attribute()) return nullptr;
  std::set<std::string_view> names;
  for (const pugi::xml_attribute attribute : element.attributes())
    if (!names.insert(attribute.name()).second) return attribute.name();
  return nullptr;
}

// What the parser lets pass: visits all nodes, as long as none of the limits is exceeded.
struct Oddities final : pugi::xml_tree_walker {
  bool for_each(pugi::xml_node& node) override {
    const bool isElement = node.type() == pugi::node_element;
    isTooLarge = ++nodes > kMaxControlNodes || (isElement && depth() >= kMaxControlDepth);
    if (node.type() == pugi::node_doctype) hasDoctype = true;
    if (isElement && !repeated) repeated = repeatedAttribute(node);
    return !isTooLarge;
  }
  size_t nodes = 0;
  bool isTooLarge = false;
  bool hasDoctype = false;
  const char* repeated = nullptr;  // an attribute
};

// A reference to the character 0 ("&#0;", "&#x00;"), which XML does not allow. The parser takes it for the end of a
// text, so that what stands behind it would be lost without a word.
bool refersToNul(const std::string& text) {
  for (size_t at = text.find("&#"); at != std::string::npos; at = text.find("&#", at)) {
    at += 2;
    if (at < text.size() && text[at] == 'x') ++at;
    const size_t end = text.find_first_not_of('0', at);
    if (end != std::string::npos && end > at && text[end] == ';') return true;
  }
  return false;
}

void expectAttributes(pugi::xml_node element, std::initializer_list<const char*> known, std::string& unknown) {
  for (const pugi::xml_attribute attribute : element.attributes())
    if (std::none_of(known.begin(), known.end(),
                     [&](const char* name) { return std::strcmp(name, attribute.name()) == 0; }))
      unknown = attribute.name();
}

struct StepKind {
  const char* element;
  EFirmwareUpdateProgressStepType type;
};
constexpr StepKind kStepKinds[] = {
    {"FeatureWrite", ProgressStepType_FeatureWrite},   {"FeatureExecute", ProgressStepType_FeatureExecute},
    {"FeatureAssert", ProgressStepType_FeatureAssert}, {"FileUpload", ProgressStepType_FileUpload},
    {"DeviceReset", ProgressStepType_DeviceReset},
};

bool oneOf(const std::string& value, const char* first, const char* second) {
  return value == first || value == second;
}

}  // namespace

void UpdateControlReader::read(const std::string& text) {
  if (static_cast<size_t>(std::count(text.begin(), text.end(), '<')) > kMaxTagBrackets)
    refuseAt("document", "has more than " + std::to_string(kMaxControlNodes) + " nodes");
  if (refersToNul(text)) refuse<NotWellFormedException>("{}: is not well-formed: it refers to the character 0", where_);
  pugi::xml_document document;
  const pugi::xml_parse_result result = document.load_buffer(
      text.data(), text.size(), pugi::parse_default | pugi::parse_doctype | pugi::parse_ws_pcdata_single);
  if (!result)
    refuse<NotWellFormedException>("{}: is not well-formed at byte {}: {}", where_, result.offset,
                                   result.description());
  Oddities odd;
  document.traverse(odd);
  if (odd.isTooLarge)
    refuseAt("document", "has more than " + std::to_string(kMaxControlNodes) + " nodes or is nested deeper than " +
                             std::to_string(kMaxControlDepth));
  if (odd.hasDoctype) refuseAt("document", "has a DOCTYPE, which is not accepted");
  if (odd.repeated)
    refuse<NotWellFormedException>("{}: is not well-formed: an element has two attributes '{}'", where_, odd.repeated);
  const pugi::xml_node root = document.document_element();
  for (pugi::xml_node other = root.next_sibling(); other; other = other.next_sibling())
    if (other.type() == pugi::node_element)
      refuse<NotWellFormedException>("{}: is not well-formed: it has two root elements", where_);
  readRoot(root);
}

void UpdateControlReader::readRoot(pugi::xml_node root) {
  const std::string name = root.name();
  if (name != "FirmwareUpdateControl") refuseAt("root element", "is '" + name + "', not FirmwareUpdateControl");
  const std::string major = required(root, "SchemaMajorVersion", name);
  if (major != "1") refuseAt(name, "has schema version " + major + ", and only 1 is known");
  std::set<std::string> names;
  for (const pugi::xml_node child : root.children()) {
    if (std::strcmp(child.name(), "Update") == 0) {
      if (control_.updates_.size() == kMaxUpdates)
        refuseAt(name, "has more than " + std::to_string(kMaxUpdates) + " updates");
      control_.updates_.push_back(readUpdate(child, "Update " + std::to_string(control_.updates_.size() + 1)));
    } else if (std::strcmp(child.name(), "Procedure") == 0) {
      if (control_.procedures_.size() == kMaxProcedures)
        refuseAt(name, "has more than " + std::to_string(kMaxProcedures) + " procedures");
      control_.procedures_.push_back(
          readProcedure(child, "Procedure " + std::to_string(control_.procedures_.size() + 1)));
      const std::string& added = control_.procedures_.back().name;
      if (!names.insert(added).second) refuseAt(name, "has two procedures named '" + added + "'");
    }
  }
  if (control_.updates_.empty()) refuseAt(name, "has no Update");
  if (control_.procedures_.empty()) refuseAt(name, "has no Procedure");
}

UpdateEntry UpdateControlReader::readUpdate(pugi::xml_node element, const std::string& place) {
  UpdateEntry entry;
  std::unordered_map<std::string, size_t> keys;  // of the infos so far
  entry.procedure = required(element, "Procedure", place);
  for (const pugi::xml_node child : element.children()) {
    if (std::strcmp(child.name(), "Info") == 0)
      readInfo(child, place, entry, keys);
    else if (std::strcmp(child.name(), "Condition") == 0)
      entry.conditions.push_back(
          readCondition(child, place + ", Condition " + std::to_string(entry.conditions.size() + 1)));
  }
  if (entry.conditions.empty()) refuseAt(place, "has no Condition");
  checkInfos(entry, place);
  return entry;
}

void UpdateControlReader::readInfo(pugi::xml_node element, const std::string& place, UpdateEntry& entry,
                                   std::unordered_map<std::string, size_t>& keys) const {
  const std::string key = required(element, "Key", place + ", Info");
  const std::string here = place + ", Info '" + key + "'";
  const auto [known, isNew] = keys.emplace(key, entry.infos.size());
  if (isNew) entry.infos.push_back({key, {}});
  addLocalized(entry.infos[known->second].values, {language(element, here), textOf(element, here, Strange::isIgnored)},
               here);
}

void UpdateControlReader::checkInfos(const UpdateEntry& entry, const std::string& place) {
  static const WholePattern dotted("[0-9]+(\\.[0-9]+)*", "");
  static const WholePattern semantic(
      "(0|[1-9][0-9]*)\\.(0|[1-9][0-9]*)\\.(0|[1-9][0-9]*)"
      "(-(0|[1-9][0-9]*|[0-9]*[a-zA-Z-][0-9a-zA-Z-]*)(\\.(0|[1-9][0-9]*|[0-9]*[a-zA-Z-][0-9a-zA-Z-]*))*)?"
      "(\\+[0-9a-zA-Z-]+(\\.[0-9a-zA-Z-]+)*)?",
      "");
  const auto values = [&entry](const char* key) -> const std::vector<LocalizedText>* {
    for (const UpdateInfoText& info : entry.infos)
      if (info.key == key) return &info.values;
    return nullptr;
  };
  for (const char* key : {FirmwareUpdateInfoKey_Description, FirmwareUpdateInfoKey_Version})
    if (!values(key)) refuseAt(place, std::string("has no Info '") + key + "'");

  const WholePattern* style = nullptr;
  if (const auto* styles = values(FirmwareUpdateInfoKey_VersionStyle))
    for (const LocalizedText& value : *styles) {
      if (!oneOf(value.text, FirmwareUpdateInfoValue_VersionStyle_Dotted, FirmwareUpdateInfoValue_VersionStyle_SemVer))
        refuseAt(place, "VersionStyle '" + value.text + "' is neither dotted nor semver");
      style = value.text == FirmwareUpdateInfoValue_VersionStyle_Dotted ? &dotted : &semantic;
    }
  if (style)
    for (const LocalizedText& value : *values(FirmwareUpdateInfoKey_Version))
      if (!style->matches(value.text)) refuseAt(place, "Version '" + value.text + "' does not fit its VersionStyle");
  for (const char* key : {FirmwareUpdateInfoKey_UserSetPersistence, FirmwareUpdateInfoKey_SequencerSetPersistence})
    if (const auto* supports = values(key))
      for (const LocalizedText& value : *supports)
        if (!oneOf(value.text, FirmwareUpdateInfoKey_PersistenceSupport_None,
                   FirmwareUpdateInfoKey_PersistenceSupport_Full))
          refuseAt(place, std::string(key) + " '" + value.text + "' is neither none nor full");
  if (const auto* patterns = values(FirmwareUpdateInfoKey_VersionExtractionPattern))
    for (const LocalizedText& value : *patterns) pattern(value.text, place + ": VersionExtractionPattern");
}

UpdateCondition UpdateControlReader::readCondition(pugi::xml_node element, const std::string& place) {
  std::string unknown;
  expectAttributes(element, {"Feature"}, unknown);
  if (!unknown.empty()) refuseAt(place, "has an unknown attribute '" + unknown + "'");
  return {required(element, "Feature", place), pattern(textOf(element, place, Strange::isRefused), place)};
}

UpdateProcedure UpdateControlReader::readProcedure(pugi::xml_node element, const std::string& place) {
  UpdateProcedure procedure;
  procedure.name = required(element, "Name", place);
  const std::string here = "Procedure '" + procedure.name + "'";
  for (const pugi::xml_node child : element.children()) {
    const bool isText = child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata;
    if (isText && !text::isBlank(child.value())) refuseAt(here, "contains text between its steps");
    if (child.type() != pugi::node_element) continue;
    if (procedure.steps.size() == kMaxStepsPerProcedure)
      refuseAt(here, "has more than " + std::to_string(kMaxStepsPerProcedure) + " steps");
    procedure.steps.push_back(
        readStep(child, here + ", step " + std::to_string(procedure.steps.size() + 1) + " " + child.name()));
  }
  if (procedure.steps.empty()) refuseAt(here, "has no step");
  return procedure;
}

UpdateStep UpdateControlReader::readStep(pugi::xml_node element, const std::string& place) {
  UpdateStep step;
  for (const StepKind& kind : kStepKinds)
    if (std::strcmp(kind.element, element.name()) == 0) {
      step.type = kind.type;
      step.element = kind.element;
    }
  std::string unknown;
  switch (step.type) {
    case ProgressStepType_FeatureWrite:
      expectAttributes(element, {"Feature", "Value", "EstimatedDurationMs"}, unknown);
      step.feature = required(element, "Feature", place);
      if (!element.attribute("Value")) refuseAt(place, "has no attribute Value");
      step.value = element.attribute("Value").value();
      break;
    case ProgressStepType_FeatureExecute:
      expectAttributes(element, {"Feature", "EstimatedDurationMs"}, unknown);
      step.feature = required(element, "Feature", place);
      break;
    case ProgressStepType_FeatureAssert:
      expectAttributes(element, {"Feature", "Pattern", "EstimatedDurationMs"}, unknown);
      step.feature = required(element, "Feature", place);
      if (!element.attribute("Pattern")) refuseAt(place, "has no attribute Pattern");
      step.pattern = pattern(element.attribute("Pattern").value(), place);
      break;
    case ProgressStepType_FileUpload:
      expectAttributes(element, {"FileSelector", "File", "EstimatedDurationMs"}, unknown);
      step.feature = required(element, "FileSelector", place);
      step.file = memberName(required(element, "File", place), place);
      break;
    case ProgressStepType_DeviceReset:
      expectAttributes(element, {"DelayEnumerationMs", "EstimatedDurationMs"}, unknown);
      step.delayEnumerationMs = milliseconds(element, "DelayEnumerationMs", place);
      break;
    default: refuseAt(place, "is no step that is known");
  }
  if (!unknown.empty()) refuseAt(place, "has an unknown attribute '" + unknown + "'");
  step.estimatedMs = milliseconds(element, "EstimatedDurationMs", place);
  for (const pugi::xml_node child : element.children()) {
    const bool isText = child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata;
    if (isText && !text::isBlank(child.value())) refuseAt(place, "contains text");
    if (child.type() != pugi::node_element) continue;
    if (std::strcmp(child.name(), "Description") != 0)
      refuseAt(place, std::string("has an unknown element '") + child.name() + "'");
    expectAttributes(child, {"Lang"}, unknown);
    if (!unknown.empty()) refuseAt(place, "Description has an unknown attribute '" + unknown + "'");
    addLocalized(step.descriptions, {language(child, place), textOf(child, place, Strange::isRefused)}, place);
  }
  return step;
}

std::string UpdateControlReader::textOf(pugi::xml_node element, const std::string& place, Strange elements) const {
  std::string text;
  for (const pugi::xml_node child : element.children())
    if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata)
      text += child.value();
    else if (child.type() == pugi::node_element && elements == Strange::isRefused)
      refuseAt(place, std::string("has an unknown element '") + child.name() + "'");
  return text;
}

WholePattern UpdateControlReader::pattern(const std::string& text, const std::string& place) {
  WholePattern compiled(text, where_ + ": " + place);
  programSteps_ += compiled.programSteps();
  if (programSteps_ > kMaxProgramSteps) refuseAt(place, "the regular expressions of the file are too large together");
  return compiled;
}

std::string UpdateControlReader::language(pugi::xml_node element, const std::string& place) const {
  const pugi::xml_attribute attribute = element.attribute("Lang");
  if (!attribute) return {};
  std::string code = attribute.value();
  if (code.size() != 2 || !text::isLetter(code[0]) || !text::isLetter(code[1]))
    refuseAt(place, "Lang '" + code + "' is not a language code of two letters");
  return code;
}

void UpdateControlReader::addLocalized(std::vector<LocalizedText>& texts, LocalizedText added,
                                       const std::string& place) const {
  for (const LocalizedText& other : texts)
    if (text::equalsIgnoringCase(other.language, added.language))
      refuseAt(place, "is there twice for language '" + added.language + "'");
  texts.push_back(std::move(added));
}

std::string UpdateControlReader::required(pugi::xml_node element, const char* attribute,
                                          const std::string& place) const {
  std::string value = element.attribute(attribute).value();
  if (value.empty()) refuseAt(place, std::string("has no attribute ") + attribute);
  return value;
}

uint32_t UpdateControlReader::milliseconds(pugi::xml_node element, const char* attribute,
                                           const std::string& place) const {
  const pugi::xml_attribute found = element.attribute(attribute);
  if (!found) return 0;
  const char* text = found.value();
  const char* end = text + std::strlen(text);
  uint32_t value = 0;
  const auto [stop, error] = std::from_chars(text, end, value);
  if (error != std::errc() || stop != end)
    refuseAt(place, std::string(attribute) + " '" + text + "' is not a number of 0 to 4294967295");
  return value;
}

// A member of the package by a plain relative path; anything else could mean a file elsewhere.
std::string UpdateControlReader::memberName(std::string name, const std::string& place) const {
  bool good = name.find('\\') == std::string::npos && !(name.size() > 1 && name[1] == ':');
  for (size_t start = 0; good && start <= name.size();) {
    const size_t end = std::min(name.find('/', start), name.size());
    const std::string_view part(name.data() + start, end - start);
    good = !part.empty() && part != "." && part != "..";
    start = end + 1;
  }
  if (!good) refuseAt(place, "File '" + name + "' is not a relative path inside the package");
  return name;
}

void UpdateControlReader::refuseAt(const std::string& place, const std::string& what) const {
  refuse<FormatException>("{}: {}: {}", where_, place, what);
}

}  // namespace GENAPI_NAMESPACE
