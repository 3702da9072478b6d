#include "Transfer.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace tool {
namespace {

constexpr std::chrono::milliseconds kBarEvery{100};
constexpr std::chrono::seconds kLineEvery{1};
constexpr size_t kBarWidth = 30;

volatile std::sig_atomic_t interrupted = 0;

// Where the file data passes. A device without the feature has no files, and nothing is counted.
int64_t addressOfBuffer(const NodeMap& map) {
  try {
    return map.node("FileAccessBuffer").infoInteger(NI_RegisterAddress);
  } catch (const Failure&) {
    return -1;
  }
}

std::string decimal(double value, int digits) {
  char text[64];
  return {text, static_cast<size_t>(std::snprintf(text, sizeof text, "%.*f", digits, value))};
}

}  // namespace

Transfer::Transfer(Session& session, std::string name, uint64_t size)
    : session_(session), name_(std::move(name)), size_(size), isTerminal_(isatty(STDERR_FILENO) == 1) {
  bufferAddress_ = addressOfBuffer(session_.map());
  interrupted = 0;
  struct sigaction action {};
  action.sa_handler = [](int) { interrupted = 1; };
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigaction(SIGINT, &action, &former_);
  session_.port().watch(this);
}

Transfer::~Transfer() {
  session_.port().watch(nullptr);
  sigaction(SIGINT, &former_, nullptr);
  if (isShown_ && isTerminal_) {
    std::fputs("\r\x1b[K", stderr);
  }
}

bool Transfer::mayAccess() {
  const auto now = Clock::now();
  if (now - shown_ >= (isTerminal_ ? kBarEvery : kLineEvery)) {
    show(now);
  }
  if (interrupted == 0 || isStopped_) {
    return true;
  }
  isStopped_ = true;
  return false;
}

void Transfer::accessed(int64_t address, int64_t length) {
  if (address == bufferAddress_) {
    bytes_ += static_cast<uint64_t>(length);
  }
}

std::string Transfer::rate(uint64_t bytes) const {
  const double seconds = std::chrono::duration<double>(Clock::now() - start_).count();
  return decimal(static_cast<double>(bytes) / 1e6 / std::max(seconds, 1e-9), 1) + " MB/s";
}

std::string Transfer::summary(uint64_t bytes) const {
  const double seconds = std::chrono::duration<double>(Clock::now() - start_).count();
  return std::to_string(bytes) + " bytes in " + decimal(seconds, 2) + " s, " + rate(bytes);
}

void Transfer::show(Clock::time_point now) {
  if (session_.output().json() && !isTerminal_) {
    return;
  }
  shown_ = now;
  isShown_ = true;
  std::string text = name_ + ": ";
  const uint64_t done = size_ == 0 ? bytes_ : std::min(bytes_, size_);  // the last block may have been filled up
  if (size_ != 0) {
    if (isTerminal_) {
      const auto filled = static_cast<size_t>(static_cast<double>(done) / static_cast<double>(size_) * kBarWidth);
      text += "[" + std::string(filled, '#') + std::string(kBarWidth - filled, '.') + "] ";
    }
    text += std::to_string(done) + " of " + std::to_string(size_) + " bytes, ";
  } else {
    text += std::to_string(done) + " bytes, ";
  }
  text += rate(done);
  std::fputs((isTerminal_ ? "\r\x1b[K" + text : text + "\n").c_str(), stderr);
}

}  // namespace tool
