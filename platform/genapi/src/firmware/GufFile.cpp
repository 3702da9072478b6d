#include "firmware/GufFile.h"

#include <xxhash.h>
#include <zip.h>

#include <algorithm>

#include "FirmwareUpdate/FirmwareUpdateExceptions.h"
#include "firmware/GufLimits.h"
#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {

namespace {

constexpr char kPackageName[] = "package.zip";
constexpr char kSignatureName[] = "package.p7s";
constexpr char kControlName[] = "control.xml";

std::string quoted(const std::string& path) { return "'" + path + "'"; }

[[noreturn]] void throwMissing(const std::string& where, const char* name, MissingMember missing) {
  if (missing == MissingMember::isFileNotFound) refuse<FileNotFoundException>("{}: has no member {}", where, name);
  refuse<FormatException>("{}: is not an update file: it has no member {}", where, name);
}

const ArchiveMember* storedMember(const ZipArchive& archive, const std::string& path, const char* name) {
  const ArchiveMember* member = archive.find(name);
  if (member && !member->isStored)
    refuse<FormatException>("'{}': member {} is compressed; it must be stored", path, name);
  return member;
}

// Tells whether a package is still the one that was read; authenticates nothing.
PackageDigest digestOf(const ByteRange& package) {
  XXH3_state_t state;
  XXH3_128bits_reset(&state);
  std::array<uint8_t, 65536> part;
  for (uint64_t at = 0; at < package.size(); at += part.size()) {
    const auto size = static_cast<size_t>(std::min<uint64_t>(part.size(), package.size() - at));
    package.read(at, part.data(), size);
    XXH3_128bits_update(&state, part.data(), size);
  }
  const XXH128_hash_t hash = XXH3_128bits_digest(&state);
  return {hash.low64, hash.high64};
}

}  // namespace

GufLayout GufLayout::read(const std::string& path, MissingMember missing) {
  const ByteRange file = ByteRange::open(path);
  if (file.size() > kMaxGufBytes) refuse<FormatException>("'{}': is longer than the limit of 4 GiB", path);
  const ZipArchive archive(file, quoted(path));
  const ArchiveMember* package = storedMember(archive, path, kPackageName);
  if (!package) throwMissing(quoted(path), kPackageName, missing);
  GufLayout layout{file, file.part(package->dataOffset, package->size)};
  if (const ArchiveMember* signature = storedMember(archive, path, kSignatureName)) {
    layout.signatureOffset = signature->dataOffset;
    layout.signatureSize = signature->size;
  }
  return layout;
}

// --- one member ---

size_t MemberReader::read(void* buffer, size_t size) {
  size_t filled = 0;
  while (filled < size) {
    const zip_int64_t got = zip_fread(opened_.get(), static_cast<char*>(buffer) + filled, size - filled);
    if (got < 0) refuse<FileIOException>("{}: cannot be extracted: {}", label_, zip_file_strerror(opened_.get()));
    if (got == 0) {
      if (done_ != member_.size) refuse<FileIOException>("{}: ends after {} of {} bytes", label_, done_, member_.size);
      break;
    }
    filled += static_cast<size_t>(got);
    done_ += static_cast<uint64_t>(got);
    if (done_ > member_.size)
      refuse<FormatException>("{}: inflates to more than the {} bytes of its directory entry", label_, member_.size);
    if (done_ / kMaxInflateRatio > member_.compressedSize)
      refuse<FormatException>("{}: inflates to more than {} times its size", label_, kMaxInflateRatio);
  }
  return filled;
}

// --- the package ---

GufFile::GufFile(const std::string& path, MissingMember missing)
    : layout_(GufLayout::read(path, missing)),
      missing_(missing),
      archive_(layout_.package, quoted(path) + ": package.zip") {
  uint64_t total = 0;
  for (const ArchiveMember& member : archive_.members()) {
    total += std::min(member.size, kMaxInflatedBytes + 1);
    if (total > kMaxInflatedBytes)
      refuse<FormatException>("'{}': the members of package.zip inflate to more than 8 GiB", path);
  }
}

PackageDigest GufFile::digest() const { return digestOf(layout_.package); }

std::string GufFile::labelOf(std::string_view member) const {
  return quoted(path()) + ": member '" + std::string(member.substr(0, 200)) + "'";
}

MemberReader GufFile::open(const ArchiveMember& member) const {
  const std::string label = labelOf(member.name);
  return {label, member, archive_.open(member, label)};
}

std::string GufFile::readControl() const {
  const ArchiveMember* member = archive_.find(kControlName);
  if (!member) throwMissing(quoted(path()) + ": package.zip", kControlName, missing_);
  if (member->size > kMaxControlBytes)
    refuse<FormatException>("{}: is longer than the limit of 4 MiB", labelOf(kControlName));
  MemberReader reader = open(*member);
  std::string text(static_cast<size_t>(member->size) + 1, '\0');  // one more, so that the end is seen and checked
  text.resize(reader.read(text.data(), text.size()));
  return text;
}

MemberReader GufFile::openMember(std::string_view name) const {
  const ArchiveMember* member = archive_.find(name);
  if (!member) refuse<FileNotFoundException>("{}: is missing in package.zip", labelOf(name));
  if (member->size > kMaxDataFileBytes) refuse<FormatException>("{}: is longer than the limit of 2 GiB", labelOf(name));
  return open(*member);
}

void GufFile::checkMember(std::string_view name) const {
  MemberReader reader = openMember(name);
  std::array<char, 65536> part;
  while (reader.read(part.data(), part.size()) == part.size()) {
  }
}

}  // namespace GENAPI_NAMESPACE
