// How far a long command has come, on standard error: what is done, how fast, and the time that is left.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "Output.h"

namespace tool {

// A bar on a terminal; otherwise a line every second, or nothing beside JSON. What ends soon shows
// nothing by itself.
class Progress {
 public:
  // `total`: how much there is to do, 0 where nobody knows. `unit`: what is counted, "bytes" or "features".
  Progress(const Output& output, std::string name, uint64_t total, std::string unit);
  ~Progress() { clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // So much is done; shown now and then.
  void reach(uint64_t done);
  // The same where the end is a time and not an amount: `fraction` (0 to 1) of it has passed.
  void reach(uint64_t done, double fraction);
  // So much is done; shown whether it is due or not.
  void show(uint64_t done) { show(done, fractionOf(done)); }
  // Shows on a terminal, at once, that something has begun that cannot tell how far it is.
  void begin();
  // Takes the bar away until it is due again, so that something else can be printed.
  void clear();

  // Takes the bar away for good: "10000 bytes in 0.01 s, 1.0 MB/s".
  std::string summary(uint64_t done);

 private:
  using Clock = std::chrono::steady_clock;

  double fractionOf(uint64_t done) const {
    return total_ == 0 ? 0 : static_cast<double>(done) / static_cast<double>(total_);
  }
  void show(uint64_t done, double fraction);
  double seconds() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }
  std::string rate(uint64_t done) const;

  std::string name_;
  uint64_t total_;
  std::string unit_;
  bool isTerminal_;
  bool isSilent_;
  bool isShown_ = false;
  Clock::time_point start_ = Clock::now();
  Clock::time_point shown_ = start_;
};

}  // namespace tool
