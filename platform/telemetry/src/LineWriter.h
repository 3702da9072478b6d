// Writes whole lines to a file descriptor without ever waiting or raising a signal.
#ifndef OXTELEMETRY_LINEWRITER_H
#define OXTELEMETRY_LINEWRITER_H

#include <sys/types.h>

#include <atomic>
#include <string>

namespace oxtelemetry {

// Threads: after one of the open functions any number of threads may write at once; a line goes out in one system call.
class LineWriter {
 public:
  LineWriter() = default;
  LineWriter(const LineWriter&) = delete;
  LineWriter& operator=(const LineWriter&) = delete;
  ~LineWriter();

  // Opens a file for appending, created when absent. When it cannot be opened every line is refused.
  void openFile(const char* path) noexcept;
  // Opens the process's standard error stream, without changing anything for its other users.
  void openStandardError() noexcept;

  // Writes the line, which ends in a line break. Returns false when not all of it could be written at once.
  bool write(const std::string& line) noexcept;

 private:
  void adopt(int descriptor) noexcept;
  bool isReady(size_t bytes) const noexcept;
  ssize_t send(const char* bytes, size_t count) const noexcept;

  int descriptor_ = -1;
  dev_t device_ = 0;
  ino_t file_ = 0;
  bool socket_ = false;
  bool mayWait_ = false;  // the descriptor is shared with others who expect their writes to wait
  // A line went out in part: the next one starts with a line break, so that only that line is broken.
  std::atomic<bool> torn_{false};
};

}  // namespace oxtelemetry

#endif
