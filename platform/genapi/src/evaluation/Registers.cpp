#include "evaluation/Registers.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "Base/GCException.h"

namespace GENAPI_NAMESPACE {

namespace {

// Most numbers are words: a copy of a known length needs no call.
void copyNumber(uint8_t* to, const uint8_t* from, int64_t bytes) {
  if (bytes == 4)
    std::memcpy(to, from, 4);
  else
    std::memcpy(to, from, static_cast<size_t>(bytes));
}

}  // namespace

void dropContent(State& state, RegisterRange& range) {
  range.hasContent = false;
  range.passingCall = 0;
  for (const RangeUser& user : range.users) {
    NodeState& node = state.nodes[user.node];
    node.kept &= static_cast<Questions>(~(kValue | kEntry));
    node.passing &= static_cast<Questions>(~(kValue | kEntry));
    node.marks &= static_cast<uint8_t>(~kValueValid);
  }
}

// --- which range ---

RegisterRange& Registers::takeRange(const RegisterPlace& place) {
  ++moves_;
  const RangeKey key = place.key();
  if (state_.nodes[place.node].marks & kHasRange) leaveRange(place.node);
  RegisterRange* range = state_.ranges.find(key);
  if (!range) {
    while (state_.ranges.isFullFor(key.length)) removeOldest();
    range = &state_.ranges.obtain(key);
  }
  range->users.push_back({place.node, place.mayUseWritten()});
  evaluation_.settle(place.node);
  evaluation_.noteMemory(place.node);
  state_.detailsOf(place.node).range = range;
  state_.nodes[place.node].marks |= kHasRange;
  return *range;
}

void Registers::leaveRange(NodeIndex node) {
  std::vector<RangeUser>& users = state_.detailsOf(node).range->users;
  const auto found = std::find_if(users.begin(), users.end(), [&](const RangeUser& each) { return each.node == node; });
  *found = users.back();
  users.pop_back();
  state_.nodes[node].marks &= static_cast<uint8_t>(~kHasRange);
}

void Registers::removeOldest() {
  ++moves_;
  RegisterRange& range = *state_.ranges.oldest();
  // Without the range nobody would tell its users of writes that overlap it.
  dropWithComputed(range, kNoNode);
  for (const RangeUser& user : range.users) state_.nodes[user.node].marks &= static_cast<uint8_t>(~kHasRange);
  state_.ranges.removeOldest();
}

// --- reading ---

bool Registers::mayServe(const RegisterPlace& place, const RegisterRange& range) const {
  return range.hasContent && range.filled >= state_.nodes[place.node].dropped &&
         (place.mayUseWritten() || !range.fromWrite);
}

const uint8_t* Registers::passing(const RegisterPlace& place, const RegisterRange& range, bool fresh) const {
  const bool serves = range.passingCall == evaluation_.call() &&
                      range.passingRead >= state_.nodes[place.node].dropped &&
                      (!fresh || range.passingRead > lastWrite_);
  return serves ? range.passing : nullptr;
}

void Registers::readStart(const RegisterPlace& place, IRegisterPort& port, uint8_t* buffer, int64_t bytes, bool fresh) {
  if (bytes == 0) return;
  // A part is not remembered, but may be known.
  if (place.caching != NoCache && !fresh) {
    evaluation_.settle(place.node);
    RegisterRange* const range = state_.ranges.find(place.key());
    if (range && mayServe(place, *range)) {
      std::memcpy(buffer, range->bytes(), static_cast<size_t>(bytes));
      return;
    }
  }
  port.readRegister(buffer, place.address, bytes);
}

inline bool Registers::readPort(const RegisterPlace& place, IRegisterPort& port, uint8_t* buffer) {
  const Revision begun = evaluation_.revision();
  port.readRegister(buffer, place.address, place.length);
  if (evaluation_.revision() == begun) [[likely]]
    return true;
  // Nobody knows whether the bytes were taken before or after the change.
  evaluation_.dropDependents(place.node);
  evaluation_.drop(place.node, true);
  evaluation_.noteDisturbance();
  return false;
}

void Registers::readUncached(const RegisterPlace& place, IRegisterPort& port, uint8_t* buffer, bool fresh) {
  if (place.length > RegisterRange::kNumberBytes) {  // nobody's input: not worth remembering
    if (readPort(place, port, buffer)) evaluation_.notePassingUse();
    return;
  }
  RegisterRange* range = &rangeOf(place);
  const uint32_t call = evaluation_.call();
  if (range->passingCall == call || range->readCall == call) {
    const bool wasRead = range->hasContent && isFresh(range->readCall, range->filled) && mayServe(place, *range);
    const uint8_t* const known = wasRead ? range->bytes() : passing(place, *range, fresh);
    if (known) {
      std::memcpy(buffer, known, static_cast<size_t>(place.length));
      return evaluation_.notePassingUse();
    }
  }
  const uint64_t moves = moves_;
  if (!readPort(place, port, buffer)) return;
  if (moves != moves_) range = &rangeOf(place);  // the port may have used others
  noteMemory(*range);
  copyNumber(range->passing, buffer, place.length);
  range->passingCall = call;
  range->passingRead = evaluation_.revision();
  range->used = true;
  evaluation_.notePassingUse();
}

void Registers::readCached(const RegisterPlace& place, IRegisterPort& port, uint8_t* buffer, bool fresh) {
  RegisterRange* range = &rangeOf(place);
  if (mayServe(place, *range) && (!fresh || isFresh(range->readCall, range->filled))) {
    evaluation_.noteUse();
    std::memcpy(buffer, range->bytes(), static_cast<size_t>(place.length));
    if (evaluation_.check() && range->readCall != evaluation_.call()) check(place, port, *range);
    return;
  }
  if (const uint8_t* known = passing(place, *range, fresh)) {
    std::memcpy(buffer, known, static_cast<size_t>(place.length));
    fill(place, *range, buffer, range->passingRead);
    return;
  }
  const uint64_t moves = moves_;
  if (!readPort(place, port, buffer)) return;
  if (moves != moves_) range = &rangeOf(place);
  fill(place, *range, buffer, evaluation_.revision());
}

// The content is what was read at that revision.
void Registers::fill(const RegisterPlace& place, RegisterRange& range, const uint8_t* bytes, Revision revision) {
  const auto length = static_cast<size_t>(place.length);
  const bool changed = range.known && std::memcmp(range.bytes(), bytes, length) != 0;
  if (!range.known || changed) std::memcpy(range.bytes(), bytes, length);
  range.known = range.hasContent = true;
  range.fromWrite = false;
  range.filled = revision;
  range.readCall = evaluation_.call();
  evaluation_.noteCallMemory();
  evaluation_.noteRemembered();
  noteMemory(range);
  // The reader's own number goes, too: it may be reading the bytes alone.
  if (changed) dropComputed(range, kNoNode);
  range.used = true;
  evaluation_.noteUse();
}

void Registers::check(const RegisterPlace& place, IRegisterPort& port, RegisterRange& range) {
  std::vector<uint8_t> now(static_cast<size_t>(place.length));
  bool isRead = true;
  try {
    port.readRegister(now.data(), place.address, place.length);
  } catch (const GENICAM_NAMESPACE::GenericException&) {
    isRead = false;
  }
  if (isRead && std::memcmp(range.bytes(), now.data(), now.size()) == 0) return;
  evaluation_.reportContent(place.node, range, range.bytes(), isRead ? now.data() : nullptr);
}

// --- writing ---

void Registers::writePort(const RegisterPlace& place, IRegisterPort& port, const uint8_t* buffer, int64_t bytes) {
  lastWrite_ = evaluation_.revision();
  try {
    port.writeRegister(buffer, place.address, bytes);
  } catch (...) {
    // The state of the device is unknown now.
    dropOverlapping({place.port, place.address, bytes}, nullptr);
    evaluation_.dropDependents(place.node);
    evaluation_.drop(place.node, true);
    throw;
  }
}

bool Registers::write(const RegisterPlace& place, IRegisterPort& port, const uint8_t* buffer, int64_t bytes) {
  if (bytes == 0) return (state_.nodes[place.node].marks & kValueValid) != 0;
  const bool whole = bytes == place.length;
  const Revision begun = evaluation_.revision();
  writePort(place, port, buffer, bytes);
  const bool undisturbed = evaluation_.revision() == begun;
  // What was written into a few bytes is noted whatever the caching: others may have to merge bits with it.
  const bool isNumber = place.length <= RegisterRange::kNumberBytes;
  RegisterRange* mine = nullptr;
  if (isNumber || (whole && place.caching != NoCache))
    mine = &rangeOf(place);
  else if (!whole)
    mine = state_.ranges.find(place.key());
  const bool mayFill = undisturbed && place.caching == WriteThrough && place.ownMode != WO;
  const bool mayPatch = mayFill && !whole && mine && mayServe(place, *mine);
  dropOverlapping({place.port, place.address, bytes}, mine);
  if (!mine) return whole;
  if (isNumber) std::memcpy(mine->lastWritten, buffer, static_cast<size_t>(bytes));
  mine->passingCall = mine->readCall = 0;
  if (!(whole ? mayFill : mayPatch)) {
    dropWithComputed(*mine, place.node);
    return whole;
  }
  const bool changed =
      !whole || !mine->hasContent || std::memcmp(mine->bytes(), buffer, static_cast<size_t>(bytes)) != 0;
  std::memcpy(mine->bytes(), buffer, static_cast<size_t>(bytes));
  mine->known = mine->hasContent = mine->fromWrite = true;
  if (whole) mine->filled = begun;
  evaluation_.noteRemembered();
  noteMemory(*mine);
  dropWhatMayNotUseWritten(*mine, place.node);
  if (changed) dropComputed(*mine, place.node);
  mine->used = true;
  return true;
}

// --- forgetting ---

void Registers::dropComputed(RegisterRange& range, NodeIndex except) {
  range.used = false;
  for (const RangeUser& user : range.users) {
    if (user.node == except) continue;
    evaluation_.dropValue(user.node);
    evaluation_.dropDependents(user.node);
  }
}

void Registers::dropWithComputed(RegisterRange& range, NodeIndex except) {
  dropContent(state_, range);
  dropComputed(range, except);
}

void Registers::dropOverlapping(const RangeKey& key, RegisterRange* except) {
  state_.ranges.forEachOverlapping(key, except, [&](RegisterRange& range) {
    if (range.hasContent || range.used) dropWithComputed(range, kNoNode);
  });
}

void Registers::dropWhatMayNotUseWritten(const RegisterRange& range, NodeIndex writer) {
  for (const RangeUser& user : range.users) {
    if (user.node == writer || user.mayUseWritten) continue;
    evaluation_.dropValue(user.node);
    state_.nodes[user.node].marks &= static_cast<uint8_t>(~kValueValid);
    evaluation_.dropDependents(user.node);
  }
}

}  // namespace GENAPI_NAMESPACE
