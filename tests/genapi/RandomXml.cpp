// The XML of a random description, and who depends on whom in it.
#include <algorithm>
#include <charconv>

#include "RandomDescription.h"

namespace randomly {

namespace {

const char* nameOf(Kind kind) {
  static const char* const kNames[] = {"Integer",       "Float",      "Boolean",      "Enumeration", "Command",
                                       "String",        "IntReg",     "MaskedIntReg", "FloatReg",    "StringReg",
                                       "IntSwissKnife", "SwissKnife", "IntConverter", "Converter"};
  return kNames[static_cast<size_t>(kind)];
}

std::string numberText(double value) {
  char buffer[40];
  return {buffer, std::to_chars(buffer, buffer + sizeof(buffer), value).ptr};
}

std::string escaped(const std::string& text) {
  std::string made;
  for (const char each : text) made += each == '&' ? "&amp;" : each == '<' ? "&lt;" : std::string(1, each);
  return made;
}

class Writer {
 public:
  Writer(const std::vector<Node>& nodes, Dice& dice) : nodes_(nodes), dice_(dice) {}

  std::string element(const Node& node, const std::string& name) {
    text_ = "<" + std::string(nameOf(node.kind)) + " Name=\"" + name + "\">";
    guards(node.guards);
    if (node.imposed != RW) tag("ImposedAccessMode", node.imposed == RO ? "RO" : "WO");
    for (const int each : node.invalidators) link("pInvalidator", each);
    for (const Entry& each : node.entries) entry(each);
    if (isRegister(node.kind)) {
      registerPart(node);
    } else if (node.kind >= Kind::IntSwissKnife) {
      formulaPart(node);
    } else {
      valuePart(node);
    }
    for (const int each : node.selected) link("pSelected", each);
    return text_ + "</" + nameOf(node.kind) + ">\n";
  }

 private:
  void tag(const std::string& element, const std::string& content, const std::string& attribute = "") {
    text_ += "<" + element + attribute + ">" + escaped(content) + "</" + element + ">";
  }
  void link(const std::string& element, int target, const std::string& attribute = "") {
    if (target != kNone) tag(element, nodes_[static_cast<size_t>(target)].name, attribute);
  }
  void number(const std::string& element, const std::optional<double>& value) {
    if (value) tag(element, numberText(*value));
  }
  void guards(const Guards& guards) {
    link("pIsImplemented", guards.implemented);
    link("pIsAvailable", guards.available);
    link("pIsLocked", guards.locked);
  }

  void entry(const Entry& entry) {
    text_ += "<EnumEntry Name=\"V" + std::to_string(entry.value) + "\">";
    guards(entry.guards);
    tag("Value", std::to_string(entry.value));
    number("NumericValue", entry.numeric);
    text_ += "</EnumEntry>";
  }

  void cell(const Cell& cell, bool isDefault) {
    const std::string attribute = isDefault ? "" : " Index=\"" + std::to_string(cell.index) + "\"";
    const std::string suffix = isDefault ? "Default" : "Indexed";
    if (cell.link == kNone) {
      tag("Value" + suffix, numberText(cell.constant), attribute);
    } else {
      link("pValue" + suffix, cell.link, attribute);
    }
  }

  void valuePart(const Node& node) {
    if (node.index != kNone) {
      link("pIndex", node.index);
      for (const Cell& each : node.cells) cell(each, false);
      cell(node.otherwise, true);
    } else if (node.value != kNone) {
      for (const int each : node.copiesBefore) link("pValueCopy", each);
      link("pValue", node.value);
      for (const int each : node.copiesAfter) link("pValueCopy", each);
    } else {
      tag("Value", node.kind == Kind::String ? node.text : numberText(node.held));
    }
    number("Min", node.min);
    link("pMin", node.pMin);
    number("Max", node.max);
    link("pMax", node.pMax);
    number("Inc", node.inc);
    link("pInc", node.pInc);
    std::string set;
    for (const int64_t each : node.set) set += (set.empty() ? "" : ";") + std::to_string(each);
    if (!set.empty()) tag("ValidValueSet", set);
    if (node.kind == Kind::Boolean) {
      tag("OnValue", std::to_string(node.on));
      tag("OffValue", std::to_string(node.off));
    }
    if (node.kind != Kind::Command) return;
    if (node.pCommand == kNone) tag("CommandValue", std::to_string(node.on));
    link("pCommandValue", node.pCommand);
  }

  void registerPart(const Node& node) {
    tag("Address", std::to_string(node.address));
    link("pAddress", node.pAddress);
    if (node.embedded != kNone) text_ += inner(node.embedded, "Knife");
    if (node.addressIndex != kNone) {
      std::string attribute;
      if (node.stride == Node::Stride::Given) attribute = " Offset=\"" + std::to_string(node.offset) + "\"";
      if (node.pOffset != kNone) attribute = " pOffset=\"" + nodes_[static_cast<size_t>(node.pOffset)].name + "\"";
      link("pIndex", node.addressIndex, attribute);
    }
    if (node.pLength == kNone) tag("Length", std::to_string(node.length));
    link("pLength", node.pLength);
    tag("AccessMode", node.access == RW ? "RW" : node.access == RO ? "RO" : "WO");
    tag("pPort", node.port == 0 ? "Device" : "Other");
    tag("Cachable", node.caching == WriteThrough  ? "WriteThrough"
                    : node.caching == WriteAround ? "WriteAround"
                                                  : "NoCache");
    if (node.kind == Kind::StringReg) return;
    tag("Endianess", node.bigEndian ? "BigEndian" : "LittleEndian");
    if (node.kind == Kind::FloatReg) return;
    tag("Sign", node.isSigned ? "Signed" : "Unsigned");
    if (node.kind != Kind::MaskedIntReg) return;
    // Bit 0 of a big-endian register is its most significant one.
    const auto bit = [&](int weight) { return std::to_string(node.bigEndian ? 8 * node.length - 1 - weight : weight); };
    if (node.width == 1 && dice_.chance(50)) return tag("Bit", bit(node.shift));
    tag("LSB", bit(node.shift));
    tag("MSB", bit(node.shift + node.width - 1));
  }

