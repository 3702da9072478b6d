#include "LineWriter.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <ctime>

namespace oxtelemetry {

namespace {

// Writing to a pipe without a reader, or past a file size limit, raises a signal that would end the process. While this
// object lives such a signal stays pending for the thread, and those that the write has raised are taken away.
class WriteSignalGuard {
 public:
  WriteSignalGuard() noexcept {
    sigemptyset(&signals_);
    sigaddset(&signals_, SIGPIPE);
    sigaddset(&signals_, SIGXFSZ);
    sigset_t pending;
    sigemptyset(&pending);
    sigpending(&pending);
    // A signal that was pending before is not ours to take.
    if (sigismember(&pending, SIGPIPE) == 1) sigdelset(&signals_, SIGPIPE);
    if (sigismember(&pending, SIGXFSZ) == 1) sigdelset(&signals_, SIGXFSZ);
    blocked_ = pthread_sigmask(SIG_BLOCK, &signals_, &former_) == 0;
  }
  WriteSignalGuard(const WriteSignalGuard&) = delete;
  WriteSignalGuard& operator=(const WriteSignalGuard&) = delete;
  ~WriteSignalGuard() {
    if (!blocked_) return;
    const timespec now{};
    while (sigtimedwait(&signals_, nullptr, &now) > 0) {
    }
    pthread_sigmask(SIG_SETMASK, &former_, nullptr);
  }

 private:
  sigset_t signals_;
  sigset_t former_;
  bool blocked_ = false;
};

constexpr int kOpenFlags = O_WRONLY | O_APPEND | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

}  // namespace

LineWriter::~LineWriter() {
  if (descriptor_ >= 0) close(descriptor_);
}

void LineWriter::adopt(int descriptor) noexcept {
  struct stat status {};
  if (descriptor < 0 || fstat(descriptor, &status) != 0) return;
  descriptor_ = descriptor;
  device_ = status.st_dev;
  file_ = status.st_ino;
  socket_ = S_ISSOCK(status.st_mode);
  mayWait_ = !S_ISREG(status.st_mode) && (fcntl(descriptor, F_GETFL) & O_NONBLOCK) == 0;
}

void LineWriter::openFile(const char* path) noexcept { adopt(open(path, kOpenFlags | O_CREAT, 0644)); }

void LineWriter::openStandardError() noexcept {
  // A terminal or pipe is opened again, so that O_NONBLOCK affects only our descriptor. A regular file is not: it must
  // share its position, or the process's other output would overwrite the lines.
  struct stat status {};
  int descriptor = -1;
  if (fstat(STDERR_FILENO, &status) == 0 && !S_ISREG(status.st_mode)) descriptor = open("/proc/self/fd/2", kOpenFlags);
  adopt(descriptor >= 0 ? descriptor : fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

bool LineWriter::isReady(size_t bytes) const noexcept {
  // A process that closes all descriptors may since have given this number to a device: compare before writing.
  struct stat status {};
  if (fstat(descriptor_, &status) != 0 || status.st_dev != device_ || status.st_ino != file_) return false;
  // A pipe that is ready takes this much without waiting, but not more.
  if (mayWait_ && !socket_ && bytes > PIPE_BUF) return false;
  pollfd waiting{descriptor_, POLLOUT, 0};
  return poll(&waiting, 1, 0) == 1 && (waiting.revents & POLLOUT) != 0;
}

ssize_t LineWriter::send(const char* bytes, size_t count) const noexcept {
  return socket_ ? ::send(descriptor_, bytes, count, MSG_DONTWAIT | MSG_NOSIGNAL) : ::write(descriptor_, bytes, count);
}

bool LineWriter::write(const std::string& line) noexcept {
  if (descriptor_ < 0 || !isReady(line.size())) return false;
  const WriteSignalGuard guard;
  if (torn_.exchange(false, std::memory_order_relaxed) && send("\n", 1) != 1) {
    torn_.store(true, std::memory_order_relaxed);
    return false;
  }
  const ssize_t written = send(line.data(), line.size());
  if (written == static_cast<ssize_t>(line.size())) return true;
  if (written > 0) torn_.store(true, std::memory_order_relaxed);
  return false;
}

}  // namespace oxtelemetry
