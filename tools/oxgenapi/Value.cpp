#include "Value.h"

#include <array>
#include <charconv>

namespace tool {
namespace {

// Representations that are no plain number.
constexpr int64_t kHexNumber = 4;
constexpr int64_t kIpv4Address = 5;
constexpr int64_t kMacAddress = 6;

// The digits that tell the value from every other one; of a value that fits a 32-bit register, from every other such.
std::string shortest(double value) {
  std::array<char, 32> digits;
  const auto narrow = static_cast<float>(value);
  const auto result = static_cast<double>(narrow) == value
                          ? std::to_chars(digits.data(), digits.data() + digits.size(), narrow)
                          : std::to_chars(digits.data(), digits.data() + digits.size(), value);
  return {digits.data(), result.ptr};
}

std::string hexadecimal(int64_t value) {
  std::array<char, 20> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), static_cast<uint64_t>(value), 16).ptr;
  return "0x" + std::string(digits.data(), end);
}

// The low bytes, most significant first.
std::string address(int64_t value, int bytes, int base, const char* separator) {
  std::string text;
  for (int byte = bytes - 1; byte >= 0; --byte) {
    std::array<char, 4> digits;
    const auto part = static_cast<unsigned>((static_cast<uint64_t>(value) >> (8 * byte)) & 0xff);
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), part, base).ptr;
    text += text.empty() ? "" : separator;
    text += base == 16 && part < 16 ? "0" : "";
    text.append(digits.data(), end);
  }
  return text;
}

std::string integerText(int64_t value, int64_t representation) {
  switch (representation) {
    case kHexNumber: return hexadecimal(value);
    case kIpv4Address: return address(value, 4, 10, ".");
    case kMacAddress: return address(value, 6, 16, ":");
    default: return std::to_string(value);
  }
}

// A line feed of the device must not look like the end of the line.
std::string oneLine(std::string text) {
  for (size_t at = 0; (at = text.find('\n', at)) != text.npos; at += 2) text.replace(at, 1, "\\n");
  return text;
}

std::string withUnit(const Node& node, std::string value) {
  const std::string unit = node.infoText(NI_Unit);
  return unit.empty() ? value : value + " " + unit;
}

}  // namespace

std::string typeName(TNodeType type) {
  switch (type) {
    case NT_Boolean: return "boolean";
    case NT_Category: return "category";
    case NT_Command: return "command";
    case NT_Enumeration: return "enumeration";
    case NT_EnumEntry: return "entry";
    case NT_Float: return "float";
    case NT_Integer: return "integer";
    case NT_String: return "string";
    case NT_Port: return "port";
    case NT_Register: return "register";
    default: return "node";
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
    case NT_Command: return node.boolean();
    case NT_Integer: return node.integer();
    case NT_Float: return node.real();
    case NT_Register: return hexText(node.registerData());
    default: return node.text();
  }
}

std::string valueText(const Node& node) {
  switch (node.type()) {
    case NT_Boolean: return node.boolean() ? "true" : "false";
    case NT_Command: return node.boolean() ? "done" : "running";
    case NT_Integer: return withUnit(node, integerText(node.integer(), node.infoInteger(NI_Representation)));
    case NT_Float: return withUnit(node, shortest(node.real()));
    case NT_String: return '"' + oneLine(node.text()) + '"';
    case NT_Register: return hexText(node.registerData());
    default: return node.text();
  }
}

}  // namespace tool
