// The properties of a node: its elements as texts, plus what follows from them.
#include <algorithm>
#include <map>
#include <string>

#include "GenApi/EnumClasses.h"
#include "description/ElementRules.h"
#include "nodes/NodeBase.h"
#include "text/NumberSyntax.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;
using GENICAM_NAMESPACE::gcstring_vector;

namespace {

constexpr NodeTypeSet kKnives(NodeType::SwissKnife, NodeType::IntSwissKnife);
constexpr NodeTypeSet kConverters(NodeType::Converter, NodeType::IntConverter);

struct PropertyText {
  std::string value, attribute;
  bool hasAttribute = false;
};
using PropertyTexts = std::map<std::string, PropertyText, std::less<>>;

class PropertyCollector {
 public:
  explicit PropertyCollector(const NodeBase& node) : node_(node), description_(node.description()) {}

  PropertyTexts collect() {
    addIdentity();
    for (const Property& each : node_.properties()) addElement(each);
    addDefaults();
    addRelations();
    return std::move(texts_);
  }

 private:
  // Appends a value; several values of one property are joined by tabs, and so are their attributes.
  void add(std::string_view name, std::string_view value, std::string_view attribute = {}, bool hasAttribute = false) {
    auto found = texts_.find(name);
    const bool first = found == texts_.end();
    if (first) found = texts_.emplace(name, PropertyText()).first;
    PropertyText& text = found->second;
    if (!first) text.value += '\t';
    text.value += value;
    if (!first && (text.hasAttribute || hasAttribute)) text.attribute += '\t';
    text.attribute += attribute;
    text.hasAttribute |= hasAttribute;
  }
  void addOnce(std::string_view name, std::string_view value) {
    if (texts_.find(name) == texts_.end()) add(name, value);
  }
  std::string_view nameOf(NodeIndex index) const { return description_.node(index).name(); }
  static std::string_view yesNo(bool value) { return value ? "Yes" : "No"; }

  void addIdentity() {
    const NodeRecord& record = node_.record();
    add("Name", record.name());
    add("NameSpace", ENameSpaceClass::ToString(static_cast<ENameSpace>(record.nameSpace)).view());
    add("DeviceName", node_.GetDeviceName().view());
    add("NodeType", nodeTypeName(record.type));
    add("Visibility", EVisibilityClass::ToString(node_.GetVisibility()).view());
    add("ImposedAccessMode", EAccessModeClass::ToString(static_cast<EAccessMode>(record.imposedAccessMode)).view());
    add("ExposeStatic", yesNo(record.exposeStatic));
    add("IsDeprecated", yesNo(record.deprecated));
    add("IsFeature", yesNo(node_.IsFeature()));
    add("Streamable", yesNo(record.streamable));
    if (record.mergePriority != 0) add("MergePriority", std::to_string(record.mergePriority));
  }

  void addElement(const Property& each) {
    // Told with the identity, or with the element that carries them.
    constexpr ElementSet kToldElsewhere(Element::Visibility, Element::ImposedAccessMode, Element::IsDeprecated,
                                        Element::Streamable, Element::Offset, Element::pOffset, Element::Index);
    if (kToldElsewhere.has(each.element)) return;
    switch (each.element) {
      case Element::IntSwissKnife: return add("pAddress", nameOf(each.target));
      case Element::pIndex: return add("pIndex", nameOf(each.target), offsetOf(each), true);
      case Element::ValueIndexed: return add("ValueIndexed", givenText(each), indexOf(each), true);
      case Element::pValueIndexed: return add("pValueIndexed", nameOf(each.target), indexOf(each), true);
      case Element::EnumEntry: return add("pEnumEntry", nameOf(each.target));
      case Element::pVariable: return add("pVariable", nameOf(each.target), each.attribute(), true);
      case Element::Constant:
      case Element::Expression: return add(elementName(each.element), givenText(each), each.attribute(), true);
      case Element::Value: return add("Value", heldText(each));
      default: break;
    }
    const Form form = ruleOf(each.element, node_.record().type).form;
    const bool isLink = form == Form::Link || form == Form::Child;
    add(elementName(each.element), isLink ? std::string(nameOf(each.target)) : givenText(each));
  }

