// The members of a zip archive as its directory and its local headers agree on them.
#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "firmware/ByteRange.h"

namespace GENAPI_NAMESPACE {

struct ArchiveMember {
  std::string name;  // bytes as stored
  uint16_t method = 0;
  uint32_t checksum = 0;
  uint64_t compressedSize = 0;
  uint64_t size = 0;
  uint64_t dataOffset = 0;  // within the archive
  bool isStored() const { return method == 0; }
};

// Stricter than a general reader: two readers of an accepted archive see the same members. Archives of several volumes,
// zip64 directories, encrypted or overlapping members, duplicate names, methods other than stored and deflated, and
// local headers that disagree with the directory are refused.
class ZipDirectory {
 public:
  // `label` names the archive in texts. Throws FormatException, FileIOException.
  ZipDirectory(const ByteRange& archive, const std::string& label);

  const std::vector<ArchiveMember>& members() const { return members_; }
  // Null when there is none.
  const ArchiveMember* find(std::string_view name) const;

 private:
  void readMember(const ByteRange& archive, const uint8_t* record, uint64_t directoryOffset);
  void checkOverlaps() const;
  [[noreturn]] void refuseArchive(const std::string& what) const;

  std::string label_;
  std::vector<ArchiveMember> members_;
  std::vector<uint64_t> headerOffsets_;  // of the local headers, in the members' order
  std::unordered_map<std::string, size_t> byName_;
};

}  // namespace GENAPI_NAMESPACE
