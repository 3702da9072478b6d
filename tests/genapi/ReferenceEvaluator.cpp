#include "ReferenceEvaluator.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace randomly {

namespace {

EAccessMode both(EAccessMode a, EAccessMode b) {
  if (a == NI || b == NI) return NI;
  if (a == NA || b == NA || (a == RO && b == WO) || (a == WO && b == RO)) return NA;
  if (a == RO || b == RO) return RO;
  return a == WO || b == WO ? WO : RW;
}

bool writable(EAccessMode mode) {
  return mode == WO || mode == RW;
}

}  // namespace

ReferenceEvaluator::ReferenceEvaluator(const std::vector<Node>& nodes) : nodes_(nodes) {
  for (const Node& node : nodes) {
    held_.push_back({static_cast<int64_t>(node.held), node.held});
    heldText_.push_back(node.text);
  }
  for (auto& bytes : memory) bytes.resize(kPortBytes);
}

// --- access modes ---

EAccessMode ReferenceEvaluator::guarded(const Guards& guards, EAccessMode mode, bool& implemented) {
  implemented = true;
  for (const int guard : {guards.implemented, guards.available, guards.locked}) {
    if (guard == kNone) continue;
    if (!readable(this->mode(guard))) return both(mode, NA);
    const bool set = isFloatKind(at(guard).kind) ? real(guard) != 0 : integer(guard) != 0;
    if (guard == guards.implemented && !set) {
      implemented = false;
      return NI;
    }
    if (guard == guards.available && !set) mode = NA;
    if (guard == guards.locked && set) mode = mode == RW ? RO : mode == WO ? NA : mode;
  }
  return mode;
}

EAccessMode ReferenceEvaluator::mode(int node) {
  bool implemented;
  const EAccessMode mode = guarded(at(node).guards, RW, implemented);
  return implemented ? both(both(mode, at(node).imposed), typeMode(node)) : NI;
}

bool ReferenceEvaluator::isAvailable(const Entry& entry) {
  bool implemented;
  const EAccessMode mode = guarded(entry.guards, RO, implemented);
  return mode != NI && mode != NA;
}

std::vector<int> ReferenceEvaluator::targets(const Node& node) const {
  std::vector<int> all = node.copiesBefore;
  all.push_back(node.value);
  all.insert(all.end(), node.copiesAfter.begin(), node.copiesAfter.end());
  return all;
}

EAccessMode ReferenceEvaluator::typeMode(int index) {
  const Node& node = at(index);
  const auto needing = [&](EAccessMode mode, int link) {
    if (link == kNone) return mode;
    const EAccessMode linked = this->mode(link);
    return linked == NI ? NI : readable(linked) ? mode : both(mode, NA);
  };
  if (isRegister(node.kind)) {
    EAccessMode mode = node.access;
    for (const int link : {node.pAddress, node.embedded, node.addressIndex, node.pOffset, node.pLength}) {
      mode = needing(mode, link);
      if (mode == NI) break;
    }
    return mode;
  }
  if (node.index != kNone) {
    if (!readable(mode(node.index))) return NA;
    const Cell& cell = selected(node);
    return cell.link == kNone ? RW : mode(cell.link);
  }
  if (node.kind >= Kind::IntSwissKnife) {
    EAccessMode mode = node.value == kNone ? RO : this->mode(node.value);
    for (const Declared& each : node.names) {
      const EAccessMode before = mode;
      mode = needing(mode, each.node);
      if (mode == NI && before != NI) break;
    }
    return mode;
  }
  EAccessMode mode = node.value == kNone ? RW : this->mode(node.value);
  if (node.kind == Kind::Command) return needing(mode, node.pCommand);
  if (node.kind == Kind::Enumeration) {
    bool any = false, anyImplemented = false;
    for (const Entry& entry : node.entries) {
      bool implemented;
      const EAccessMode own = guarded(entry.guards, RO, implemented);
      anyImplemented = anyImplemented || implemented;
      any = any || own == RO;
      if (any) break;
    }
    if (!any) mode = anyImplemented ? both(mode, NA) : NI;
  }
  if (node.copiesBefore.empty() && node.copiesAfter.empty()) return mode;
  bool sameIncrement = true;
  for (const int each : targets(node)) {
    if (each == node.value) continue;
    const EAccessMode copy = this->mode(each);
    mode = both(mode, copy == WO ? RW : copy);
  }
  if (!writable(mode)) return mode;
  for (const int each : targets(node)) {
    sameIncrement = integerIncrement(each) == integerIncrement(node.value) && sameIncrement;
  }
  return sameIncrement ? mode : mode == RW ? RO : NA;
}

void ReferenceEvaluator::requireReadable(int node) {
  if (!readable(mode(node))) refuse(Why::Access);
}

// --- values ---

const Cell& ReferenceEvaluator::selected(const Node& node) {
  const int64_t wanted = integer(node.index);
  for (const Cell& each : node.cells) {
    if (each.index == wanted) return each;
  }
  return node.otherwise;
}

int ReferenceEvaluator::source(const Node& node) {
  return node.index != kNone ? selected(node).link : node.value;
}

template <class Number>
struct ReferenceEvaluator::Names final : Meaning<Number> {
  Names(ReferenceEvaluator& theReference, const Node& theNode, Number theArgument)
      : reference(theReference), node(theNode), given(theArgument) {}
  Number argument() override { return given; }
  Number named(size_t index) override {
    const Declared& name = node.names[index];
    if (name.expression) return expressionOf(*name.expression);
    constexpr bool kWhole = std::is_same_v<Number, int64_t>;
    if (name.node == kNone) {
      if constexpr (kWhole) return name.integer;
      return static_cast<Number>(name.real);
    }
    if (name.aspect == Aspect::Value) {
      if constexpr (kWhole) return reference.integer(name.node);
      return static_cast<Number>(reference.real(name.node));
    }
    const bool upper = name.aspect == Aspect::Max;
    if constexpr (kWhole) return reference.integerLimit(name.node, upper);
    return static_cast<Number>(reference.realLimit(name.node, upper));
  }
  Number expressionOf(const Expression& expression) {
    return valueOf(expression, static_cast<Meaning<Number>&>(*this));
  }

