#include "firmware/GufFile.h"

#include <unistd.h>
#include <zip.h>

#include <algorithm>
#include <array>
#include <cstdio>

#include "FirmwareUpdate/FirmwareUpdateExceptions.h"
#include "firmware/GufLimits.h"
#include "firmware/PackageDigest.h"
#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {

namespace {

constexpr char kPackageName[] = "package.zip";
constexpr char kSignatureName[] = "package.p7s";
constexpr char kControlName[] = "control.xml";

std::string quoted(const std::string& path) {
  return "'" + path + "'";
}

[[noreturn]] void throwMissing(const std::string& where, const char* name, MissingMember missing) {
  if (missing == MissingMember::isFileNotFound) refuse<FileNotFoundException>("{}: has no member {}", where, name);
  refuse<FormatException>("{}: is not an update file: it has no member {}", where, name);
}

const ArchiveMember* storedMember(const ZipDirectory& directory, const std::string& path, const char* name) {
  const ArchiveMember* member = directory.find(name);
  if (member && !member->isStored())
    refuse<FormatException>("'{}': member {} is compressed; it must be stored", path, name);
  return member;
}

struct ZipDiscard {
  void operator()(zip_t* archive) const { zip_discard(archive); }
};

struct ZipFileClose {
  void operator()(zip_file_t* file) const { zip_fclose(file); }
};

}  // namespace

GufLayout GufLayout::read(const std::string& path, MissingMember missing) {
  const ByteRange file = ByteRange::open(path);
  if (file.size() > kMaxGufBytes) refuse<FormatException>("'{}': is longer than the limit of 4 GiB", path);
  const ZipDirectory directory(file, quoted(path));
  const ArchiveMember* package = storedMember(directory, path, kPackageName);
  if (!package) throwMissing(quoted(path), kPackageName, missing);
  GufLayout layout{file, file.part(package->dataOffset, package->size)};
  if (const ArchiveMember* signature = storedMember(directory, path, kSignatureName)) {
    layout.signatureOffset = signature->dataOffset;
    layout.signatureSize = signature->size;
  }
  return layout;
}

// --- one member ---

struct MemberReader::Handle {
  std::unique_ptr<zip_file_t, ZipFileClose> file;
};

MemberReader::MemberReader(std::string label, const ArchiveMember& member, std::unique_ptr<Handle> handle)
    : label_(std::move(label)), member_(member), handle_(std::move(handle)) {}

MemberReader::~MemberReader() = default;

size_t MemberReader::read(void* buffer, size_t size) {
  size_t filled = 0;
  while (filled < size) {
    const zip_int64_t got = zip_fread(handle_->file.get(), static_cast<char*>(buffer) + filled, size - filled);
    if (got < 0) refuse<FileIOException>("{}: cannot be extracted: {}", label_, zip_file_strerror(handle_->file.get()));
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

struct GufFile::Archive {
  std::unique_ptr<zip_t, ZipDiscard> zip;
};

GufFile::GufFile(const std::string& path, MissingMember missing)
    : layout_(GufLayout::read(path, missing)),
      missing_(missing),
      directory_(layout_.package, quoted(path) + ": package.zip"),
      archive_(std::make_unique<Archive>()) {
  uint64_t total = 0;
  for (const ArchiveMember& member : directory_.members()) {
    total += std::min(member.size, kMaxInflatedBytes + 1);
    if (total > kMaxInflatedBytes)
      refuse<FormatException>("'{}': the members of package.zip inflate to more than 8 GiB", path);
  }
}

GufFile::~GufFile() = default;

Sha256::Digest GufFile::digest() const {
  return packageDigest(layout_.package);
}

std::string GufFile::labelOf(std::string_view member) const {
  return quoted(path()) + ": member '" + std::string(member.substr(0, 200)) + "'";
}

MemberReader GufFile::open(const ArchiveMember& member) const {
  const std::string label = labelOf(member.name);
  if (!archive_->zip) {
    // A stream of its own over the same open file, limited to the package.
    const int descriptor = ::dup(layout_.file.descriptor());
    FILE* stream = descriptor < 0 ? nullptr : ::fdopen(descriptor, "rb");
    if (!stream) {
      if (descriptor >= 0) ::close(descriptor);
      refuse<FileIOException>("{}: the file cannot be opened once more", label);
    }
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* source = zip_source_filep_create(stream, layout_.package.offset(),
                                                   static_cast<zip_int64_t>(layout_.package.size()), &error);
    if (!source) ::fclose(stream);
    zip_t* zip = source ? zip_open_from_source(source, ZIP_RDONLY, &error) : nullptr;
    if (source && !zip) zip_source_free(source);
    // The directory has been read above: what is "no zip archive" now is memory that ran out for one of its entries.
    const bool isShort = zip_error_code_zip(&error) == ZIP_ER_NOZIP;
    const std::string reason = isShort ? "out of memory" : zip_error_strerror(&error);
    zip_error_fini(&error);
    if (!zip) refuse<FormatException>("{}: package.zip cannot be opened: {}", label, reason);
    archive_->zip.reset(zip);
  }
  zip_t* zip = archive_->zip.get();
  const zip_int64_t index = zip_name_locate(zip, member.name.c_str(), ZIP_FL_ENC_RAW);
  zip_stat_t facts;
  zip_stat_init(&facts);
  if (index < 0 || zip_stat_index(zip, static_cast<zip_uint64_t>(index), ZIP_FL_ENC_RAW, &facts) != 0 ||
      facts.size != member.size || facts.comp_size != member.compressedSize || facts.crc != member.checksum)
    refuse<FormatException>("{}: the directory of package.zip is ambiguous", label);
  auto handle = std::make_unique<MemberReader::Handle>();
  handle->file.reset(zip_fopen_index(zip, static_cast<zip_uint64_t>(index), 0));
  if (!handle->file) refuse<FileIOException>("{}: cannot be extracted: {}", label, zip_strerror(zip));
  return MemberReader(label, member, std::move(handle));
}

std::string GufFile::readControl() const {
  const ArchiveMember* member = directory_.find(kControlName);
  if (!member) throwMissing(quoted(path()) + ": package.zip", kControlName, missing_);
  if (member->size > kMaxControlBytes)
    refuse<FormatException>("{}: is longer than the limit of 4 MiB", labelOf(kControlName));
  MemberReader reader = open(*member);
  std::string text(static_cast<size_t>(member->size) + 1, '\0');  // one more, so that the end is seen and checked
  text.resize(reader.read(text.data(), text.size()));
  return text;
}

MemberReader GufFile::openMember(std::string_view name) const {
  const ArchiveMember* member = directory_.find(name);
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
