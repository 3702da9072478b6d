#include "firmware/ZipArchive.h"

#include <unistd.h>
#include <zip.h>

#include <algorithm>
#include <cstdio>
#include <map>

#include "FirmwareUpdate/FirmwareUpdateExceptions.h"
#include "firmware/GufLimits.h"
#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {

namespace {

constexpr size_t kLocalHeaderBytes = 30;
constexpr size_t kDirectoryEntryBytes = 46;
constexpr size_t kEndOfDirectoryBytes = 22;
constexpr size_t kZip64LocatorBytes = 20;
constexpr size_t kLongestComment = 0xffff;

std::string readText(const ByteRange& bytes, uint64_t offset, size_t size) {
  std::string text(size, '\0');
  bytes.read(offset, text.data(), text.size());
  return text;
}

uint32_t number16(std::string_view bytes, size_t at) {
  return static_cast<uint32_t>(static_cast<uint8_t>(bytes[at]) | static_cast<uint8_t>(bytes[at + 1]) << 8);
}
uint32_t number32(std::string_view bytes, size_t at) { return number16(bytes, at) | number16(bytes, at + 2) << 16; }

// Where the directory is, from its end record. libzip does not say, and only the directory has the members' offsets.
struct Directory {
  uint64_t offset = 0;
  uint64_t size = 0;
  size_t count = 0;
};

// Nothing but one clear end of a directory is taken, for libzip must have found the same. The text says what is wrong.
std::string findDirectory(const ByteRange& bytes, Directory& found) {
  const uint64_t tailSize =
      std::min<uint64_t>(bytes.size(), kZip64LocatorBytes + kEndOfDirectoryBytes + kLongestComment);
  const std::string tail = readText(bytes, bytes.size() - tailSize, static_cast<size_t>(tailSize));
  size_t end = std::string::npos;
  // Before a comment of unknown length.
  for (size_t at = tail.find("PK\5\6"); at != std::string::npos; at = tail.find("PK\5\6", at + 1)) {
    if (tail.size() - at < kEndOfDirectoryBytes) break;
    if (at + kEndOfDirectoryBytes + number16(tail, at + 20) != tail.size()) continue;
    if (end != std::string::npos) return "has two directories";
    end = at;
  }
  if (end == std::string::npos) return "is not a zip archive";
  if (end >= kZip64LocatorBytes && tail.compare(end - kZip64LocatorBytes, 4, "PK\6\7") == 0)
    return "has a zip64 directory";
  if (number16(tail, end + 4) != 0 || number16(tail, end + 6) != 0) return "is an archive of several volumes";
  found = {number32(tail, end + 16), number32(tail, end + 12), number16(tail, end + 10)};
  const uint64_t endOffset = bytes.size() - tailSize + end;
  if (found.offset > endOffset || found.size > endOffset - found.offset) return "has a directory outside the archive";
  if (found.size > kMaxZipDirectoryBytes) return "has a directory of more than 16 MiB";
  return "";
}

// Members that share bytes are how a small archive inflates to a huge one.
const ArchiveMember* overlapping(const std::vector<ArchiveMember>& members) {
  std::map<uint64_t, const ArchiveMember*> byOffset;
  for (const ArchiveMember& member : members)
    if (member.compressedSize > 0 && !byOffset.emplace(member.dataOffset, &member).second) return &member;
  uint64_t end = 0;
  for (const auto& [offset, member] : byOffset) {
    if (offset < end) return member;
    end = offset + member->compressedSize;
  }
  return nullptr;
}

std::string called(const std::string& name) { return "member '" + name.substr(0, 200) + "' "; }

}  // namespace

