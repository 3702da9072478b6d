#include "nodes/RegisterBlock.h"

#include <cstring>

#include "description/ElementRules.h"
#include "description/Limits.h"
#include "nodes/NodeBase.h"
#include "nodes/PortNode.h"

namespace GENAPI_NAMESPACE {

RegisterBlock::RegisterBlock(const NodeBase& owner)
    : owner_(owner),
      length_(owner.given(Element::Length, 0)),
      port_(owner.target(Element::pPort)),
      lengthLink_(owner.target(Element::pLength)) {
  constexpr ElementSet kMovingParts(Element::pAddress, Element::IntSwissKnife, Element::pIndex);
  for (const Property& each : owner.properties()) {
    if (each.element == Element::AccessMode) ownMode_ = static_cast<EAccessMode>(each.word);
    const bool overflows =
        each.element == Element::Address && __builtin_add_overflow(fixedAddress_, each.integer, &fixedAddress_);
    if (overflows || kMovingParts.has(each.element)) addressIsFixed_ = false;
  }
}

PortNode& RegisterBlock::port() const { return static_cast<PortNode&>(owner_.other(port_)); }

inline RegisterPlace RegisterBlock::place(int64_t length) const {
  return {owner_.index(), port_, address(), length, ownMode_, owner_.cachingMode()};
}

int64_t RegisterBlock::length() const {
  const int64_t bytes = lengthLink_ == kNoNode ? length_
                                               : owner_.ask(owner_.other(lengthLink_),
                                                            [](const NodeBase& of) { return of.readInteger({}); });
  if (bytes < 1 || bytes > kMaxRegisterBytes) {
    refuse<OutOfRangeException>("{}: register length {} must be between 1 and {}", owner_.path(), bytes,
                                kMaxRegisterBytes);
  }
  return bytes;
}

int64_t RegisterBlock::address() const {
  if (addressIsFixed_) return fixedAddress_;
  return owner_.device().evaluation.answer<kAddress, int64_t>(owner_.index(), false,
                                                              [this] { return computeAddress(); });
}

int64_t RegisterBlock::reportedAddress() const {
  const int64_t sum = address();
  return sum < 0 ? port().fromStart(sum) : sum;
}

int64_t RegisterBlock::computeAddress() const {
  int64_t sum = 0;
  bool overflow = false;
  const auto all = owner_.properties();
  for (size_t i = 0; i < all.size(); ++i) {
    const Property& each = all[i];
    int64_t part = 0;
    if (each.element == Element::Address) {
      part = each.integer;
    } else if (each.element == Element::pAddress || each.element == Element::IntSwissKnife) {
      part = owner_.other(each.target).readInteger({});
    } else if (each.element == Element::pIndex) {
      int64_t offset;
      const Property* next = i + 1 < all.size() ? &all[i + 1] : nullptr;
      if (next && next->element == Element::Offset)
        offset = next->integer;
      else if (next && next->element == Element::pOffset)
        offset = owner_.other(next->target).readInteger({});
      else
        offset = length();
      overflow |= __builtin_mul_overflow(owner_.other(each.target).readInteger({}), offset, &part);
    } else {
      continue;
    }
    overflow |= __builtin_add_overflow(sum, part, &sum);
  }
  if (overflow) refuse<OutOfRangeException>("{}: the address does not fit 64 bits", owner_.path());
  return sum;
}

EAccessMode RegisterBlock::mode() const {
  EAccessMode mode = Combine(ownMode_, port().accessMode());
  constexpr ElementSet kPlaceLinks(Element::pAddress, Element::IntSwissKnife, Element::pIndex, Element::pOffset,
                                   Element::pLength);
  for (const Property& each : owner_.properties()) {
    if (!kPlaceLinks.has(each.element)) continue;
    const EAccessMode link = owner_.other(each.target).accessMode();
    if (link == NI) return NI;
    if (!IsReadable(link)) mode = Combine(mode, NA);
  }
  return mode;
}

void RegisterBlock::read(uint8_t* buffer, int64_t bytes, int64_t total, bool ignoreCache) const {
  owner_.device().registers.read(place(total), port(), buffer, bytes, ignoreCache);
}

bool RegisterBlock::write(const uint8_t* buffer, int64_t bytes, int64_t total) const {
  return owner_.device().registers.write(place(total), port(), buffer, bytes);
}

void RegisterBlock::readForMerging(uint8_t* buffer, int64_t bytes) const {
  if (ownMode_ != WO && IsReadable(owner_.accessMode())) return read(buffer, bytes, bytes, false);
  std::memcpy(buffer, owner_.device().registers.lastWritten(place(bytes)), static_cast<size_t>(bytes));
}

}  // namespace GENAPI_NAMESPACE
