// Walks the elements of a description once and emits its nodes and properties.
#pragma once
#include <pugixml.hpp>

#include <string_view>
#include <vector>

#include "description/DescriptionBuilder.h"
#include "description/ElementRules.h"

namespace GENAPI_NAMESPACE {

// A node while its elements are read.
struct NodeDraft {
  NodeRecord record{};
  ElementSet seen;
  Element alternatives[kAlternatives] = {};  // which of several alternative elements came first
  uint32_t links = 0;
  size_t firstFinding = 0;
};

class NodeReader {
 public:
  explicit NodeReader(DescriptionParts& parts) : parts_(parts) {}

  // Everything below the root, whose element names all have the prefix ("" or "prefix:").
  void readDocument(pugi::xml_node root, std::string_view prefix);

 private:
  enum class Pass { Own, Inherited, InheritedAgain };  // InheritedAgain notes nothing: the first entry did

  // NodeReader.cpp: nodes and what contains them
  void readNodes(pugi::xml_node parent, int depth);
  void readNode(pugi::xml_node xml, NodeType type);
  void readStruct(pugi::xml_node xml);
  NodeDraft startNode(pugi::xml_node xml, NodeType type);
  static bool readAttribute(std::string_view name, std::string_view value, NodeRecord& record);
  void checkName(const NodeDraft& draft);
  void finishNode(NodeDraft& draft, size_t firstChild);
  void emit(NodeDraft& draft);
  // Child elements that become nodes: knives before their register, entries and keys after their owner.
  void readKnife(pugi::xml_node xml, const NodeRecord& owner, NodeIndex ownerIndex, size_t property);
  void readEntry(pugi::xml_node xml, NodeIndex enumeration, size_t property);
  void readKey(pugi::xml_node xml, NodeType type, NodeIndex confRom, size_t property);
  void linkChild(size_t property, std::string_view name, NodeRecord& child);

  // ElementReader.cpp: the elements of one node
  void readElements(pugi::xml_node parent, NodeDraft& draft, const ElementSet& leaveOut, Pass pass);
  void readElement(pugi::xml_node xml, NodeDraft& draft, Element element, size_t offset, Pass pass);
  bool isRefused(NodeDraft& draft, Element element, const ElementRule& rule, size_t offset, Pass pass);
  bool readWord(NodeDraft& draft, Property& property, size_t offset);
  void readNumber(NodeDraft& draft, Property& property, Form form, size_t offset);
  void readOwnAttributes(pugi::xml_node xml, NodeDraft& draft, Element element, size_t offset);
  void addAttribute(NodeDraft& draft, Element attribute, std::string_view value, size_t offset);
  void countLink(NodeDraft& draft, size_t offset);
  std::string_view textOf(pugi::xml_node xml);
  std::string_view joinedText(pugi::xml_node xml);
  std::string_view verbatimTextOf(pugi::xml_node xml, size_t nameOffset);
  void noteUnknown(pugi::xml_node xml);
  // Leaves a subtree out; only its depth is looked at.
  void skip(pugi::xml_node subtree, int depth) const;
  void checkDepth(int depth, pugi::xml_node xml) const;
  // An element that has an attribute twice is not well-formed; the parser lets it pass.
  void checkAttributes(pugi::xml_node xml) const {
    const pugi::xml_attribute first = xml.first_attribute();
    if (first && first.next_attribute()) refuseDoubles(xml);
  }
  void refuseDoubles(pugi::xml_node xml) const;

  // RequiredElements.cpp: what a node must have
  void checkComplete(NodeDraft& draft);
  void require(NodeDraft& draft, ElementSet oneOf, std::string_view names);
  void checkLength(NodeDraft& draft);
  void checkBits(NodeDraft& draft, int64_t registerBytes);
  void checkBoolean(const NodeDraft& draft);
  Property* find(const NodeDraft& draft, Element element) const;
  void setDefective(NodeDraft& draft, size_t offset, std::string_view element, std::string reason);

  static void setText(Property& property, std::string_view text) {
    property.valueData = text.data();
    property.valueSize = static_cast<uint32_t>(text.size());
  }
  size_t offsetOf(pugi::xml_node xml) const { return parts_.offsetOf(xml.name(), kNoOffset); }
  // Without the prefix that the root element has, if any.
  std::string_view localName(std::string_view name) const {
    return prefix_.empty() || !name.starts_with(prefix_) ? name : name.substr(prefix_.size());
  }

  DescriptionParts& parts_;
  std::string_view prefix_;  // "" or "prefix:"
  size_t inherited_ = 0;     // elements that entries took over from their StructReg, all together
  int depth_ = 0;            // of the node that is being read
  struct Child {
    pugi::xml_node xml;
    size_t property;  // the link to the node that it becomes
  };
  std::vector<Child> children_;  // of the nodes that are being read; used like a stack
};

}  // namespace GENAPI_NAMESPACE
