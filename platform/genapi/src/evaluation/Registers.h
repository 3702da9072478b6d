// Reads and writes the bytes of registers: from what is remembered where that may be used, else through the port.
//
// Rules:
//   - Content is complete or absent. A node uses it only if it was filled after the node was dropped.
//   - Content that came from a write answers only nodes that may both read and write the place by their own AccessMode:
//     a status and a command may share an address.
//   - Nodes that may not cache remember what they read for the rest of the call, apart from the content of the others.
//   - What was written last to a place short enough for a number is kept apart, for merging bits where nothing can be
//     read, and never answers a read.
//   - When the bytes of a place turn out to have changed, everything computed from them is dropped, silently.
//   - A write drops what overlaps it.
// Guarded by the node map's lock.
#pragma once
#include <cstdint>

#include "GenApi/Types.h"
#include "evaluation/Evaluation.h"

namespace GENAPI_NAMESPACE {

// How bytes travel.
class IRegisterPort {
 public:
  virtual void readRegister(uint8_t* buffer, int64_t address, int64_t bytes) = 0;
  virtual void writeRegister(const uint8_t* buffer, int64_t address, int64_t bytes) = 0;

 protected:
  ~IRegisterPort() = default;
};

// A register as one access sees it.
struct RegisterPlace {
  NodeIndex node;  // whose register it is
  NodeIndex port;
  int64_t address;
  int64_t length;  // bytes of all of it
  EAccessMode ownMode;
  ECachingMode caching;
  bool mayUseWritten() const { return ownMode == RW; }
  RangeKey key() const { return {port, address, length}; }
};

// The content is forgotten; nodes that decoded it forget their values.
void dropContent(State& state, RegisterRange& range);

class Registers {
 public:
  Registers(State& state, Evaluation& evaluation) : state_(state), evaluation_(evaluation) {}
  Registers(const Registers&) = delete;
  Registers& operator=(const Registers&) = delete;

  // The first `bytes` of the place; all of it is what gets remembered.
  void read(const RegisterPlace& place, IRegisterPort& port, uint8_t* buffer, int64_t bytes, bool fresh) {
    if (bytes != place.length) return readStart(place, port, buffer, bytes, fresh);
    if (place.caching == NoCache) return readUncached(place, port, buffer, fresh);
    readCached(place, port, buffer, fresh);
  }
  // True when the content of all of the place is known afterwards.
  bool write(const RegisterPlace& place, IRegisterPort& port, const uint8_t* buffer, int64_t bytes);
  // What was written last through any node, 0 where nothing was. Only for ranges of numbers.
  const uint8_t* lastWritten(const RegisterPlace& place) { return rangeOf(place).lastWritten; }

 private:
  RegisterRange& rangeOf(const RegisterPlace& place) {
    if (state_.nodes[place.node].marks & kHasRange) {
      RegisterRange& last = *state_.detailsOf(place.node).range;
      if (last.key.address == place.address && last.key.length == place.length) return last;
    }
    return takeRange(place);
  }
  RegisterRange& takeRange(const RegisterPlace& place);
  void leaveRange(NodeIndex node);
  void removeOldest();
  void readStart(const RegisterPlace& place, IRegisterPort& port, uint8_t* buffer, int64_t bytes, bool fresh);
  // All of the place, by a node that may cache and by one that may not.
  void readCached(const RegisterPlace& place, IRegisterPort& port, uint8_t* buffer, bool fresh);
  void readUncached(const RegisterPlace& place, IRegisterPort& port, uint8_t* buffer, bool fresh);
  // False when the port changed something through this map meanwhile: nothing made of the bytes is kept.
  bool readPort(const RegisterPlace& place, IRegisterPort& port, uint8_t* buffer);
  // What nodes that may not cache have read in this call, or null.
  const uint8_t* passing(const RegisterPlace& place, const RegisterRange& range, bool fresh) const;
  void fill(const RegisterPlace& place, RegisterRange& range, const uint8_t* bytes, Revision revision);
  void noteMemory(const RegisterRange& range) {
    if (!evaluation_.isNoting()) return;
    for (const RangeUser& user : range.users) evaluation_.noteMemory(user.node);
  }
  void check(const RegisterPlace& place, IRegisterPort& port, RegisterRange& range);
  bool isFresh(uint32_t call, Revision revision) const { return call == evaluation_.call() && revision > lastWrite_; }
  bool mayServe(const RegisterPlace& place, const RegisterRange& range) const;
  void writePort(const RegisterPlace& place, IRegisterPort& port, const uint8_t* buffer, int64_t bytes);
  // Forgets what was computed from the content, except with one node.
  void dropComputed(RegisterRange& range, NodeIndex except);
  void dropWithComputed(RegisterRange& range, NodeIndex except);
  void dropOverlapping(const RangeKey& key, RegisterRange* except);
  // Nodes that must not use written content forget what they know.
  void dropWhatMayNotUseWritten(const RegisterRange& range, NodeIndex writer);

  State& state_;
  Evaluation& evaluation_;
  Revision lastWrite_ = 0;  // of a port
  uint64_t moves_ = 0;      // counts ranges that nodes have taken and lost
};

}  // namespace GENAPI_NAMESPACE
