#include "Transfer.h"

#include <algorithm>

namespace tool {
namespace {

// Where the file data passes. A device without the feature has no files, and nothing is counted.
int64_t addressOfBuffer(const NodeMap& map) {
  try {
    return map.node("FileAccessBuffer").infoInteger(NI_RegisterAddress);
  } catch (const Failure&) {
    return -1;
  }
}

}  // namespace

Transfer::Transfer(Session& session, std::string name, uint64_t size)
    : session_(session),
      progress_(session.output(), std::move(name), size, "bytes"),
      size_(size),
      bufferAddress_(addressOfBuffer(session.map())) {
  session_.port().watch(this);
}

Transfer::~Transfer() { session_.port().watch(nullptr); }

bool Transfer::mayAccess() {
  progress_.reach(size_ == 0 ? bytes_ : std::min(bytes_, size_));  // the last block may have been filled up
  if (!interrupt_.requested() || isStopped_) return true;
  isStopped_ = true;
  return false;
}

void Transfer::accessed(int64_t address, int64_t length) {
  if (address == bufferAddress_) bytes_ += static_cast<uint64_t>(length);
}

}  // namespace tool
