#include "nodes/RegisterNodes.h"

#include <bit>
#include <limits>

#include "nodes/NumberBytes.h"
#include "nodes/UnsupportedNodes.h"
#include "text/NumberSyntax.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;

namespace {

bool isBigEndian(const NodeBase& node) {
  const Property* given = node.find(Element::Endianess);
  return given && given->word == BigEndian;
}

}  // namespace

IntRegNode::IntRegNode(Device& device, NodeIndex index) : RegisterBase(device, index), bigEndian_(isBigEndian(*this)) {
  const Property* const sign = find(Element::Sign);
  signed_ = sign && sign->word == Signed;
  masked_ = record().type == NodeType::MaskedIntReg;
  const int64_t bit = given(Element::Bit, 0);
  firstBit_ = static_cast<uint8_t>(given(Element::LSB, bit));
  lastBit_ = static_cast<uint8_t>(given(Element::MSB, bit));
}

IntRegNode::Field IntRegNode::field() const {
  const int64_t bytes = block().length();
  const int bits = static_cast<int>(8 * bytes);
  if (bytes > 8) refuse<OutOfRangeException>("{}: register length {} does not fit a 64-bit integer", path(), bytes);
  if (!masked_) return {bytes, 0, bits};
  // Bit 0 of a big-endian register is the most significant one, and LSB is then the larger number.
  const int width = bigEndian_ ? firstBit_ - lastBit_ + 1 : lastBit_ - firstBit_ + 1;
  const int shift = bigEndian_ ? bits - 1 - firstBit_ : firstBit_;
  if (width < 1 || shift < 0 || shift + width > bits) {
    refuse<OutOfRangeException>("{}: bits {} to {} lie outside the register of {} bytes", path(), firstBit_, lastBit_,
                                bytes);
  }
  return {bytes, shift, width};
}

int64_t IntRegNode::compute(Reading how) const {
  const Field bits = field();
  uint8_t bytes[8];
  block().read(bytes, bits.bytes, bits.bytes, how.ignoreCache);
  return extended(decodeBytes(bytes, bits.bytes, bigEndian_) >> bits.shift, bits.width, signed_);
}

void IntRegNode::store(int64_t value, bool) const {
  const Field bits = field();
  uint8_t bytes[8];
  auto content = static_cast<uint64_t>(value);
  if (bits.width < 8 * bits.bytes) {
    block().readForMerging(bytes, bits.bytes);
    const uint64_t mask = lowBits(bits.width) << bits.shift;
    content = (decodeBytes(bytes, bits.bytes, bigEndian_) & ~mask) | (content << bits.shift & mask);
  }
  encodeBytes(content, bytes, bits.bytes, bigEndian_);
  block().write(bytes, bits.bytes, bits.bytes);
}

int64_t IntRegNode::computeMin() const { return fieldMin(field().width, signed_); }
int64_t IntRegNode::computeMax() const { return fieldMax(field().width, signed_); }

FloatRegNode::FloatRegNode(Device& device, NodeIndex index)
    : RegisterBase(device, index), bigEndian_(isBigEndian(*this)) {}

int64_t FloatRegNode::bytes() const {
  const int64_t bytes = block().length();
  if (bytes == 4 || bytes == 8) return bytes;
  refuse<OutOfRangeException>("{}: register length {} must be 4 or 8 for a float", path(), bytes);
}

double FloatRegNode::compute(Reading how) const {
  const int64_t count = bytes();
  uint8_t buffer[8];
  block().read(buffer, count, count, how.ignoreCache);
  const uint64_t content = decodeBytes(buffer, count, bigEndian_);
  return count == 8 ? std::bit_cast<double>(content) : std::bit_cast<float>(static_cast<uint32_t>(content));
}

void FloatRegNode::store(double value, bool) const {
  const int64_t count = bytes();
  uint8_t buffer[8];
  const uint64_t content =
      count == 8 ? std::bit_cast<uint64_t>(value) : std::bit_cast<uint32_t>(static_cast<float>(value));
  encodeBytes(content, buffer, count, bigEndian_);
  block().write(buffer, count, count);
}

double FloatRegNode::computeMax() const {
  return bytes() == 4 ? std::numeric_limits<float>::max() : std::numeric_limits<double>::max();
}

std::string StringRegNode::compute(Reading how) const {
  const int64_t bytes = block().length();
  std::string text(static_cast<size_t>(bytes), '\0');
  block().read(reinterpret_cast<uint8_t*>(text.data()), bytes, bytes, how.ignoreCache);
  text.resize(std::min(text.find('\0'), text.size()));
  return text;
}

void StringRegNode::store(std::string_view value, bool) const {
  const auto bytes = static_cast<size_t>(block().length());
  if (value.size() > bytes)
    refuse<OutOfRangeException>("{}: length {} exceeds register length {}", path(), value.size(), bytes);
  std::string padded(value);
  padded.resize(bytes, '\0');
  const auto total = static_cast<int64_t>(bytes);
  block().write(reinterpret_cast<const uint8_t*>(padded.data()), total, total);
}

void RegisterNode::requireSupported() const {
  if (record().type == NodeType::ConfRom) refuseUnsupported(*this);
}

gcstring RegisterNode::ToString(bool, bool IgnoreCache) {
  return reading([&] {
    requireSupported();
    const Evaluation::Frame frame(evaluation(), index());
    std::vector<uint8_t> bytes(static_cast<size_t>(block().length()));
    const auto total = static_cast<int64_t>(bytes.size());
    block().read(bytes.data(), total, total, IgnoreCache);
    evaluation().noteReading(frame);
    return gcstring(text::printRegisterText(bytes));
  });
}

void RegisterNode::FromString(const gcstring& ValueStr, bool Verify) {
  writing(Verify, [&] {
    requireSupported();
    std::vector<uint8_t> bytes(static_cast<size_t>(block().length()));
    if (!text::parseRegisterText(ValueStr.view(), bytes)) {
      const size_t digits = ValueStr.size() >= 2 ? ValueStr.size() - 2 : 0;
      refuse<InvalidArgumentException>("{}: register text needs 0x and {} hex digits, got {}", name(), 2 * bytes.size(),
                                       digits);
    }
    const auto total = static_cast<int64_t>(bytes.size());
    write(Verify, [&] { return block().write(bytes.data(), total, total); });
  });
}

}  // namespace GENAPI_NAMESPACE
