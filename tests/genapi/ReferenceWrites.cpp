// Writing, and the bytes of registers.
#include <algorithm>
#include <bit>
#include <cmath>

#include "ReferenceEvaluator.h"

namespace randomly {

namespace {

// The point of min, min + inc, ... up to max that is nearest to the value, ties away from zero.
int64_t onGrid(double value, int64_t min, int64_t max, int64_t inc) {
  const Wide low = min, high = low + (static_cast<Wide>(max) - low) / inc * inc;
  const double whole = std::floor(value);
  const Wide below = whole >= 0x1p64 ? high : whole <= -0x1p64 ? low : static_cast<Wide>(whole);
  Wide best = low;
  for (Wide step = -1; step <= 2; ++step) {
    const Wide point = std::clamp(low + ((below - low) / inc + step) * inc, low, high);
    const auto distance = [&](Wide each) {
      return std::fabs(static_cast<long double>(value) - static_cast<long double>(each));
    };
    const bool tie = distance(point) == distance(best);
    if (distance(point) < distance(best) || (tie && (point > best) == (value >= 0))) best = point;
  }
  return static_cast<int64_t>(best);
}

}  // namespace

// The constant that the node itself holds, or the one that the index of its table selects.
ReferenceEvaluator::Held& ReferenceEvaluator::ownNumber(int index) {
  const Node& node = at(index);
  return node.index == kNone ? held_[static_cast<size_t>(index)] : cells_[&selected(node)];
}

void ReferenceEvaluator::writeInteger(int index, int64_t value, bool verify) {
  const Node& node = at(index);
  if (isFloatKind(node.kind)) return writeReal(index, static_cast<double>(value), verify);
  if (node.kind == Kind::Enumeration) return writeNearest(index, value, verify);
  if (node.kind == Kind::Boolean) {
    if (node.value != kNone) return writeInteger(node.value, value != 0 ? node.on : node.off, verify);
    held_[static_cast<size_t>(index)].integer = value != 0;
    return;
  }
  if (verify) check(index, value);
  if (node.kind == Kind::IntSwissKnife) refuse(Why::Access);
  if (node.kind == Kind::IntConverter) return writeInteger(node.value, inverted(index, value), verify);
  if (node.kind == Kind::Integer) {
    if (node.index == kNone && node.value != kNone) {
      for (const int each : targets(node)) writeInteger(each, value, verify);
    } else if (const int from = source(node); from != kNone) {
      writeInteger(from, value, verify);
    } else {
      ownNumber(index).integer = value;
    }
    return;
  }
  // An integer register: the field, put into what the other bits are.
  const auto count = static_cast<size_t>(length(index));
  if (count > 8) refuse(Why::Range);
  std::vector<uint8_t> content(count);
  const int width = node.kind == Kind::MaskedIntReg ? node.width : static_cast<int>(8 * count);
  if (width < static_cast<int>(8 * count)) {
    if (readable(mode(index))) {
      content = bytes(index);
    } else if (const auto last = lastWritten_.find({node.port, address(index), length(index)});
               last != lastWritten_.end()) {
      content = last->second;
    }
  }
  for (int bit = 0; bit < width; ++bit) {
    const auto weight = static_cast<size_t>(node.shift + bit);
    uint8_t& byte = content[node.bigEndian ? count - 1 - weight / 8 : weight / 8];
    const auto mask = static_cast<uint8_t>(1 << weight % 8);
    byte = static_cast<uint8_t>((value >> bit & 1) != 0 ? byte | mask : byte & ~mask);
  }
  store(index, content);
}

void ReferenceEvaluator::writeReal(int index, double value, bool verify) {
  const Node& node = at(index);
  if (node.kind == Kind::Boolean) return writeInteger(index, value != 0, verify);
  if (node.kind == Kind::Enumeration) return writeNearest(index, value, verify);
  if (isIntegerKind(node.kind)) {
    const int64_t low = integerLimit(index, false), high = integerLimit(index, true);
    const bool inside = value >= static_cast<double>(low) && value <= static_cast<double>(high);
    if (std::isnan(value) || (verify && !inside)) refuse(Why::Range);
    if (hasSet(index)) {
      const std::vector<int64_t> set = integerSet(index, true);
      const auto distance = [&](int64_t each) {
        return std::fabs(static_cast<long double>(value) - static_cast<long double>(each));
      };
      const auto nearest =
          std::min_element(set.begin(), set.end(), [&](int64_t a, int64_t b) { return distance(a) < distance(b); });
      if (nearest != set.end()) return writeInteger(index, *nearest, verify);
    }
    const int64_t increment = integerIncrement(index);
    if (increment <= 0 || low > high) refuse(Why::Logical);
    return writeInteger(index, onGrid(value, low, high, increment), verify);
  }
  if (verify) check(index, value);
  if (node.kind == Kind::SwissKnife) refuse(Why::Access);
  if (node.kind == Kind::Converter) return writeReal(node.value, inverted(index, value), verify);
  if (node.kind == Kind::Float) {
    const int from = source(node);
    if (from != kNone) return writeReal(from, value, verify);
    ownNumber(index).real = value;
    return;
  }
  const auto count = static_cast<size_t>(length(index));
  if (count != 4 && count != 8) refuse(Why::Range);
  const uint64_t all = count == 8 ? std::bit_cast<uint64_t>(value) : std::bit_cast<uint32_t>(static_cast<float>(value));
  std::vector<uint8_t> content(count);
  for (size_t i = 0; i < count; ++i) {
    content[i] = static_cast<uint8_t>(all >> 8 * (node.bigEndian ? count - 1 - i : i));
  }
  store(index, content);
}

void ReferenceEvaluator::writeNearest(int index, long double value, bool verify) {
  const Entry* nearest = nullptr;
  const auto away = [&](const Entry& each) {
    const long double numeric =
        each.numeric ? static_cast<long double>(*each.numeric) : static_cast<long double>(each.value);
    return std::fabs(numeric - value);
  };
  for (const Entry& each : at(index).entries) {
    if (isAvailable(each) && (!nearest || away(each) < away(*nearest))) nearest = &each;
  }
  if (!nearest) refuse(Why::Access);
  writeEntry(index, *nearest, verify);
}

void ReferenceEvaluator::writeEntry(int index, const Entry& entry, bool verify) {
  if (verify && !isAvailable(entry)) refuse(Why::Access);
  const int from = at(index).value;
  if (from != kNone) return writeInteger(from, entry.value, verify);
  held_[static_cast<size_t>(index)].integer = entry.value;
}

void ReferenceEvaluator::execute(int index, bool verify) {
  const Node& node = at(index);
  if (node.value != kNone) writeInteger(node.value, node.pCommand == kNone ? node.on : integer(node.pCommand), verify);
}

void ReferenceEvaluator::writeText(int index, const std::string& value) {
  const Node& node = at(index);
  if (node.kind == Kind::String && node.value != kNone) return writeText(node.value, value);
  if (node.kind == Kind::String) {
    heldText_[static_cast<size_t>(index)] = value;
    return;
  }
  const auto count = static_cast<size_t>(length(index));
  if (value.size() > count) refuse(Why::Range);
  std::vector<uint8_t> content(value.begin(), value.end());
  content.resize(count);
  store(index, content);
}

// --- bytes ---

int64_t ReferenceEvaluator::length(int index) {
  const Node& node = at(index);
  const int64_t bytes = node.pLength == kNone ? node.length : integer(node.pLength);
  if (bytes < 1 || bytes > 16 << 20) refuse(Why::Range);
  return bytes;
}

int64_t ReferenceEvaluator::address(int index) {
  const Node& node = at(index);
  Wide sum = node.address;
  if (node.pAddress != kNone) sum += integer(node.pAddress);
  if (node.embedded != kNone) sum += integer(node.embedded);
  if (node.addressIndex != kNone) {
    const int64_t stride = node.stride == Node::Stride::Given    ? node.offset
                           : node.stride == Node::Stride::Linked ? integer(node.pOffset)
                                                                 : length(index);
    sum += static_cast<Wide>(integer(node.addressIndex)) * stride;
  }
  if (sum < INT64_MIN || sum > INT64_MAX) refuse(Why::Range);
  return static_cast<int64_t>(sum);
}

// The port refuses what lies outside of the device.
static void requireInside(int64_t address, int64_t length) {
  if (address < 0 || address > kPortBytes - length) refuse(Why::Access);
}

std::vector<uint8_t> ReferenceEvaluator::bytes(int index) {
  const int64_t count = length(index), first = address(index);
  requireInside(first, count);
  const auto begin = memory[static_cast<size_t>(at(index).port)].begin() + first;
  return {begin, begin + count};
}

void ReferenceEvaluator::store(int index, const std::vector<uint8_t>& content) {
  const int64_t first = address(index), whole = length(index);  // before the bytes change, which may be their own
  requireInside(first, static_cast<int64_t>(content.size()));
  std::copy(content.begin(), content.end(), memory[static_cast<size_t>(at(index).port)].begin() + first);
  std::vector<uint8_t>& last = lastWritten_[{at(index).port, first, whole}];
  last.resize(static_cast<size_t>(whole));
  std::copy(content.begin(), content.end(), last.begin());
}

void ReferenceEvaluator::writeStart(int index, const std::vector<uint8_t>& content) {
  if (static_cast<int64_t>(content.size()) > length(index)) refuse(Why::Range);
  if (!content.empty()) store(index, content);
}

}  // namespace randomly
