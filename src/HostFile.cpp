#include "HostFile.h"

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <system_error>

#include "Failure.h"

namespace orxGenApi {
namespace {

// How much of a file is held in memory.
constexpr size_t kBlockBytes = size_t{64} << 10;

// Writing past the file size limit or into a pipe without a reader raises a signal whose default action ends the
// process. Both are delivered to the writing thread, so they are kept away from it during the write and dropped after
// it, unless one was waiting before.
class WriteSignalsHeldBack {
 public:
  WriteSignalsHeldBack() {
    sigemptyset(&signals_);
    sigset_t waiting;
    sigpending(&waiting);
    for (const int signal : {SIGXFSZ, SIGPIPE})
      if (!sigismember(&waiting, signal)) sigaddset(&signals_, signal);
    sigset_t held;
    sigemptyset(&held);
    sigaddset(&held, SIGXFSZ);
    sigaddset(&held, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &held, &former_);
  }
  ~WriteSignalsHeldBack() {
    const int reason = errno;
    const timespec noTime{};
    while (sigtimedwait(&signals_, nullptr, &noTime) > 0) {
    }
    pthread_sigmask(SIG_SETMASK, &former_, nullptr);
    errno = reason;
  }
  WriteSignalsHeldBack(const WriteSignalsHeldBack&) = delete;
  WriteSignalsHeldBack& operator=(const WriteSignalsHeldBack&) = delete;

 private:
  sigset_t signals_;
  sigset_t former_;
};

}  // namespace

HostFile::HostFile(const char* path, int flags) : path_(path == nullptr ? "" : path), buffer_(kBlockBytes) {
  constexpr mode_t kEverybody = 0666;  // less the process's file creation mask
  do {
    descriptor_ = ::open(path_.c_str(), flags | O_CLOEXEC, kEverybody);
  } while (descriptor_ < 0 && errno == EINTR);
}

HostFile::~HostFile() { closeDescriptor(); }

bool HostFile::closeDescriptor() {
  if (descriptor_ < 0) return true;
  const int descriptor = descriptor_;
  descriptor_ = -1;
  // An interrupted close has closed the file all the same.
  return ::close(descriptor) == 0 || errno == EINTR;
}

std::string HostFile::failureText(const char* action) const {
  const std::string reason = std::generic_category().message(errno);
  return action + (" host file '" + path_) + "' stopped near byte " + std::to_string(place_) + ": " + reason;
}

HostFileReader::HostFileReader(const char* path) : HostFile(path, O_RDONLY) {}

bool HostFileReader::isReadable() {
  if (descriptor_ < 0) return false;
  try {
    underflow();
    return true;
  } catch (const orx_error&) {
    return false;
  }
}

HostFileReader::int_type HostFileReader::underflow() {
  if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
  ssize_t count;
  do {
    count = ::read(descriptor_, buffer_.data(), buffer_.size());
  } while (count < 0 && errno == EINTR);
  if (count < 0) throw orx_error(OXGENAPI_E_RUNTIME, failureText("reading"));
  if (count == 0) return traits_type::eof();
  place_ += static_cast<uint64_t>(count);
  setg(buffer_.data(), buffer_.data(), buffer_.data() + count);
  return traits_type::to_int_type(*gptr());
}

HostFileWriter::HostFileWriter(const char* path) : HostFile(path, O_WRONLY | O_CREAT | O_TRUNC) {
  setp(buffer_.data(), buffer_.data() + buffer_.size());
}

bool HostFileWriter::close() {
  if (descriptor_ < 0) return false;
  const bool flushed = flushBlock();
  if (closeDescriptor()) return flushed;
  if (failure_.empty()) failure_ = failureText("closing");
  return false;
}

HostFileWriter::int_type HostFileWriter::overflow(int_type c) {
  if (!flushBlock()) return traits_type::eof();
  if (!traits_type::eq_int_type(c, traits_type::eof())) {
    *pptr() = traits_type::to_char_type(c);
    pbump(1);
  }
  return traits_type::not_eof(c);
}

int HostFileWriter::sync() { return flushBlock() ? 0 : -1; }

bool HostFileWriter::flushBlock() {
  if (!failure_.empty() || descriptor_ < 0) return false;
  const WriteSignalsHeldBack heldBack;
  for (const char* next = pbase(); next < pptr();) {
    const ssize_t count = ::write(descriptor_, next, static_cast<size_t>(pptr() - next));
    if (count > 0) {
      next += count;
      place_ += static_cast<uint64_t>(count);
    } else if (count == 0 || errno != EINTR) {
      if (count == 0) errno = EIO;
      failure_ = failureText("writing");
      setp(nullptr, nullptr);
      return false;
    }
  }
  setp(buffer_.data(), buffer_.data() + buffer_.size());
  return true;
}

}  // namespace orxGenApi
