#include <zip.h>

#include <filesystem>
#include <memory>

#include "Checks.h"
#include "Commands.h"
#include "FileReplacement.h"

namespace tool {
namespace {

struct Member {
  std::string name;
  std::string path;  // of the file here
};

struct GufOptions {
  std::string target;
  std::string control;
  std::string signature;
  std::vector<std::string> members;  // as typed: NAME=FILE
  bool compresses = false;
};

constexpr zip_uint16_t kFirstDay = 0x21;  // of the time that a zip archive can tell: the same file every time

[[noreturn]] void failed(const std::string& path, const std::string& reason) {
  throw Failure(kFileFailed, "'" + path + "' cannot be written: " + reason);
}

struct Discard {
  void operator()(zip_t* archive) const { zip_discard(archive); }
};

void writeArchive(const std::string& path, const std::vector<Member>& members, zip_int32_t method) {
  int code = 0;
  std::unique_ptr<zip_t, Discard> archive(zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &code));
  if (!archive) {
    zip_error_t error;
    zip_error_init_with_code(&error, code);
    const std::string reason = zip_error_strerror(&error);
    zip_error_fini(&error);
    failed(path, reason);
  }
  for (const Member& member : members) {
    zip_source_t* source = zip_source_file(archive.get(), member.path.c_str(), 0, -1);
    const zip_int64_t index =
        source == nullptr ? -1 : zip_file_add(archive.get(), member.name.c_str(), source, ZIP_FL_ENC_UTF_8);
    if (index < 0) {
      zip_source_free(source);
      failed(path, "member '" + member.name + "': " + zip_strerror(archive.get()));
    }
    zip_file_set_dostime(archive.get(), static_cast<zip_uint64_t>(index), 0, kFirstDay, 0);
    zip_set_file_compression(archive.get(), static_cast<zip_uint64_t>(index), method, 9);
  }
  if (zip_close(archive.get()) != 0) failed(path, zip_strerror(archive.get()));
  static_cast<void>(archive.release());  // closing has freed it
}

std::vector<Member> membersOf(const GufOptions& options) {
  std::vector<Member> members{{"control.xml", options.control}};
  for (const std::string& word : options.members) {
    const size_t split = word.find('=');
    if (split == std::string::npos || split == 0) throw UsageError("guf create: '" + word + "' is not MEMBER=FILE");
    members.push_back({word.substr(0, split), word.substr(split + 1)});
    if (!std::filesystem::is_regular_file(members.back().path))
      throw UsageError("guf create: there is no file '" + members.back().path + "'");
  }
  return members;
}

// As a device's user would: with the library. The text names the file as the user knows it.
void verify(const std::string& path, const std::string& shownAs) {
  try {
    const oxgenapi::FirmwareUpdater updater(path);
  } catch (const Failure& failure) {
    std::string text = failure.what();
    if (const size_t at = text.find(path); at != std::string::npos) text.replace(at, path.size(), shownAs);
    throw Failure(failure.code(), text);
  }
}

class TemporaryPackage {
 public:
  explicit TemporaryPackage(std::string path) : path_(std::move(path)) {}
  TemporaryPackage(const TemporaryPackage&) = delete;
  TemporaryPackage& operator=(const TemporaryPackage&) = delete;
  ~TemporaryPackage() {
    std::error_code error;
    std::filesystem::remove(path_, error);
  }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

void create(Session& session, const GufOptions& options) {
  const std::vector<Member> members = membersOf(options);
  FileReplacement target(options.target);
  const TemporaryPackage package(target.path() + ".package");
  writeArchive(package.path(), members, options.compresses ? ZIP_CM_DEFLATE : ZIP_CM_STORE);
  std::vector<Member> parts{{"package.zip", package.path()}};
  if (!options.signature.empty()) parts.push_back({"package.p7s", options.signature});
  writeArchive(target.path(), parts, ZIP_CM_STORE);
  verify(target.path(), options.target);
  const auto bytes = std::filesystem::file_size(target.path());
  target.commit();
  if (session.output().json()) {
    session.output().document({{"file", options.target}, {"bytes", bytes}, {"members", members.size()}});
  } else {
    session.output().line(options.target + " written: " + std::to_string(bytes) + " bytes, " +
                          std::to_string(members.size()) + " members");
  }
}

}  // namespace

void addGuf(const Command& program) {
  auto options = std::make_shared<GufOptions>();
  const Command guf = program.subcommand("guf", "Make firmware update files");
  guf.needsSubcommand();
  const Command command = guf.subcommand("create", "Pack a control file and data files, and verify the result");
  command.option("target", options->target, "Update file to write").required().type("FILE");
  command.option("control", options->control, "Control file, becomes control.xml")
      .required()
      .type("FILE")
      .check(existingFile());
  command.option("members", options->members, "Data files under the names that the control file uses")
      .type("MEMBER=FILE");
  command.option("--signature", options->signature, "Detached signature over package.zip, becomes package.p7s")
      .type("FILE")
      .check(existingFile());
  command.flag("--compress", options->compresses, "Deflate the members of package.zip instead of storing them");
  const char* example = "Example:\n  oxgenapi guf create camera.guf control.xml data/main.bin=build/main.bin";
  command.footer(example);
  guf.footer(example);
  command.runs([options](Session& session) { create(session, *options); });
}

}  // namespace tool