  std::string inner(int node, const std::string& name) {
    return Writer(nodes_, dice_).element(nodes_[static_cast<size_t>(node)], name);
  }

  void formulaPart(const Node& node) {
    size_t expressions = 0;
    for (const Declared& each : node.names) {
      const std::string attribute = " Name=\"" + each.name + "\"";
      const bool whole = node.kind == Kind::IntSwissKnife || node.kind == Kind::IntConverter;
      if (each.node != kNone) {
        link("pVariable", each.node, attribute);
      } else if (each.expression) {
        tag("Expression", node.expressionTexts[expressions++], attribute);
      } else {
        tag("Constant", whole ? std::to_string(each.integer) : numberText(each.real), attribute);
      }
    }
    if (node.value == kNone) return tag("Formula", node.formulaText);
    tag("FormulaTo", node.inverseText);
    tag("FormulaFrom", node.formulaText);
    link("pValue", node.value);
    static const char* const kSlopes[] = {"Increasing", "Decreasing", "Varying", "Automatic"};
    tag("Slope", kSlopes[node.slope]);
    if (node.kind == Kind::Converter) tag("IsLinear", node.isLinear ? "Yes" : "No");
  }

  const std::vector<Node>& nodes_;
  Dice& dice_;
  std::string text_;
};

}  // namespace

std::string xmlOf(const std::vector<Node>& nodes, Dice& dice) {
  Writer writer(nodes, dice);
  std::vector<std::string> elements = {"<Port Name=\"Device\"/>\n", "<Port Name=\"Other\"/>\n"};
  for (const Node& node : nodes) {
    if (node.embeddedIn == kNone) elements.push_back(writer.element(node, node.name));
  }
  std::string root = "<Category Name=\"Root\">";
  for (const Node& node : nodes) root += "<pFeature>" + node.name + "</pFeature>";
  elements.push_back(root + "</Category>\n");
  std::string xml;
  while (!elements.empty()) {
    const auto next = static_cast<size_t>(dice.below(static_cast<int64_t>(elements.size())));
    xml += elements[next];
    elements.erase(elements.begin() + static_cast<std::ptrdiff_t>(next));
  }
  return xml;
}

namespace {

// What a node reads for its value, limits, address or length, or links to by a table.
std::vector<int> readBy(const Node& node) {
  std::vector<int> all = {node.value,   node.index,    node.pMin,     node.pMax,
                          node.pInc,    node.pCommand, node.pAddress, node.addressIndex,
                          node.pOffset, node.embedded, node.pLength,  node.otherwise.link};
  for (const Cell& cell : node.cells) all.push_back(cell.link);
  for (const Declared& name : node.names) all.push_back(name.node);
  std::erase(all, kNone);
  return all;
}

}  // namespace

std::vector<ECachingMode> cachingModesOf(const std::vector<Node>& nodes) {
  std::vector<ECachingMode> modes;
  for (const Node& node : nodes) {
    ECachingMode mode = isRegister(node.kind) ? node.caching : WriteThrough;
    if (node.kind == Kind::Float && node.value == kNone && node.index == kNone) mode = WriteAround;
    for (const int each : readBy(node)) mode = Combine(mode, modes[static_cast<size_t>(each)]);
    modes.push_back(mode);
  }
  return modes;
}

std::vector<bool> dependentsOf(const std::vector<Node>& nodes, int node) {
  std::vector<std::vector<int>> direct(nodes.size());  // who depends on it
  for (size_t i = 0; i < nodes.size(); ++i) {
    const Node& each = nodes[i];
    const int self = static_cast<int>(i);
    const auto on = [&](int target) {
      if (target != kNone) direct[static_cast<size_t>(target)].push_back(self);
    };
    const auto onGuards = [&](const Guards& guards) {
      on(guards.implemented), on(guards.available), on(guards.locked);
    };
    onGuards(each.guards);
    for (const int target : readBy(each)) on(target);
    for (const int target : each.copiesBefore) on(target);
    for (const int target : each.copiesAfter) on(target);
    for (const int target : each.invalidators) on(target);
    for (const Entry& entry : each.entries) onGuards(entry.guards);
    for (const int target : each.selected) direct[i].push_back(target);
  }
  std::vector<bool> reached(nodes.size());
  std::vector<int> walk = direct[static_cast<size_t>(node)];
  while (!walk.empty()) {
    const auto next = static_cast<size_t>(walk.back());
    walk.pop_back();
    if (reached[next]) continue;
    reached[next] = true;
    walk.insert(walk.end(), direct[next].begin(), direct[next].end());
  }
  return reached;
}

}  // namespace randomly
