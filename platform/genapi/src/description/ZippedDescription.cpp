#include "description/ZippedDescription.h"

#include <zip.h>

#include <algorithm>
#include <memory>
#include <new>

#include "description/BuildFindings.h"
#include "description/Limits.h"
#include "text/Characters.h"

namespace GENAPI_NAMESPACE {
namespace {

[[noreturn]] void refuse(std::string reason) { throw LoadFault{0, std::move(reason)}; }

// Where memory ran out, the library often fails without naming an error.
[[noreturn]] void refuseError(const char* what, zip_error_t* error) {
  const int code = zip_error_code_zip(error);
  if (code == ZIP_ER_MEMORY || code == ZIP_ER_OK) throw std::bad_alloc();
  refuse(std::string(what) + ": " + zip_error_strerror(error));
}

struct ArchiveCloser {
  void operator()(zip_t* archive) const { zip_discard(archive); }
};
struct FileCloser {
  void operator()(zip_file_t* file) const { zip_fclose(file); }
};
using Archive = std::unique_ptr<zip_t, ArchiveCloser>;
using File = std::unique_ptr<zip_file_t, FileCloser>;

struct ZipError {
  zip_error_t error;
  ZipError() { zip_error_init(&error); }
  ~ZipError() { zip_error_fini(&error); }
};

Archive openArchive(std::string_view bytes) {
  for (bool again = false;; again = true) {
    ZipError error;
    zip_source_t* const source = zip_source_buffer_create(bytes.data(), bytes.size(), 0, &error.error);
    if (source == nullptr) refuseError("the zip archive cannot be opened", &error.error);
    if (Archive archive{zip_open_from_source(source, ZIP_RDONLY, &error.error)}) return archive;
    zip_source_free(source);
    // libzip reports "no archive" when memory runs out for a directory entry. A second try shows which it was.
    if (again || zip_error_code_zip(&error.error) != ZIP_ER_NOZIP)
      refuseError("the zip archive cannot be opened", &error.error);
  }
}

bool endsInXml(std::string_view name) {
  constexpr std::string_view kEnding = ".xml";
  return name.size() >= kEnding.size() && text::equalsIgnoringCase(name.substr(name.size() - kEnding.size()), kEnding);
}

zip_stat_t findMember(zip_t* archive) {
  zip_stat_t member;
  zip_stat_init(&member);
  const zip_int64_t count = zip_get_num_entries(archive, 0);
  bool found = false;
  for (zip_int64_t i = 0; i < count; ++i) {
    zip_stat_t candidate;
    zip_stat_init(&candidate);
    if (zip_stat_index(archive, static_cast<zip_uint64_t>(i), 0, &candidate) != 0) continue;
    if ((candidate.valid & ZIP_STAT_NAME) == 0 || !endsInXml(candidate.name)) continue;
    if (found)
      refuse("more than one XML file in the zip archive: " + quoted(member.name) + " and " + quoted(candidate.name));
    member = candidate;
    found = true;
  }
  if (!found) refuse("no XML file in the zip archive");
  return member;
}

void checkMember(const zip_stat_t& member) {
  const std::string name = quoted(member.name);
  if ((member.valid & ZIP_STAT_ENCRYPTION_METHOD) != 0 && member.encryption_method != ZIP_EM_NONE)
    refuse(name + " in the zip archive is encrypted");
  if ((member.valid & ZIP_STAT_COMP_METHOD) != 0 && member.comp_method != ZIP_CM_STORE &&
      member.comp_method != ZIP_CM_DEFLATE)
    refuse(name + " in the zip archive is neither stored nor deflated");
}

// What the archive says about sizes is not believed: growth is measured while inflating.
std::string inflate(zip_t* archive, const zip_stat_t& member, size_t archiveSize) {
  const File file(zip_fopen_index(archive, member.index, 0));
  if (!file) refuseError("the zip archive cannot be read", zip_get_error(archive));
  const size_t stored = std::min<zip_uint64_t>(member.comp_size, archiveSize);
  const size_t ratioLimit = std::min(stored, kMaxDescriptionBytes) * kMaxZipRatio;
  std::string text;
  // A truthful size saves copying; a wrong one costs nothing but that.
  if (member.size <= std::min(ratioLimit, kMaxDescriptionBytes)) text.reserve(member.size);
  constexpr size_t kStep = 256 << 10;
  for (;;) {
    const size_t before = text.size();
    text.resize(before + kStep);
    const zip_int64_t read = zip_fread(file.get(), text.data() + before, kStep);
    if (read < 0) refuseError("the zip archive is damaged", zip_file_get_error(file.get()));
    text.resize(before + static_cast<size_t>(read));
    if (text.size() > kMaxDescriptionBytes)
      refuse(quoted(member.name) + " in the zip archive grows past " + std::to_string(kMaxDescriptionBytes) + " bytes");
    if (text.size() > ratioLimit) {
      refuse(quoted(member.name) + " in the zip archive grows past " + std::to_string(kMaxZipRatio) +
             " times its stored size");
    }
    if (read == 0) return text;
  }
}

}  // namespace

bool isZip(std::string_view bytes) { return bytes.substr(0, 4) == "PK\x03\x04"; }

UnzippedDescription readZippedDescription(std::string_view bytes) {
  const Archive archive = openArchive(bytes);
  const zip_stat_t member = findMember(archive.get());
  checkMember(member);
  return {member.name, inflate(archive.get(), member, bytes.size())};
}

}  // namespace GENAPI_NAMESPACE
