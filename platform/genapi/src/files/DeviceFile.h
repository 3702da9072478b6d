// One open file of a device: its running offset, one block of memory, and what becomes of failures.
#pragma once
#include <cstdint>
#include <ios>
#include <string>
#include <vector>

#include "GenApi/Filestream.h"

namespace GENAPI_NAMESPACE {

class DeviceFile {
 public:
  // False when the device lacks the protocol or refuses; refusal() then tells why. Exceptions of nodes and ports pass.
  bool open(INodeMap* map, const char* name, std::ios_base::openmode mode);
  // As open, but throws RuntimeException "file 'X' could not be opened for writing: ...".
  void openForWriting(INodeMap* map, const char* name, std::ios_base::openmode mode);
  // "status Failure" or "the device has no FileSelector". One that the device lacks is also in missingFeature().
  const std::string& refusal() const { return refusal_; }
  const std::string& missingFeature() const { return adapter_.missingFeature(); }

  // The block: what is transferred at once, and memory for it.
  std::vector<char>& block() { return block_; }
  int64_t blockSize() const { return static_cast<int64_t>(block_.size()); }

  // Appends at the running offset. Throws RuntimeException "writing file 'X' stopped at byte N: ..." when the device
  // takes less; no later write is tried then.
  void write(const char* data, int64_t count);
  // Reads on from the running offset; fewer bytes than asked are the end of the file, which is final. Throws
  // RuntimeException "reading file 'X' stopped at byte N of M: ..." when the device stops below FileSize.
  int64_t read(char* data, int64_t count);
  // False when the device refuses.
  bool close();
  // As close, but throws RuntimeException "file 'X' could not be closed: status S".
  void closeOrThrow();
  bool hasFailed() const { return failed_; }

 private:
  void checkEnd() const;

  FileProtocolAdapter adapter_;
  INodeMap* map_ = nullptr;
  std::string name_;
  std::string refusal_;
  std::vector<char> block_;
  int64_t offset_ = 0;
  bool ended_ = false;
  bool failed_ = false;
};

}  // namespace GENAPI_NAMESPACE
