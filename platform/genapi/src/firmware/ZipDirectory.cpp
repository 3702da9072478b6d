#include "firmware/ZipDirectory.h"

#include <algorithm>
#include <numeric>

#include "FirmwareUpdate/FirmwareUpdateExceptions.h"
#include "firmware/GufLimits.h"
#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {

namespace {

constexpr uint32_t kLocalHeader = 0x04034b50;
constexpr uint32_t kDirectoryEntry = 0x02014b50;
constexpr uint32_t kEndOfDirectory = 0x06054b50;
constexpr size_t kLocalHeaderBytes = 30;
constexpr size_t kDirectoryEntryBytes = 46;
constexpr size_t kEndOfDirectoryBytes = 22;
constexpr size_t kLongestComment = 0xffff;
constexpr uint16_t kEncryptedFlags = 1 << 0 | 1 << 6 | 1 << 13;
constexpr uint16_t kSizesFollowFlag = 1 << 3;  // sizes and checksum stand behind the data, not in the local header
constexpr uint16_t kStored = 0;
constexpr uint16_t kDeflated = 8;
constexpr uint32_t kElsewhere = 0xffffffff;  // the number stands in the zip64 field
constexpr uint16_t kZip64Field = 1;

uint16_t number16(const uint8_t* bytes) {
  return static_cast<uint16_t>(bytes[0] | bytes[1] << 8);
}
uint32_t number32(const uint8_t* bytes) {
  return number16(bytes) | static_cast<uint32_t>(number16(bytes + 2)) << 16;
}
uint64_t number64(const uint8_t* bytes) {
  return number32(bytes) | static_cast<uint64_t>(number32(bytes + 4)) << 32;
}

// Replaces those of the numbers that the zip64 field holds, in its order; false when it lacks one.
bool takeZip64(const uint8_t* extra, size_t size, std::initializer_list<uint64_t*> numbers) {
  const uint8_t* field = nullptr;
  size_t left = 0;
  for (size_t at = 0; size - at >= 4;) {
    const size_t length = number16(extra + at + 2);
    if (length > size - at - 4) return false;
    if (number16(extra + at) == kZip64Field && !field) {
      field = extra + at + 4;
      left = length;
    }
    at += 4 + length;
  }
  for (uint64_t* number : numbers) {
    if (*number != kElsewhere) continue;
    if (!field || left < 8) return false;
    *number = number64(field);
    field += 8;
    left -= 8;
  }
  return true;
}

}  // namespace

ZipDirectory::ZipDirectory(const ByteRange& archive, const std::string& label) : label_(label) {
  // The end record stands before a comment of unknown length, so it is searched from the end.
  const uint64_t tailSize = std::min<uint64_t>(archive.size(), kEndOfDirectoryBytes + kLongestComment);
  std::vector<uint8_t> tail(static_cast<size_t>(tailSize));
  archive.read(archive.size() - tailSize, tail.data(), tail.size());
  const uint8_t* end = nullptr;
  for (size_t at = tail.size(); !end && at >= kEndOfDirectoryBytes; --at) {
    const uint8_t* candidate = tail.data() + at - kEndOfDirectoryBytes;
    if (number32(candidate) == kEndOfDirectory && number16(candidate + 20) == tail.size() - at) end = candidate;
  }
  if (!end) refuseArchive("is not a zip archive");
  const uint64_t endOffset = archive.size() - tailSize + static_cast<uint64_t>(end - tail.data());
  const size_t count = number16(end + 10);
  const uint64_t size = number32(end + 12);
  const uint64_t offset = number32(end + 16);
  if (number16(end + 4) != 0 || number16(end + 6) != 0 || number16(end + 8) != count)
    refuseArchive("is an archive of several volumes");
  if (offset == kElsewhere || size == kElsewhere || count == 0xffff) refuseArchive("has a zip64 directory");
  if (offset > endOffset || size > endOffset - offset) refuseArchive("has a directory outside the archive");
  if (size > kMaxZipDirectoryBytes) refuseArchive("has a directory of more than 16 MiB");

  std::vector<uint8_t> directory(static_cast<size_t>(size));
  archive.read(offset, directory.data(), directory.size());
  members_.reserve(count);
  size_t at = 0;
  for (size_t i = 0; i < count; ++i) {
    const uint8_t* record = directory.data() + at;
    const size_t left = directory.size() - at;
    if (left < kDirectoryEntryBytes || number32(record) != kDirectoryEntry) refuseArchive("has a damaged directory");
    const size_t length =
        kDirectoryEntryBytes + number16(record + 28) + size_t{number16(record + 30)} + number16(record + 32);
    if (length > left) refuseArchive("has a damaged directory");
    readMember(archive, record, offset);
    at += length;
  }
  if (at != directory.size()) refuseArchive("has bytes in its directory that belong to no member");
  checkOverlaps();
}

