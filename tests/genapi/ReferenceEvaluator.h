// What every node of a random description must answer, computed afresh each time from the bytes of the device: slow,
// without any cache, and from the model alone.
#pragma once
#include <array>
#include <map>

#include "RandomDescription.h"

namespace randomly {

[[noreturn]] inline void refuse(Why why) {
  throw Refused{why};
}
// A whole number that fits 64 bits.
inline int64_t fitted(double whole) {
  if (!(whole >= -0x1p63 && whole < 0x1p63)) refuse(Why::Runtime);
  return static_cast<int64_t>(whole);
}

inline bool readable(EAccessMode mode) {
  return mode == RO || mode == RW;
}

class ReferenceEvaluator {
 public:
  using Memory = std::array<std::vector<uint8_t>, kPorts>;
  explicit ReferenceEvaluator(const std::vector<Node>& nodes);

  Memory memory;

  // All of these throw Refused where the node must refuse.
  EAccessMode mode(int node);
  // As number; through a value link an enumeration answers with the numeric value of its entry.
  int64_t integer(int node, bool asSource = false);
  double real(int node, bool asSource = false);
  std::string text(int node);
  int64_t enumeration(int node);
  int64_t integerLimit(int node, bool upper);
  double realLimit(int node, bool upper);
  int64_t integerIncrement(int node);
  bool hasRealIncrement(int node);
  double realIncrement(int node);
  std::vector<int64_t> integerSet(int node, bool bounded);
  bool hasSet(int node);
  // A verified read refuses what a verified write refuses.
  void check(int node, int64_t value);
  void check(int node, double value);

  void writeInteger(int node, int64_t value, bool verify);
  void writeReal(int node, double value, bool verify);
  void writeText(int node, const std::string& value);
  void writeEntry(int node, const Entry& entry, bool verify);
  void execute(int node, bool verify);
  void writeStart(int node, const std::vector<uint8_t>& bytes);
  std::vector<uint8_t> bytes(int node);

  int64_t address(int node);
  int64_t length(int node);

 private:
  struct Held {
    int64_t integer = 0;
    double real = 0;
  };
  template <class Number>
  struct Names;
  Held& ownNumber(int node);
  template <class Number>
  Number fetched(int node);
  const Node& at(int node) const { return nodes_[static_cast<size_t>(node)]; }
  EAccessMode guarded(const Guards& guards, EAccessMode mode, bool& implemented);
  EAccessMode typeMode(int node);
  const Cell& selected(const Node& node);
  // Where an Integer, Float or table gets its value now; kNone when it is its own.
  int source(const Node& node);
  int64_t decoded(int node);
  void store(int node, const std::vector<uint8_t>& bytes);
  const Entry& entryOf(int node, int64_t value);
  bool isAvailable(const Entry& entry);
  void writeNearest(int node, long double value, bool verify);
  std::vector<int> targets(const Node& node) const;
  double converted(int node, double value);
  int64_t converted(int node, int64_t value);
  int64_t inverted(int node, int64_t value);
  double inverted(int node, double value);
  std::vector<double> realSet(int node, bool bounded);
  template <class Number>
  Number convertedLimit(int node, bool upper);
  bool hasLimits(int node) const;
  void requireReadable(int node);

  const std::vector<Node>& nodes_;
  std::vector<Held> held_;
  std::vector<std::string> heldText_;
  std::map<const Cell*, Held> cells_;                                   // written constants of tables
  std::map<std::array<int64_t, 3>, std::vector<uint8_t>> lastWritten_;  // by port, address, length
};

}  // namespace randomly
