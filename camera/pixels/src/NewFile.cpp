#include "NewFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "Failure.h"

namespace ox::pixels {

namespace {

// A hidden name in the same folder: renaming does not work across file systems.
std::string besides(const std::string& path) {
  static std::atomic<unsigned> counter{0};
  const auto slash = path.rfind('/');
  const std::size_t start = slash == path.npos ? 0 : slash + 1;
  constexpr std::size_t kMostKept = 200;  // of 255 that a name may have
  return formatted("{}.{}.{}-{}", path.substr(0, start), path.substr(start, kMostKept), getpid(), ++counter);
}

}  // namespace

NewFile::NewFile(std::string path, bool overwrite)
    : path_(std::move(path)), temporary_(besides(path_)), overwrite_(overwrite) {}

NewFile::~NewFile() {
  if (descriptor_ < 0) return;
  ::close(descriptor_);
  ::unlink(temporary_.c_str());
}

Result NewFile::refuse(int error, const char* what) const noexcept {
  const char* const reason = strerrordesc_np(error);
  const Code code = error == EEXIST ? Code::Exists : Code::Io;
  return pixels::failure(code, "{}: cannot {} {}", reason != nullptr ? reason : "unknown error", what, path_);
}

Result NewFile::open() noexcept {
  // Known before any work is done; publish() looks again.
  if (!overwrite_ && ::access(path_.c_str(), F_OK) == 0) return refuse(EEXIST, "create");
  struct stat status {};
  if (::stat(path_.c_str(), &status) == 0 && !S_ISREG(status.st_mode))
    return pixels::failure(Code::Io, "not an ordinary file, and so not replaced: {}", path_);
  descriptor_ = ::open(temporary_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  return descriptor_ < 0 ? refuse(errno, "create") : Result{};
}

bool NewFile::write(const void* bytes, std::size_t count) noexcept { return writeAt(position_, bytes, count); }

bool NewFile::writeAt(uint64_t offset, const void* bytes, std::size_t count) noexcept {
  const char* from = static_cast<const char*>(bytes);
  while (count > 0 && error_ == 0) {
    const ssize_t written = ::pwrite(descriptor_, from, count, static_cast<off_t>(offset));
    if (written <= 0) {
      if (written < 0 && errno == EINTR) continue;
      error_ = written < 0 ? errno : ENOSPC;
      break;
    }
    from += written;
    offset += static_cast<uint64_t>(written);
    count -= static_cast<std::size_t>(written);
  }
  position_ = offset;
  size_ = std::max(size_, offset);
  return error_ == 0;
}

Result NewFile::failure() const noexcept { return error_ == 0 ? Result{} : refuse(error_, "write"); }

Result NewFile::rename() const noexcept {
  if (overwrite_) return ::rename(temporary_.c_str(), path_.c_str()) == 0 ? Result{} : refuse(errno, "write");
  if (::renameat2(AT_FDCWD, temporary_.c_str(), AT_FDCWD, path_.c_str(), RENAME_NOREPLACE) == 0) return {};
  if (errno != EINVAL && errno != ENOSYS) return refuse(errno, "write");
  // A file system that cannot rename so: a second name, which is not given either where there is one.
  if (::link(temporary_.c_str(), path_.c_str()) != 0) return refuse(errno, "write");
  ::unlink(temporary_.c_str());
  return {};
}

Result NewFile::publish() noexcept {
  if (auto bad = failure(); !bad) return bad;
  const int closed = ::close(std::exchange(descriptor_, -1));  // some file systems say only now that they are full
  Result result = closed == 0 || errno == EINTR ? rename() : refuse(errno, "write");
  if (!result) ::unlink(temporary_.c_str());
  return result;
}

void NewFile::remove() noexcept { ::unlink(path_.c_str()); }

}  // namespace ox::pixels
