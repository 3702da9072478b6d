#include "Progress.h"

#include <unistd.h>

#include <cstdio>
#include <string>

namespace tool {
namespace {

constexpr size_t kBarWidth = 30;  // characters
constexpr const char* kStartOfEmptyLine = "\r\x1b[K";

}  // namespace

Progress::Progress(size_t steps) : steps_(steps), terminal_(isatty(STDERR_FILENO) == 1) {}

void Progress::step(std::string_view name) {
  ++done_;
  std::string text = "[" + std::to_string(done_) + "/" + std::to_string(steps_) + "] ";
  if (terminal_) {
    const size_t filled = steps_ == 0 ? kBarWidth : kBarWidth * (done_ - 1) / steps_;
    text = kStartOfEmptyLine + std::string(filled, '=') + ">" + std::string(kBarWidth - filled, ' ') + text;
  }
  text += name;
  text += terminal_ ? "" : "\n";
  std::fputs(text.c_str(), stderr);
}

void Progress::clear() {
  if (terminal_) {
    std::fputs(kStartOfEmptyLine, stderr);
  }
}

}  // namespace tool