  ReferenceEvaluator& reference;
  const Node& node;
  Number given;
};

int64_t ReferenceEvaluator::converted(int node, int64_t value) {
  Names<int64_t> names(*this, at(node), value);
  return names.expressionOf(at(node).formula);
}
double ReferenceEvaluator::converted(int node, double value) {
  Names<double> names(*this, at(node), value);
  return names.expressionOf(at(node).formula);
}

int64_t ReferenceEvaluator::inverted(int node, int64_t value) {
  Names<int64_t> names(*this, at(node), value);
  return names.expressionOf(at(node).inverse);
}
double ReferenceEvaluator::inverted(int node, double value) {
  Names<double> names(*this, at(node), value);
  return names.expressionOf(at(node).inverse);
}

template <class Number>
Number ReferenceEvaluator::fetched(int index) {
  constexpr bool kWhole = std::is_same_v<Number, int64_t>;
  const Node& node = at(index);
  const auto constant = [](const Held& held) {
    if constexpr (kWhole) return held.integer;
    return static_cast<Number>(held.real);
  };
  if (node.index != kNone) {
    const Cell& cell = selected(node);
    if (cell.link == kNone) {
      const auto written = cells_.find(&cell);
      if (written != cells_.end()) return constant(written->second);
      return static_cast<Number>(cell.constant);
    }
  }
  const int from = source(node);
  if (from == kNone) return constant(held_[static_cast<size_t>(index)]);
  if constexpr (kWhole) return integer(from, true);
  return static_cast<Number>(real(from, true));
}

int64_t ReferenceEvaluator::decoded(int index) {
  const Node& node = at(index);
  if (length(index) > 8) refuse(Why::Range);
  const std::vector<uint8_t> content = bytes(index);
  uint64_t all = 0;
  for (size_t i = 0; i < content.size(); ++i) {
    all |= uint64_t{content[i]} << 8 * (node.bigEndian ? content.size() - 1 - i : i);
  }
  const auto width =
      static_cast<unsigned>(node.kind == Kind::MaskedIntReg ? node.width : static_cast<int>(8 * content.size()));
  all = all >> node.shift << (64 - width);
  return node.isSigned ? static_cast<int64_t>(all) >> (64 - width) : static_cast<int64_t>(all >> (64 - width));
}

int64_t ReferenceEvaluator::enumeration(int index) {
  const Node& node = at(index);
  return node.value == kNone ? held_[static_cast<size_t>(index)].integer : integer(node.value, true);
}

const Entry& ReferenceEvaluator::entryOf(int node, int64_t value) {
  for (const Entry& each : at(node).entries) {
    if (each.value == value) return each;
  }
  refuse(Why::Argument);
}

int64_t ReferenceEvaluator::integer(int index, bool asSource) {
  const Node& node = at(index);
  switch (node.kind) {
    case Kind::Integer:
      return fetched<int64_t>(index);
    case Kind::IntReg:
    case Kind::MaskedIntReg:
      return decoded(index);
    case Kind::IntSwissKnife:
      return converted(index, int64_t{0});
    case Kind::IntConverter:
      return converted(index, integer(node.value, true));
    case Kind::Boolean: {
      if (node.value == kNone) return held_[static_cast<size_t>(index)].integer != 0;
      const int64_t raw = integer(node.value, true);
      if (raw != node.on && raw != node.off) refuse(Why::Logical);
      return raw == node.on;
    }
    case Kind::Enumeration: {
      const int64_t value = enumeration(index);
      if (!asSource) return value;
      const Entry& entry = entryOf(index, value);
      return entry.numeric ? fitted(std::round(*entry.numeric)) : entry.value;
    }
    default:
      return fitted(std::round(real(index)));
  }
}

double ReferenceEvaluator::real(int index, bool asSource) {
  const Node& node = at(index);
  switch (node.kind) {
    case Kind::Float:
      return fetched<double>(index);
    case Kind::FloatReg: {
      if (length(index) != 4 && length(index) != 8) refuse(Why::Range);
      const std::vector<uint8_t> content = bytes(index);
      uint64_t all = 0;
      for (size_t i = 0; i < content.size(); ++i) {
        all |= uint64_t{content[i]} << 8 * (node.bigEndian ? content.size() - 1 - i : i);
      }
      if (content.size() == 8) return std::bit_cast<double>(all);
      return std::bit_cast<float>(static_cast<uint32_t>(all));
    }
    case Kind::SwissKnife:
      return converted(index, 0.0);
    case Kind::Converter:
      return converted(index, real(node.value, true));
    case Kind::Enumeration: {
      const int64_t value = enumeration(index);
      if (!asSource) return static_cast<double>(value);
      const Entry& entry = entryOf(index, value);
      return entry.numeric ? *entry.numeric : static_cast<double>(entry.value);
    }
    default:
      return static_cast<double>(integer(index, asSource));
  }
}

std::string ReferenceEvaluator::text(int index) {
  const Node& node = at(index);
  if (node.kind == Kind::String) return node.value == kNone ? heldText_[static_cast<size_t>(index)] : text(node.value);
  const std::vector<uint8_t> content = bytes(index);
  return {content.begin(), std::find(content.begin(), content.end(), 0)};
}

}  // namespace randomly
