#include <algorithm>
#include <cstring>

#include "description/Limits.h"
#include "description/NodeReader.h"
#include "text/Characters.h"
#include "text/NumberSyntax.h"

namespace GENAPI_NAMESPACE {
namespace {

bool isHexText(std::string_view digits) {
  return !digits.empty() &&
         std::all_of(digits.begin(), digits.end(), [](char each) { return text::hexDigit(each) >= 0; });
}

// Numbers separated by ';', with or without one at the end.
bool isIntegerSet(std::string_view set) {
  while (!set.empty()) {
    const size_t end = set.find(';');
    if (!text::parseInteger(set.substr(0, end))) return false;
    if (end == std::string_view::npos) break;
    set = text::trimmed(set.substr(end + 1));
  }
  return true;
}

constexpr ElementSet kWithAttributes(Element::pVariable, Element::Constant, Element::Expression, Element::pIndex,
                                     Element::ValueIndexed, Element::pValueIndexed);

}  // namespace

void NodeReader::readElements(pugi::xml_node parent, NodeDraft& draft, const ElementSet& leaveOut, Pass pass) {
  for (pugi::xml_node xml = parent.first_child(); xml; xml = xml.next_sibling()) {
    const char* const name = xml.name();
    if (*name == '\0') continue;  // text between elements
    if (depth_ >= kMaxXmlDepth) checkDepth(depth_ + 1, xml);
    checkAttributes(xml);
    const Element element = prefix_.empty() ? elementAt(name) : elementOf(localName(name));
    if (pass != Pass::Own) {
      if (++inherited_ > kMaxProperties)
        parts_.fatal(offsetOf(xml), draft.record, "", "more than " + std::to_string(kMaxProperties) + " elements");
      if (element == Element::StructEntry || leaveOut.has(element)) continue;
    }
    readElement(xml, draft, element, static_cast<size_t>(name - parts_.buffer), pass);
  }
}

void NodeReader::readElement(pugi::xml_node xml, NodeDraft& draft, Element element, size_t offset, Pass pass) {
  const ElementRule rule = ruleOf(element, draft.record.type);
  if (!rule.belongs) {
    if (pass != Pass::InheritedAgain) noteUnknown(xml);
    return;
  }
  const Form form = rule.form;
  if (form == Form::Ignored) {
    skip(xml, depth_ + 1);
    return;
  }
  Property property;
  property.element = element;
  property.word = 0;
  property.attributeSize = 0;
  property.attributeData = nullptr;
  property.integer = 0;
  if (form == Form::Child) {
    if (isRefused(draft, element, rule, offset, pass)) return;
    children_.push_back({xml, parts_.properties.size()});
    countLink(draft, offset);
    setText(property, {});
    parts_.properties.push_back(property);
    return;
  }
  std::string_view value = form == Form::Verbatim ? verbatimTextOf(xml, offset) : textOf(xml);
  if (form != Form::Verbatim) {
    value = text::trimmed(value);
    if (value.empty()) return;  // not given
  }
  if (isRefused(draft, element, rule, offset, pass)) return;
  setText(property, value);
  switch (form) {
    case Form::Word:
      if (!readWord(draft, property, offset)) return;
      break;
    case Form::Integer:
    case Form::Real:
    case Form::Boolean: readNumber(draft, property, form, offset); break;
    case Form::HexDigits:
      if (!isHexText(value)) setDefective(draft, offset, elementName(element), quoted(value) + " is not a hex number");
      break;
    case Form::IntegerSet:
      if (!isIntegerSet(value))
        setDefective(draft, offset, elementName(element), quoted(value) + " is not a list of integers");
      break;
    case Form::Link:
      property.integer = static_cast<int64_t>(NameTable::hashOf(value));
      countLink(draft, offset);
      break;
    default: break;
  }
  parts_.properties.push_back(property);
  if (kWithAttributes.has(element)) readOwnAttributes(xml, draft, element, offset);
}

bool NodeReader::isRefused(NodeDraft& draft, Element element, const ElementRule& rule, size_t offset, Pass pass) {
  if (draft.seen.has(element)) {
    if (rule.repeats) return false;
    if (pass != Pass::InheritedAgain)
      parts_.findings.note(offset, kNoNode, elementName(element), "given twice, the first one counts");
    return true;
  }
  if (rule.alternative != 0) {
    const Element first = draft.alternatives[rule.alternative];
    const bool both = (first == Element::LSB && element == Element::MSB) ||  //
                      (first == Element::MSB && element == Element::LSB);
    if (first != Element::Unknown && !both) {
      if (pass != Pass::InheritedAgain) {
        parts_.findings.note(offset, kNoNode, elementName(element),
                             "left out, " + std::string(elementName(first)) + " counts");
      }
      return true;
    }
    draft.alternatives[rule.alternative] = element;
  }
  draft.seen.add(element);
  return false;
}

bool NodeReader::readWord(NodeDraft& draft, Property& property, size_t offset) {
  const Element element = property.element;
  if (!parseWord(element, property.value(), property.word)) {
    std::string reason = "unknown word " + quoted(property.value());
    if (!kDescriptiveWords.has(element)) {
      setDefective(draft, offset, elementName(element), std::move(reason));
      return true;
    }
    parts_.findings.note(offset, kNoNode, elementName(element), std::move(reason));
    return false;
  }
  NodeRecord& record = draft.record;
  if (element == Element::Visibility) record.visibility = property.word;
  if (element == Element::ImposedAccessMode) record.imposedAccessMode = property.word;
  if (element == Element::Streamable) record.streamable = property.word == Yes;
  if (element == Element::IsDeprecated) record.deprecated = property.word == Yes;
  return true;
}

void NodeReader::readNumber(NodeDraft& draft, Property& property, Form form, size_t offset) {
  const std::string_view value = property.value();
  const auto refuse = [&](const char* what) {
    setDefective(draft, offset, elementName(property.element), quoted(value) + what);
  };
  if (form == Form::Integer) {
    const std::optional<int64_t> number = text::parseInteger(value);
    property.integer = number.value_or(0);
    if (!number) refuse(" is not an integer");
  } else if (form == Form::Real) {
    const std::optional<double> number = text::parseFloatInRange(value);
    property.real = number.value_or(0);
    if (!number) refuse(" is not a number");
  } else {
    const std::optional<bool> number = text::parseBoolean(value);
    property.integer = number.value_or(false) ? 1 : 0;
    if (!number) refuse(" is neither true nor false");
  }
}

void NodeReader::readOwnAttributes(pugi::xml_node xml, NodeDraft& draft, Element element, size_t offset) {
  switch (element) {
    case Element::pVariable:
    case Element::Constant:
    case Element::Expression: {
      Property& property = parts_.properties.back();
      const std::string_view name = text::trimmed(xml.attribute("Name").value());
      if (name.size() > kMaxNameBytes) parts_.fatal(offset, draft.record, elementName(element), "Name: too long");
      property.attributeData = name.data();
      property.attributeSize = static_cast<uint16_t>(name.size());
      if (name.empty()) setDefective(draft, offset, elementName(element), "Name: missing");
      break;
    }
    case Element::pIndex:
      if (!kRegisterKinds.has(draft.record.type)) break;
      if (const pugi::xml_attribute constant = xml.attribute("Offset")) {
        addAttribute(draft, Element::Offset, constant.value(), offset);
        if (xml.attribute("pOffset")) parts_.findings.note(offset, kNoNode, "pOffset", "left out, Offset counts");
      } else if (const pugi::xml_attribute link = xml.attribute("pOffset")) {
        addAttribute(draft, Element::pOffset, link.value(), offset);
      }
      break;
    case Element::ValueIndexed:
    case Element::pValueIndexed:
      if (const pugi::xml_attribute index = xml.attribute("Index"))
        addAttribute(draft, Element::Index, index.value(), offset);
      else
        setDefective(draft, offset, elementName(element), "Index: missing");
      break;
    default: break;
  }
}

void NodeReader::addAttribute(NodeDraft& draft, Element attribute, std::string_view value, size_t offset) {
  Property property{};
  property.element = attribute;
  setText(property, text::trimmed(value));
  if (attribute == Element::pOffset) {
    property.integer = static_cast<int64_t>(NameTable::hashOf(property.value()));
    countLink(draft, offset);
  } else {
    readNumber(draft, property, Form::Integer, offset);
  }
  parts_.properties.push_back(property);
}

void NodeReader::countLink(NodeDraft& draft, size_t offset) {
  if (++draft.links <= kMaxLinksPerNode) return;
  const bool entries = draft.record.type == NodeType::Enumeration;
  static_assert(kMaxLinksPerNode == kMaxEnumEntries);
  parts_.fatal(offset, draft.record, "",
               "more than " + std::to_string(kMaxLinksPerNode) + (entries ? " entries and links" : " links"));
}

std::string_view NodeReader::textOf(pugi::xml_node xml) {
  if (!xml.first_child()) return xml.value();
  return joinedText(xml);
}

// The parser drops blanks in front of comments and CDATA sections. A text with one of these is read again from the
// source, this time with every blank.
std::string_view NodeReader::verbatimTextOf(pugi::xml_node xml, size_t nameOffset) {
  const std::string_view source = parts_.source;
  size_t start = nameOffset;
  for (char quote = 0; start < source.size() && (quote != 0 || source[start] != '>'); ++start) {
    const char each = source[start];
    if (quote != 0 ? each == quote : each == '"' || each == '\'') quote = quote != 0 ? '\0' : each;
  }
  if (start >= source.size() || source[start - 1] == '/') return textOf(xml);
  size_t end = source.find('<', ++start);
  const auto at = [&](std::string_view mark) { return source.substr(end, mark.size()) == mark; };
  if (end == source.npos || at("</")) return textOf(xml);
  while (end != source.npos && !at("</")) {
    const char* const close = at("<!--") ? "-->" : at("<![CDATA[") ? "]]>" : at("<?") ? "?>" : nullptr;
    if (close == nullptr) return textOf(xml);  // an element, which has no meaning here
    end = source.find('<', source.find(close, end));
  }
  const std::string whole = "<a>" + std::string(source.substr(start, end - start)) + "</a>";
  pugi::xml_document document;
  constexpr unsigned kFlags = pugi::parse_escapes | pugi::parse_cdata | pugi::parse_eol | pugi::parse_ws_pcdata;
  if (!document.load_buffer(whole.data(), whole.size(), kFlags, pugi::encoding_utf8)) return textOf(xml);
  std::string joined;
  for (const pugi::xml_node piece : document.first_child()) joined += piece.value();
  return parts_.texts.join({joined});
}

std::string_view NodeReader::joinedText(pugi::xml_node xml) {
  std::string_view only = xml.value();
  std::string joined(only);
  for (pugi::xml_node piece = xml.first_child(); piece; piece = piece.next_sibling()) {
    if (piece.type() == pugi::node_element) {
      noteUnknown(piece);
      continue;
    }
    const std::string_view more = piece.value();
    if (only.empty()) only = more;
    joined += more;
  }
  return joined.size() == only.size() ? only : parts_.texts.join({joined});
}

void NodeReader::noteUnknown(pugi::xml_node xml) {
  const std::string_view name = xml.name();
  const bool known = elementOf(localName(xml.name())) != Element::Unknown;
  parts_.findings.note(offsetOf(xml), kNoNode, name.substr(0, 40), known ? "has no meaning here" : "unknown element");
  skip(xml, depth_ + 1);
}

void NodeReader::skip(pugi::xml_node subtree, int depth) const {
  struct Check final : pugi::xml_tree_walker {
    Check(const NodeReader& theReader, int itsDepth) : reader(theReader), root(itsDepth) {}
    bool for_each(pugi::xml_node& node) override {
      reader.checkDepth(root + 1 + this->depth(), node);
      reader.checkAttributes(node);
      return true;
    }
    const NodeReader& reader;
    const int root;
  };
  checkDepth(depth, subtree);
  checkAttributes(subtree);
  Check check(*this, depth);
  subtree.traverse(check);
}

void NodeReader::checkDepth(int depth, pugi::xml_node xml) const {
  if (depth > kMaxXmlDepth)
    parts_.findings.fatal(offsetOf(xml), "more than " + std::to_string(kMaxXmlDepth) + " nested elements");
}

void NodeReader::refuseDoubles(pugi::xml_node xml) const {
  const auto refuse = [&](const char* name) {
    parts_.findings.fatal(offsetOf(xml), "not well-formed: attribute " + quoted(name) + " given twice");
  };
  constexpr size_t kFew = 8;  // compared one by one, which takes no memory; more of them must not take quadratic time
  size_t count = 0;
  for (pugi::xml_attribute each = xml.first_attribute(); each; each = each.next_attribute(), ++count) {
    for (pugi::xml_attribute other = xml.first_attribute(); count < kFew && other != each;
         other = other.next_attribute())
      if (std::strcmp(each.name(), other.name()) == 0) refuse(each.name());
  }
  if (count <= kFew) return;
  std::vector<std::string_view> names;
  for (const pugi::xml_attribute each : xml.attributes()) names.push_back(each.name());
  std::sort(names.begin(), names.end());
  const auto twice = std::adjacent_find(names.begin(), names.end());
  if (twice != names.end()) refuse(twice->data());
}

}  // namespace GENAPI_NAMESPACE
