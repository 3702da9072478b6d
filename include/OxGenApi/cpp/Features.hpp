/// @file
/// Features of one type each: what such a feature can do, in the C++ types that fit it.
///
///     camera.integer("Width").max()
///     camera.enumeration("PixelFormat").entries()
///     camera.command("TriggerSoftware").execute()
///
/// Each is a Node whose type was checked when it was made: what every node can do it does as well. Limits and entries
/// are those of the moment; they may follow other features.
#ifndef OXGENAPI_CPP_FEATURES_HPP
#define OXGENAPI_CPP_FEATURES_HPP

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "OxGenApi/cpp/Node.hpp"

namespace oxgenapi {

namespace detail {

/// Throws FEATURE_TYPE where the node is of another type.
inline Node expectType(Node node, TNodeType type, const char* name) {
  if (node.type() != type) throw Error(OXGENAPI_E_FEATURE_TYPE, node.name() + " is not " + name, node.name());
  return node;
}

}  // namespace detail

class Integer : public Node {
 public:
  /// Throws FEATURE_TYPE for a node of another type; so do the others here.
  explicit Integer(Node node) : Node(detail::expectType(std::move(node), NT_Integer, "an integer")) {}
  int64_t value() const { return integer(); }
  template <class T>
  void set(T value) const {
    static_assert(std::is_integral_v<T>, "an integer takes whole numbers: convert a fraction as it is meant");
    Node::set(value);
  }
  int64_t min() const { return infoInteger(NI_Min); }
  int64_t max() const { return infoInteger(NI_Max); }
  /// 1 where every whole number is allowed.
  int64_t increment() const { return infoInteger(NI_Increment); }
  std::string unit() const { return infoText(NI_Unit); }
};

class Float : public Node {
 public:
  explicit Float(Node node) : Node(detail::expectType(std::move(node), NT_Float, "a float")) {}
  double value() const { return real(); }
  void set(double value) const { Node::set(value); }
  double min() const { return infoReal(NI_Min); }
  double max() const { return infoReal(NI_Max); }
  /// Nothing where every value between the limits is allowed.
  std::optional<double> increment() const {
    double step = 0;
    const uint32_t code = NInfoAsFloat(handle(), NI_Increment, &step);
    if (code == OXGENAPI_E_NOT_SUPPORTED) return std::nullopt;
    if (code != OXGENAPI_OK) throw failure(code);
    return step;
  }
  std::string unit() const { return infoText(NI_Unit); }
};

class Boolean : public Node {
 public:
  explicit Boolean(Node node) : Node(detail::expectType(std::move(node), NT_Boolean, "a boolean")) {}
  bool value() const { return boolean(); }
  void set(bool value) const { Node::set(value); }
};

class String : public Node {
 public:
  explicit String(Node node) : Node(detail::expectType(std::move(node), NT_String, "a string")) {}
  std::string value() const { return text(); }
  void set(const std::string& value) const { Node::set(value); }
};

class Enumeration : public Node {
 public:
  Enumeration(Node node, std::vector<Node> entries)
      : Node(detail::expectType(std::move(node), NT_Enumeration, "an enumeration")), entries_(std::move(entries)) {}
  /// The name of the entry that is chosen.
  std::string value() const { return text(); }
  /// Its number.
  int64_t number() const { return integer(); }
  void set(const std::string& entry) const { Node::set(entry); }
  /// The names that it can be set to now.
  std::vector<std::string> entries() const {
    std::vector<std::string> names;
    for (const Node& entry : entries_)
      if (entry.readable()) names.push_back(entry.text());
    return names;
  }

 private:
  std::vector<Node> entries_;
};

class Command : public Node {
 public:
  explicit Command(Node node) : Node(detail::expectType(std::move(node), NT_Command, "a command")) {}
  /// Whether the device has finished what execute() began.
  bool done() const { return boolean(); }
};

class Register : public Node {
 public:
  explicit Register(Node node) : Node(detail::expectType(std::move(node), NT_Register, "a register")) {}
  std::vector<std::byte> value() const { return registerData(); }
  /// All of its bytes.
  void set(const std::vector<std::byte>& bytes) const {
    constexpr const char* kDigits = "0123456789abcdef";
    std::string text = "0x";
    for (const std::byte byte : bytes) {
      text += kDigits[std::to_integer<unsigned>(byte) >> 4];
      text += kDigits[std::to_integer<unsigned>(byte) & 0xf];
    }
    Node::set(text);
  }
  int64_t address() const { return infoInteger(NI_RegisterAddress); }
  int64_t length() const { return infoInteger(NI_RegisterLength); }
};

}  // namespace oxgenapi

#endif
