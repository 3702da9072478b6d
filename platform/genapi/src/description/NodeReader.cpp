#include "description/NodeReader.h"

#include <array>

#include "GenApi/EnumClasses.h"
#include "description/Limits.h"
#include "text/Characters.h"
#include "text/NumberSyntax.h"

namespace GENAPI_NAMESPACE {
namespace {

// Letters, digits and the underscore.
constexpr std::array<bool, 256> makeNameBytes() {
  std::array<bool, 256> usual{};
  for (unsigned byte = 'a'; byte <= 'z'; ++byte) usual[byte] = usual[byte - 'a' + 'A'] = true;
  for (unsigned byte = '0'; byte <= '9'; ++byte) usual[byte] = true;
  usual['_'] = true;
  return usual;
}

constexpr std::array<bool, 256> kNameBytes = makeNameBytes();

bool isUsualName(std::string_view name) {
  if (name[0] == '_' || (name[0] >= '0' && name[0] <= '9')) return false;
  for (char character : name)
    if (!kNameBytes[static_cast<unsigned char>(character)]) return false;
  return true;
}

bool isUsableName(std::string_view name) {
  for (char character : name) {
    const unsigned char byte = static_cast<unsigned char>(character);
    if (byte <= 0x20 || byte == 0x7F || character == '/' || character == ':') return false;
  }
  return true;
}

}  // namespace

void NodeReader::readDocument(pugi::xml_node root, std::string_view prefix) {
  prefix_ = prefix;
  checkAttributes(root);
  readNodes(root, 2);
}

void NodeReader::readNodes(pugi::xml_node parent, int depth) {
  for (pugi::xml_node xml = parent.first_child(); xml; xml = xml.next_sibling()) {
    if (*xml.name() == '\0') continue;  // text between nodes
    checkDepth(depth, xml);
    checkAttributes(xml);
    depth_ = depth;
    const std::string_view name = localName(xml.name());
    if (const std::optional<NodeType> type = nodeTypeOf(name))
      readNode(xml, *type);
    else if (name == "StructReg")
      readStruct(xml);
    else if (name == "Group")
      readNodes(xml, depth + 1);
    else if (name == "Extension")
      skip(xml, depth);
    else
      noteUnknown(xml);
  }
}

void NodeReader::readNode(pugi::xml_node xml, NodeType type) {
  const size_t firstChild = children_.size();
  NodeDraft draft = startNode(xml, type);
  readElements(xml, draft, {}, Pass::Own);
  finishNode(draft, firstChild);
}

void NodeReader::readStruct(pugi::xml_node xml) {
  constexpr ElementSet kAddresses(Element::Address, Element::pAddress, Element::pIndex, Element::IntSwissKnife);
  Pass pass = Pass::Inherited;
  for (pugi::xml_node entry = xml.first_child(); entry; entry = entry.next_sibling()) {
    if (localName(entry.name()) != "StructEntry") continue;
    const size_t firstChild = children_.size();
    ++depth_;
    checkDepth(depth_, entry);
    NodeDraft draft = startNode(entry, NodeType::MaskedIntReg);
    readElements(entry, draft, {}, Pass::Own);
    --depth_;
    ElementSet own = draft.seen;
    if (own.hasAny(kAddresses)) own = own | kAddresses;
    readElements(xml, draft, own, pass);
    finishNode(draft, firstChild);
    pass = Pass::InheritedAgain;
  }
  if (pass == Pass::Inherited) parts_.findings.note(offsetOf(xml), kNoNode, "StructReg", "has no StructEntry");
}

NodeDraft NodeReader::startNode(pugi::xml_node xml, NodeType type) {
  NodeDraft draft;
  draft.firstFinding = parts_.findings.count();
  NodeRecord& record = draft.record;
  record.type = type;
  record.owner = kNoNode;
  record.nameSpace = Custom;
  record.visibility = Beginner;
  record.imposedAccessMode = RW;
  record.exposeStatic = true;
  record.firstProperty = static_cast<uint32_t>(parts_.properties.size());
  record.sourceOffset = static_cast<uint32_t>(offsetOf(xml));
  for (pugi::xml_attribute attribute = xml.first_attribute(); attribute; attribute = attribute.next_attribute()) {
    const std::string_view name = attribute.name();
    const std::string_view value = text::trimmed(attribute.value());
    if (name == "Name") {
      record.nameData = value.data();
      record.nameSize = static_cast<uint32_t>(value.size());
    } else if (!readAttribute(name, value, record)) {
      parts_.findings.note(record.sourceOffset, kNoNode, name, "unknown word " + quoted(value));
    }
  }
  checkName(draft);
  return draft;
}

// False for an unknown word; the attribute keeps its default then.
bool NodeReader::readAttribute(std::string_view name, std::string_view value, NodeRecord& record) {
  if (name == "NameSpace") {
    ENameSpace nameSpace = Custom;
    const bool known = ENameSpaceClass::FromView(value, &nameSpace);
    record.nameSpace = static_cast<uint8_t>(nameSpace);
    return known;
  }
  if (name == "ExposeStatic") {
    EYesNo expose = Yes;
    const bool known = EYesNoClass::FromView(value, &expose);
    record.exposeStatic = expose == Yes;
    return known;
  }
  if (name == "MergePriority") {
    const std::optional<int64_t> priority = text::parseInteger(value);
    if (!priority || *priority < -1 || *priority > 1) return false;
    record.mergePriority = static_cast<int8_t>(*priority);
  }
  return true;
}

void NodeReader::checkName(const NodeDraft& draft) {
  const NodeRecord& record = draft.record;
  const std::string_view name = record.name();
  const auto fatal = [&](std::string_view reason) { parts_.fatal(record.sourceOffset, record, "Name", reason); };
  if (name.empty()) fatal("missing");
  if (name.size() > kMaxNameBytes) fatal("longer than " + std::to_string(kMaxNameBytes) + " bytes");
  if (isUsualName(name)) return;
  if (!isUsableName(name)) fatal("blanks, '/', ':' and control characters cannot stand in a name");
  parts_.findings.note(record.sourceOffset, kNoNode, "Name", "unusual name " + quoted(name));
}

void NodeReader::finishNode(NodeDraft& draft, size_t firstChild) {
  checkComplete(draft);
  const size_t lastChild = children_.size();
  const auto elementOfChild = [&](size_t child) { return parts_.properties[children_[child].property].element; };
  size_t knives = 0;
  for (size_t i = firstChild; i < lastChild; ++i) knives += elementOfChild(i) == Element::IntSwissKnife;
  const NodeIndex index = static_cast<NodeIndex>(parts_.nodes.size() + knives);
  parts_.findings.assign(draft.firstFinding, index);
  draft.record.propertyCount = static_cast<uint32_t>(parts_.properties.size() - draft.record.firstProperty);
  ++depth_;
  for (size_t i = firstChild; knives != 0 && i < lastChild; ++i)
    if (elementOfChild(i) == Element::IntSwissKnife)
      readKnife(children_[i].xml, draft.record, index, children_[i].property);
  emit(draft);
  for (size_t i = firstChild; i < lastChild; ++i) {
    const Element element = elementOfChild(i);
    if (element == Element::EnumEntry) readEntry(children_[i].xml, index, children_[i].property);
    if (element == Element::TextDesc) readKey(children_[i].xml, NodeType::TextDesc, index, children_[i].property);
    if (element == Element::IntKey) readKey(children_[i].xml, NodeType::IntKey, index, children_[i].property);
  }
  --depth_;
  children_.resize(firstChild);
}

void NodeReader::emit(NodeDraft& draft) {
  if (parts_.nodes.size() == kMaxNodes)
    parts_.fatal(draft.record.sourceOffset, draft.record, "", "more than " + std::to_string(kMaxNodes) + " nodes");
  const NodeIndex node = static_cast<NodeIndex>(parts_.nodes.size());
  if (draft.seen.hasAny(ElementSet(Element::ChunkID, Element::pChunkID))) parts_.chunkPorts.push_back(node);
  if (draft.seen.has(Element::EventID)) parts_.eventNodes.push_back(node);
  if (draft.seen.has(Element::PollingTime)) parts_.polledNodes.push_back(node);
  parts_.nodes.push_back(draft.record);
}

void NodeReader::readKnife(pugi::xml_node xml, const NodeRecord& owner, NodeIndex ownerIndex, size_t property) {
  NodeDraft draft = startNode(xml, NodeType::IntSwissKnife);
  const std::string_view name = parts_.texts.join({"_", owner.name(), "_", draft.record.name()});
  linkChild(property, name, draft.record);
  readElements(xml, draft, {}, Pass::Own);
  draft.record.visibility = Invisible;
  draft.record.owner = ownerIndex;
  finishNode(draft, children_.size());
}

void NodeReader::readEntry(pugi::xml_node xml, NodeIndex enumeration, size_t property) {
  NodeDraft draft = startNode(xml, NodeType::EnumEntry);
  const std::string_view owner = parts_.nodes[enumeration].name();
  const std::string_view name = parts_.texts.join({"EnumEntry_", owner, "_", draft.record.name()});
  draft.record.entryNameOffset = static_cast<uint16_t>(name.size() - draft.record.nameSize);
  linkChild(property, name, draft.record);
  readElements(xml, draft, {}, Pass::Own);
  draft.record.owner = enumeration;
  finishNode(draft, children_.size());
}

void NodeReader::readKey(pugi::xml_node xml, NodeType type, NodeIndex confRom, size_t property) {
  NodeDraft draft = startNode(xml, type);
  linkChild(property, draft.record.name(), draft.record);
  // The element's own text is the key; its parent is what a free-standing one would name.
  Property parser{};
  parser.element = Element::p1212Parser;
  setText(parser, parts_.nodes[confRom].name());
  parser.integer = static_cast<int64_t>(NameTable::hashOf(parser.value()));
  parts_.properties.push_back(parser);
  readElement(xml, draft, Element::Key, offsetOf(xml), Pass::Own);
  draft.record.owner = confRom;
  finishNode(draft, children_.size());
}

void NodeReader::linkChild(size_t property, std::string_view name, NodeRecord& child) {
  child.nameData = name.data();
  child.nameSize = static_cast<uint32_t>(name.size());
  Property& link = parts_.properties[property];
  setText(link, name);
  link.target = static_cast<NodeIndex>(parts_.nodes.size());
}

}  // namespace GENAPI_NAMESPACE