void ZipDirectory::readMember(const ByteRange& archive, const uint8_t* record, uint64_t directoryOffset) {
  ArchiveMember member;
  const size_t nameSize = number16(record + 28);
  const size_t extraSize = number16(record + 30);
  member.name.assign(reinterpret_cast<const char*>(record + kDirectoryEntryBytes), nameSize);
  const uint16_t flags = number16(record + 8);
  member.method = number16(record + 10);
  member.checksum = number32(record + 16);
  member.compressedSize = number32(record + 20);
  member.size = number32(record + 24);
  uint64_t header = number32(record + 42);
  const std::string called = "member '" + member.name.substr(0, 200) + "' ";
  if (member.name.empty() || member.name.find('\0') != std::string::npos)
    refuseArchive("has a member with an unusable name");
  if (!takeZip64(record + kDirectoryEntryBytes + nameSize, extraSize, {&member.size, &member.compressedSize, &header}))
    refuseArchive(called + "has a damaged extra field");
  if (number16(record + 34) != 0) refuseArchive(called + "lies on another volume");
  if ((flags & kEncryptedFlags) != 0) refuseArchive(called + "is encrypted");
  if (member.method != kStored && member.method != kDeflated)
    refuseArchive(called + "is compressed by method " + std::to_string(member.method) +
                  ", neither stored nor deflated");
  if (member.isStored() && member.size != member.compressedSize)
    refuseArchive(called + "is stored with two different sizes");

  if (header > directoryOffset || directoryOffset - header < kLocalHeaderBytes)
    refuseArchive(called + "has a local header outside the archive");
  uint8_t local[kLocalHeaderBytes];
  archive.read(header, local, sizeof(local));
  const size_t localNameSize = number16(local + 26);
  const size_t localExtraSize = number16(local + 28);
  const uint64_t room = directoryOffset - header - kLocalHeaderBytes;
  if (number32(local) != kLocalHeader || localNameSize != nameSize || localNameSize + localExtraSize > room ||
      member.compressedSize > room - localNameSize - localExtraSize)
    refuseArchive(called + "has a local header that disagrees with the directory");
  std::vector<uint8_t> rest(localNameSize + localExtraSize);
  archive.read(header + kLocalHeaderBytes, rest.data(), rest.size());
  uint64_t localSize = number32(local + 22);
  uint64_t localCompressed = number32(local + 18);
  const uint32_t localChecksum = number32(local + 14);
  const bool readable = takeZip64(rest.data() + localNameSize, localExtraSize, {&localSize, &localCompressed});
  const bool sizesFollow = (flags & kSizesFollowFlag) != 0;
  const auto agrees = [sizesFollow](uint64_t inHeader, uint64_t inDirectory) {
    return inHeader == inDirectory || (sizesFollow && inHeader == 0);
  };
  if (!readable ||
      !std::equal(member.name.begin(), member.name.end(), rest.begin(),
                  [](char a, uint8_t b) { return static_cast<uint8_t>(a) == b; }) ||
      number16(local + 8) != member.method ||
      (number16(local + 6) & (kEncryptedFlags | kSizesFollowFlag)) != (flags & (kEncryptedFlags | kSizesFollowFlag)) ||
      !agrees(localSize, member.size) || !agrees(localCompressed, member.compressedSize) ||
      !agrees(localChecksum, member.checksum))
    refuseArchive(called + "has a local header that disagrees with the directory");

  member.dataOffset = header + kLocalHeaderBytes + localNameSize + localExtraSize;
  if (!byName_.emplace(member.name, members_.size()).second) refuseArchive(called + "is there twice");
  headerOffsets_.push_back(header);
  members_.push_back(std::move(member));
}

// Members that share bytes are how a small archive inflates to a huge one.
void ZipDirectory::checkOverlaps() const {
  std::vector<size_t> order(members_.size());
  std::iota(order.begin(), order.end(), size_t{0});
  std::sort(order.begin(), order.end(), [this](size_t a, size_t b) { return headerOffsets_[a] < headerOffsets_[b]; });
  for (size_t i = 1; i < order.size(); ++i) {
    const ArchiveMember& before = members_[order[i - 1]];
    if (before.dataOffset + before.compressedSize > headerOffsets_[order[i]])
      refuseArchive("member '" + before.name.substr(0, 200) + "' overlaps another member");
  }
}

const ArchiveMember* ZipDirectory::find(std::string_view name) const {
  const auto found = byName_.find(std::string(name));
  return found == byName_.end() ? nullptr : &members_[found->second];
}

void ZipDirectory::refuseArchive(const std::string& what) const {
  refuse<FormatException>("{}: {}", label_, what);
}

}  // namespace GENAPI_NAMESPACE