  // Whole numbers in decimal, whatever the description wrote; any other text as it stands.
  std::string givenText(const Property& each) const {
    const Form form = ruleOf(each.element, node_.record().type).form;
    const bool isNumber = form == Form::Integer || form == Form::Real;
    const auto number = isNumber ? text::parseInteger(each.value()) : std::nullopt;
    return number ? std::to_string(*number) : std::string(each.value());
  }

  // A string that holds its own text shows the present one.
  std::string heldText(const Property& each) const {
    if (node_.record().type != NodeType::String) return givenText(each);
    return node_.device().dispatch.operate(node_.index(), [&] { return node_.readText({}); });
  }

  // The property behind an element holds the attribute that carries a number or link of its own.
  const Property* attributeOf(const Property& element) const {
    const auto all = node_.properties();
    const Property* next = &element + 1;
    if (next == all.data() + all.size()) return nullptr;
    const bool belongs =
        next->element == Element::Offset || next->element == Element::pOffset || next->element == Element::Index;
    return belongs ? next : nullptr;
  }
  std::string offsetOf(const Property& element) const {
    const Property* given = attributeOf(element);
    if (given && given->element == Element::pOffset) return std::string(nameOf(given->target));
    if (given) return std::to_string(given->integer);
    const Property* length = node_.find(Element::Length);
    if (length) return std::to_string(length->integer);
    const Property* link = node_.find(Element::pLength);
    return link ? std::string(nameOf(link->target)) : std::string();
  }
  std::string indexOf(const Property& element) const {
    const Property* given = attributeOf(element);
    return given ? std::to_string(given->integer) : std::string();
  }

  void addDefaults() {
    constexpr NodeTypeSet kSigned(NodeType::IntReg, NodeType::MaskedIntReg);
    constexpr NodeTypeSet kShown =
        kSigned | kKnives | kConverters | NodeTypeSet(NodeType::Integer, NodeType::Float, NodeType::FloatReg);
    const NodeType type = node_.record().type;
    if (kSigned.has(type)) addOnce("Sign", "Unsigned");
    if (kShown.has(type)) addOnce("Representation", "PureNumber");
    if (kKnives.has(type)) add("InputDirection", "None");
    if (kConverters.has(type)) add("InputDirection", "From");
  }

  void addNames(std::string_view property, const std::vector<NodeIndex>& nodes) {
    for (const NodeIndex each : nodes) add(property, nameOf(each));
  }

  void addRelations() {
    std::vector<NodeIndex> dependents = node_.related(ctDependingNodes);
    std::reverse(dependents.begin(), dependents.end());
    addNames("pDependent", dependents);
    addNames("pSelecting", node_.description().graph().selecting(node_.index()));
    constexpr NodeTypeSet kWithoutTerminals =
        kKnives | kConverters | NodeTypeSet(NodeType::Node, NodeType::Category, NodeType::Port, NodeType::EnumEntry);
    if (!kWithoutTerminals.has(node_.record().type)) addNames("pTerminal", node_.related(ctTerminalNodes));
  }

  const NodeBase& node_;
  const Description& description_;
  PropertyTexts texts_;
};

}  // namespace

void NodeBase::GetPropertyNames(gcstring_vector& PropertyNames) const {
  PropertyNames.clear();
  for (const auto& [name, text] : PropertyCollector(*this).collect())
    PropertyNames.push_back(gcstring(std::string_view(name)));
}

bool NodeBase::GetProperty(const gcstring& PropertyName, gcstring& ValueStr, gcstring& AttributeStr) {
  const PropertyTexts texts = PropertyCollector(*this).collect();
  const auto found = texts.find(PropertyName.view());
  const bool present = found != texts.end();
  ValueStr = gcstring(present ? std::string_view(found->second.value) : std::string_view());
  AttributeStr = gcstring(present ? std::string_view(found->second.attribute) : std::string_view());
  return present;
}

}  // namespace GENAPI_NAMESPACE
