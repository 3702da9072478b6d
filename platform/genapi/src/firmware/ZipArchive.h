// A zip archive within a file, read by libzip, which also checks that directory and local headers agree.
#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "firmware/ByteRange.h"

struct zip;
struct zip_file;

namespace GENAPI_NAMESPACE {

struct ArchiveMember {
  std::string name;  // bytes as stored
  bool isStored = false;
  uint64_t compressedSize = 0;
  uint64_t size = 0;
  uint64_t dataOffset = 0;  // within the archive
};

// Stricter than a general reader: two readers of an accepted archive see the same members. Archives of several volumes,
// zip64 directories, encrypted or overlapping members, duplicate names, methods other than stored and deflated, and
// local headers that disagree with the directory are refused.
class ZipArchive {
 public:
  // `label` names the archive in texts. Throws FormatException, FileIOException.
  ZipArchive(const ByteRange& bytes, const std::string& label);

  const std::vector<ArchiveMember>& members() const { return members_; }
  // Null when there is none.
  const ArchiveMember* find(std::string_view name) const;

  struct CloseMember {
    void operator()(zip_file* member) const;
  };
  using OpenMember = std::unique_ptr<zip_file, CloseMember>;
  // One of members(), for reading. Throws FileIOException with `label` in front.
  OpenMember open(const ArchiveMember& member, const std::string& label) const;

 private:
  struct Discard {
    void operator()(zip* archive) const;
  };

  void addMember(std::string_view name);
  [[noreturn]] void refuseArchive(const std::string& what) const;

  std::string label_;
  std::unique_ptr<zip, Discard> archive_;
  std::vector<ArchiveMember> members_;  // in the archive's order
};

}  // namespace GENAPI_NAMESPACE
