#include "Value.h"

#include <array>
#include <charconv>

namespace tool {
namespace {

constexpr int64_t kHexNumber = 4;  // the representation that asks for hexadecimal digits

std::string shortest(double value) {
  std::array<char, 32> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  return {digits.data(), end};
}

std::string hexadecimal(int64_t value) {
  std::array<char, 20> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), static_cast<uint64_t>(value), 16).ptr;
  return "0x" + std::string(digits.data(), end);
}

std::string withUnit(const Node& node, std::string value) {
  const std::string unit = node.infoText(NI_Unit);
  return unit.empty() ? value : value + " " + unit;
}

}  // namespace

std::string typeName(TNodeType type) {
  switch (type) {
    case NT_Boolean:
      return "boolean";
    case NT_Category:
      return "category";
    case NT_Command:
      return "command";
    case NT_Enumeration:
      return "enumeration";
    case NT_EnumEntry:
      return "entry";
    case NT_Float:
      return "float";
    case NT_Integer:
      return "integer";
    case NT_String:
      return "string";
    case NT_Port:
      return "port";
    case NT_Register:
      return "register";
    default:
      return "node";
  }
}

std::string accessName(int64_t access) {
  constexpr std::array kNames{"NI", "NA", "RO", "WO", "RW"};
  return access >= 0 && access < static_cast<int64_t>(kNames.size()) ? kNames[static_cast<size_t>(access)] : "NI";
}

bool hasValue(TNodeType type) {
  return type == NT_Boolean || type == NT_Enumeration || type == NT_EnumEntry || type == NT_Float ||
         type == NT_Integer || type == NT_String || type == NT_Register;
}

Json valueJson(const Node& node) {
  switch (node.type()) {
    case NT_Boolean:
    case NT_Command:
      return node.boolean();
    case NT_Integer:
      return node.integer();
    case NT_Float:
      return node.real();
    case NT_Register:
      return hexText(node.registerData());
    default:
      return node.text();
  }
}

std::string valueText(const Node& node) {
  switch (node.type()) {
    case NT_Boolean:
      return node.boolean() ? "true" : "false";
    case NT_Command:
      return node.boolean() ? "done" : "running";
    case NT_Integer: {
      const int64_t value = node.integer();
      const bool hex = node.infoInteger(NI_Representation) == kHexNumber;
      return withUnit(node, hex ? hexadecimal(value) : std::to_string(value));
    }
    case NT_Float:
      return withUnit(node, shortest(node.real()));
    case NT_String:
      return '"' + node.text() + '"';
    case NT_Register:
      return hexText(node.registerData());
    default:
      return node.text();
  }
}

}  // namespace tool
