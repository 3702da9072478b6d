#include "FileReplacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "Failure.h"

namespace tool {
namespace {

[[noreturn]] void failed(const std::string& path, const char* what) {
  const int reason = errno;
  throw Failure(kFileFailed, "'" + path + "' " + what + ": " + std::strerror(reason));
}

bool flush(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return false;
  const bool flushed = fsync(file) == 0;
  const int reason = errno;
  close(file);
  errno = reason;
  return flushed;
}

}  // namespace

FileReplacement::FileReplacement(const std::string& target) : target_(target), path_(target) {
  // Through a link the file it points to is replaced, not the link.
  std::error_code error;
  if (std::filesystem::is_symlink(target, error)) {
    const auto resolved = std::filesystem::weakly_canonical(target, error);
    target_ = error ? target : resolved.string();
  }
  struct stat status {};
  const bool exists = stat(target_.c_str(), &status) == 0;
  if (exists && !S_ISREG(status.st_mode)) {
    path_ = target_;
    return;
  }
  path_ = target_ + ".XXXXXX";
  const int file = mkstemp(path_.data());
  if (file < 0) failed(target_, "cannot be written");
  beside_ = true;
  // mkstemp() gives the owner alone access; a replaced file keeps its mode, a new one gets the usual one.
  const mode_t mask = umask(0);
  umask(mask);
  const bool moded = fchmod(file, exists ? status.st_mode & 07777 : 0666 & ~mask) == 0;
  close(file);
  if (!moded) {
    unlink(path_.c_str());
    failed(target_, "cannot be given its access mode");
  }
}

FileReplacement::~FileReplacement() {
  if (beside_ && !done_) unlink(path_.c_str());
}

void FileReplacement::write(std::string_view text) {
  FILE* file = std::fopen(path_.c_str(), "wb");
  if (file == nullptr) failed(target_, "cannot be opened for writing");
  const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  if (std::fclose(file) != 0 || !written) failed(target_, "cannot be written");
}

void FileReplacement::commit() {
  if (!beside_) return;
  if (!flush(path_)) failed(target_, "cannot be flushed to the disk");
  if (std::rename(path_.c_str(), target_.c_str()) != 0) failed(target_, "cannot be replaced");
  done_ = true;
  const std::string folder = std::filesystem::path(target_).parent_path().string();
  // The contents are safe already; some file systems cannot flush a folder, and the rename has happened either way.
  const int opened = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (opened >= 0) {
    fsync(opened);
    close(opened);
  }
}

}  // namespace tool