ZipArchive::ZipArchive(const ByteRange& bytes, const std::string& label) : label_(label) {
  Directory directory;
  if (const std::string fault = findDirectory(bytes, directory); !fault.empty()) refuseArchive(fault);

  // A stream of its own over the same open file.
  const int descriptor = ::dup(bytes.descriptor());
  FILE* stream = descriptor < 0 ? nullptr : ::fdopen(descriptor, "rb");
  if (!stream) {
    if (descriptor >= 0) ::close(descriptor);
    refuse<FileIOException>("{}: the file cannot be opened once more", label);
  }
  zip_error_t error;
  zip_error_init(&error);
  zip_source_t* source =
      zip_source_filep_create(stream, bytes.offset(), static_cast<zip_int64_t>(bytes.size()), &error);
  if (!source) ::fclose(stream);
  archive_.reset(source ? zip_open_from_source(source, ZIP_RDONLY | ZIP_CHECKCONS, &error) : nullptr);
  if (source && !archive_) zip_source_free(source);
  const int code = zip_error_code_zip(&error);
  // There is a directory: that there is "no zip archive" is memory that ran out for one of its entries.
  const std::string reason = code == ZIP_ER_NOZIP    ? "out of memory"
                             : code == ZIP_ER_EXISTS ? "a member is there twice"
                                                     : zip_error_strerror(&error);
  zip_error_fini(&error);
  if (!archive_) refuseArchive("cannot be opened: " + reason);

  const std::string records = readText(bytes, directory.offset, static_cast<size_t>(directory.size));
  if (zip_get_num_entries(archive_.get(), 0) != static_cast<zip_int64_t>(directory.count))
    refuseArchive("has a damaged directory");
  members_.reserve(directory.count);
  std::string_view left = records;
  for (size_t i = 0; i < directory.count; ++i) {
    if (left.size() < kDirectoryEntryBytes) refuseArchive("has a damaged directory");
    const size_t nameSize = number16(left, 28);
    const size_t size = kDirectoryEntryBytes + nameSize + number16(left, 30) + number16(left, 32);
    if (left.size() < size) refuseArchive("has a damaged directory");
    addMember(left.substr(kDirectoryEntryBytes, nameSize));
    ArchiveMember& member = members_.back();
    const uint64_t header = number32(left, 42);
    member.dataOffset = header + kLocalHeaderBytes;
    if (member.dataOffset <= directory.offset) {
      const std::string local = readText(bytes, header, kLocalHeaderBytes);
      member.dataOffset += number16(local, 26) + number16(local, 28);
    }
    if (member.dataOffset > directory.offset || member.compressedSize > directory.offset - member.dataOffset)
      refuseArchive(called(member.name) + "lies outside the archive");
    left.remove_prefix(size);
  }
  if (const ArchiveMember* member = overlapping(members_))
    refuseArchive(called(member->name) + "overlaps another member");
}

// The next one, as libzip knows it.
void ZipArchive::addMember(std::string_view name) {
  const auto index = static_cast<zip_uint64_t>(members_.size());
  const char* const known = zip_get_name(archive_.get(), index, ZIP_FL_ENC_RAW);
  zip_stat_t facts;
  zip_stat_init(&facts);
  if (!known || name.empty() || name != known || zip_stat_index(archive_.get(), index, ZIP_FL_ENC_RAW, &facts) != 0)
    refuseArchive("has a member with an unusable name");
  const bool isStored = facts.comp_method == ZIP_CM_STORE;
  if (facts.encryption_method != ZIP_EM_NONE) refuseArchive(called(known) + "is encrypted");
  if (!isStored && facts.comp_method != ZIP_CM_DEFLATE)
    refuseArchive(called(known) + "is compressed by method " + std::to_string(facts.comp_method) +
                  ", neither stored nor deflated");
  if (isStored && facts.size != facts.comp_size) refuseArchive(called(known) + "is stored with two different sizes");
  members_.push_back({known, isStored, facts.comp_size, facts.size, 0});
}

const ArchiveMember* ZipArchive::find(std::string_view name) const {
  const zip_int64_t index = zip_name_locate(archive_.get(), std::string(name).c_str(), ZIP_FL_ENC_RAW);
  return index < 0 ? nullptr : &members_[static_cast<size_t>(index)];
}

ZipArchive::OpenMember ZipArchive::open(const ArchiveMember& member, const std::string& label) const {
  const auto index = static_cast<zip_uint64_t>(&member - members_.data());
  OpenMember opened(zip_fopen_index(archive_.get(), index, 0));
  if (!opened) refuse<FileIOException>("{}: cannot be extracted: {}", label, zip_strerror(archive_.get()));
  return opened;
}

void ZipArchive::refuseArchive(const std::string& what) const { refuse<FormatException>("{}: {}", label_, what); }

void ZipArchive::Discard::operator()(zip* archive) const { zip_discard(archive); }

void ZipArchive::CloseMember::operator()(zip_file* member) const { zip_fclose(member); }

}  // namespace GENAPI_NAMESPACE
