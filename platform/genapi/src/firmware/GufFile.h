// An update file: a zip archive with package.zip stored inside, and the members of that package.
#pragma once
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "firmware/ZipArchive.h"

namespace GENAPI_NAMESPACE {

// How a required member that is missing is reported.
enum class MissingMember { isFormatError, isFileNotFound };

// The outer archive alone.
struct GufLayout {
  ByteRange file;
  ByteRange package;  // package.zip
  uint64_t signatureOffset = 0;
  uint64_t signatureSize = 0;  // 0 when there is none

  // Throws FileNotFoundException, FileIOException, FormatException.
  static GufLayout read(const std::string& path, MissingMember missing);
};

// One member as a stream of bytes. Inflating counts: more than the directory promised, or more than the limits allow,
// is refused when it shows.
class MemberReader {
 public:
  uint64_t size() const { return member_.size; }
  // Fills the buffer as far as the member reaches; fewer bytes than asked are its end, which has then been checked
  // against size and checksum. Throws FileIOException (damaged data), FormatException (limits).
  size_t read(void* buffer, size_t size);

 private:
  friend class GufFile;
  MemberReader(std::string label, const ArchiveMember& member, ZipArchive::OpenMember opened)
      : label_(std::move(label)), member_(member), opened_(std::move(opened)) {}

  std::string label_;
  const ArchiveMember& member_;
  ZipArchive::OpenMember opened_;
  uint64_t done_ = 0;
};

// Of a package's bytes; equal ones are the same package unless somebody wants it otherwise.
using PackageDigest = std::array<uint64_t, 2>;

// The package inside an update file, opened for reading its members.
class GufFile {
 public:
  // Reads both directories. Throws as GufLayout::read.
  GufFile(const std::string& path, MissingMember missing);

  const std::string& path() const { return layout_.file.path(); }
  uint64_t fileSize() const { return layout_.file.size(); }
  // Of the whole package, which is read for it.
  PackageDigest digest() const;

  // control.xml. Throws when it is missing or longer than kMaxControlBytes, and as MemberReader::read.
  std::string readControl() const;
  // A data file. Throws FileNotFoundException (no such member), FormatException (limits). One reader at a time; it must
  // not outlive this object.
  MemberReader openMember(std::string_view name) const;
  // Reads a data file to its end. Throws as openMember and MemberReader::read.
  void checkMember(std::string_view name) const;

 private:
  MemberReader open(const ArchiveMember& member) const;
  std::string labelOf(std::string_view member) const;

  GufLayout layout_;
  MissingMember missing_;
  ZipArchive archive_;
};

}  // namespace GENAPI_NAMESPACE
