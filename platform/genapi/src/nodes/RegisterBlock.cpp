#include "nodes/RegisterBlock.h"

#include <cstring>
#include <utility>

#include "Base/GCException.h"
#include "description/Limits.h"
#include "nodes/NodeBase.h"
#include "nodes/PortNode.h"

namespace GENAPI_NAMESPACE {

RegisterBlock::RegisterBlock(NodeBase& owner) : owner_(owner) {
  for (const Property& each : owner.properties()) {
    switch (each.element) {
      case Element::Address:
        if (__builtin_add_overflow(fixedAddress_, each.integer, &fixedAddress_)) addressIsFixed_ = false;
        break;
      case Element::pAddress:
      case Element::IntSwissKnife:
      case Element::pIndex:
        addressIsFixed_ = false;
        break;
      case Element::Length:
        length_ = each.integer;
        break;
      case Element::pLength:
        lengthLink_ = each.target;
        break;
      case Element::pPort:
        port_ = each.target;
        break;
      case Element::AccessMode:
        elementMode_ = static_cast<EAccessMode>(each.word);
        break;
      default:
        break;
    }
  }
}

PortNode& RegisterBlock::port() const {
  return static_cast<PortNode&>(owner_.map().node(port_));
}

int64_t RegisterBlock::length() {
  const int64_t bytes = lengthLink_ == kNoNode ? length_ : fetchLength();
  if (bytes < 1 || bytes > kMaxRegisterBytes) {
    throw OUT_OF_RANGE_EXCEPTION("%s: register length %ld must be between 1 and %ld",
                                 owner_.map().pathTo(owner_).c_str(), static_cast<long>(bytes),
                                 static_cast<long>(kMaxRegisterBytes));
  }
  return bytes;
}

int64_t RegisterBlock::fetchLength() {
  const EvaluationStep step(owner_.map(), owner_);
  return owner_.map().node(lengthLink_).readInteger({});
}

int64_t RegisterBlock::address() {
  if (addressIsFixed_) return fixedAddress_;
  NodeState& state = owner_.state();
  if (state.flags & kHasAddress) return address_;
  const EvaluationStep step(owner_.map(), owner_);
  const int64_t sum = fetchAddress();
  if (!owner_.isUncached() && step.isUnspoiled()) {
    address_ = sum;
    state.flags |= kHasAddress;
  }
  return sum;
}

int64_t RegisterBlock::reportedAddress() {
  const int64_t sum = address();
  return sum < 0 ? port().fromStart(sum) : sum;
}

int64_t RegisterBlock::fetchAddress() {
  NodeMap& map = owner_.map();
  int64_t sum = 0;
  bool overflow = false;
  const auto all = owner_.properties();
  for (size_t i = 0; i < all.size(); ++i) {
    const Property& each = all[i];
    int64_t part = 0;
    if (each.element == Element::Address) {
      part = each.integer;
    } else if (each.element == Element::pAddress || each.element == Element::IntSwissKnife) {
      part = map.node(each.target).readInteger({});
    } else if (each.element == Element::pIndex) {
      int64_t offset;
      const Property* next = i + 1 < all.size() ? &all[i + 1] : nullptr;
      if (next && next->element == Element::Offset) {
        offset = next->integer;
      } else if (next && next->element == Element::pOffset) {
        offset = map.node(next->target).readInteger({});
      } else {
        offset = length();
      }
      overflow |= __builtin_mul_overflow(map.node(each.target).readInteger({}), offset, &part);
    } else {
      continue;
    }
    overflow |= __builtin_add_overflow(sum, part, &sum);
  }
  if (overflow) throw OUT_OF_RANGE_EXCEPTION("%s: the address does not fit 64 bits", map.pathTo(owner_).c_str());
  return sum;
}

EAccessMode RegisterBlock::mode() {
  NodeMap& map = owner_.map();
  EAccessMode mode = Combine(elementMode_, port().accessMode());
  for (const Property& each : owner_.properties()) {
    switch (each.element) {
      case Element::pAddress:
      case Element::IntSwissKnife:
      case Element::pIndex:
      case Element::pOffset:
      case Element::pLength: {
        const EAccessMode link = map.node(each.target).accessMode();
        if (link == NI) return NI;
        if (!IsReadable(link)) mode = Combine(mode, NA);
        break;
      }
      default:
        break;
    }
  }
  return mode;
}

Place& RegisterBlock::place(int64_t at, int64_t bytes) {
  const PlaceKey key{port_, at, bytes};
  if (place_ && place_->key() == key) return *place_;
  forgetPlace();
  place_ = &owner_.map().registers().obtain(key, owner_.index());
  owner_.state().flags |= kHasPlace;
  return *place_;
}

bool RegisterBlock::answers(const Place& place) const {
  return place.isFilled() && place.fillStamp() >= owner_.state().stamp && (elementMode_ == RW || !place.isWritten());
}

void RegisterBlock::read(uint8_t* buffer, int64_t bytes, bool ignoreCache) {
  const int64_t at = address();
  if (owner_.isUncached()) {
    port().readRegister(buffer, at, bytes);
    return;
  }
  NodeMap& map = owner_.map();
  if (!ignoreCache) {
    const Place& known = place(at, bytes);
    if (answers(known)) {
      std::memcpy(buffer, known.bytes(), static_cast<size_t>(bytes));
      return;
    }
  }
  const uint64_t begun = map.stamp();
  port().readRegister(buffer, at, bytes);
  if (map.stamp() != begun) {
    // The port has changed something through this map meanwhile, and nobody knows whether before or after the bytes
    // were taken: nothing made of them is kept.
    map.dropDependents(owner_.index());
    map.dropNode(owner_.index());
    return;
  }
  map.registers().fillFromRead(place(at, bytes), buffer, begun);
}

void RegisterBlock::writeOrForget(const uint8_t* buffer, int64_t at, int64_t bytes) {
  try {
    port().writeRegister(buffer, at, bytes);
  } catch (...) {
    NodeMap& map = owner_.map();
    map.registers().dropOverlapping({port_, at, bytes}, nullptr);
    map.dropDependents(owner_.index());
    map.dropNode(owner_.index());
    throw;
  }
}

void RegisterBlock::write(const uint8_t* buffer, int64_t bytes) {
  const int64_t at = address();
  NodeMap& map = owner_.map();
  const uint64_t begun = map.stamp();
  writeOrForget(buffer, at, bytes);
  const bool undisturbed = map.stamp() == begun;
  RegisterCache& registers = map.registers();
  // What was written into a few bytes is noted whatever the caching: others may have to merge bits with it.
  Place* mine = !owner_.isUncached() || bytes <= Place::kMergeable ? &place(at, bytes) : nullptr;
  registers.dropOverlapping({port_, at, bytes}, mine);
  if (!mine) return;
  registers.noteWritten(*mine, buffer, bytes);
  if (elementMode_ != WO && owner_.isWriteThrough() && undisturbed) {
    registers.fillFromWrite(*mine, buffer, begun, owner_.index());
  } else {
    registers.dropWithComputed(*mine, owner_.index());
  }
}

void RegisterBlock::readStart(uint8_t* buffer, int64_t bytes, int64_t total, bool ignoreCache) {
  if (bytes == 0) return;
  if (bytes == total) return read(buffer, bytes, ignoreCache);
  const int64_t at = address();
  if (!owner_.isUncached() && !ignoreCache) {
    const Place* known = owner_.map().registers().find({port_, at, total});
    if (known && answers(*known)) {
      std::memcpy(buffer, known->bytes(), static_cast<size_t>(bytes));
      return;
    }
  }
  port().readRegister(buffer, at, bytes);
}

bool RegisterBlock::writeStart(const uint8_t* buffer, int64_t bytes, int64_t total) {
  if (bytes == 0) return (owner_.state().flags & kValid) != 0;
  if (bytes == total) {
    write(buffer, bytes);
    return true;
  }
  const int64_t at = address();
  NodeMap& map = owner_.map();
  const uint64_t begun = map.stamp();
  writeOrForget(buffer, at, bytes);
  RegisterCache& registers = map.registers();
  Place* mine = total <= Place::kMergeable ? &place(at, total) : registers.find({port_, at, total});
  const bool mayPatch = mine && map.stamp() == begun && answers(*mine) && owner_.isWriteThrough() && elementMode_ != WO;
  registers.dropOverlapping({port_, at, bytes}, mine);
  if (!mine) return false;
  registers.noteWritten(*mine, buffer, bytes);
  if (mayPatch) {
    registers.patch(*mine, buffer, bytes, owner_.index());
  } else {
    registers.dropWithComputed(*mine, owner_.index());
  }
  return mayPatch;
}

void RegisterBlock::readForMerging(uint8_t* buffer, int64_t bytes) {
  if (elementMode_ != WO && IsReadable(owner_.accessMode())) return read(buffer, bytes, false);
  std::memcpy(buffer, place(address(), bytes).lastWritten(), static_cast<size_t>(bytes));
}

void RegisterBlock::forgetContent() noexcept {
  if (place_) owner_.map().registers().drop(*place_);
}

void RegisterBlock::forgetPlace() noexcept {
  if (!place_) return;
  owner_.map().registers().leave(*std::exchange(place_, nullptr), owner_.index());
  owner_.state().flags &= static_cast<uint16_t>(~kHasPlace);
}

}  // namespace GENAPI_NAMESPACE
