#include "Progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace tool {
namespace {

constexpr std::chrono::milliseconds kBarEvery{100};
constexpr std::chrono::seconds kLineEvery{1};
constexpr double kBarWidth = 20;
constexpr const char* kStartOfEmptyLine = "\r\x1b[K";

std::string decimal(double value, int digits) {
  char text[64];
  return {text, static_cast<size_t>(std::snprintf(text, sizeof text, "%.*f", digits, value))};
}

size_t terminalWidth() {
  winsize size{};
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1 ? size.ws_col : 80;
}

// "7 s", "3 min 20 s", "2 h 5 min"
std::string duration(double seconds) {
  const auto whole = static_cast<uint64_t>(std::ceil(std::min(seconds, 1e9)));
  if (whole < 60) return std::to_string(whole) + " s";
  if (whole < 3600) return std::to_string(whole / 60) + " min " + std::to_string(whole % 60) + " s";
  return std::to_string(whole / 3600) + " h " + std::to_string(whole / 60 % 60) + " min";
}

}  // namespace

Progress::Progress(const Output& output, std::string name, uint64_t total, std::string unit)
    : name_(std::move(name)),
      total_(total),
      unit_(std::move(unit)),
      isTerminal_(isatty(STDERR_FILENO) == 1),
      isSilent_(output.json() && !isTerminal_) {}

void Progress::reach(uint64_t done) { reach(done, fractionOf(done)); }

void Progress::reach(uint64_t done, double fraction) {
  if (fraction < 1 && (isTerminal_ ? kBarEvery : kLineEvery) <= Clock::now() - shown_) show(done, fraction);
}

void Progress::begin() {
  if (isTerminal_) {
    std::fputs((kStartOfEmptyLine + name_ + " ...").c_str(), stderr);
    isShown_ = true;
  }
}

void Progress::clear() {
  if (isTerminal_ && isShown_) {
    std::fputs(kStartOfEmptyLine, stderr);
    isShown_ = false;
  }
}

std::string Progress::summary(uint64_t done) {
  clear();
  return std::to_string(done) + " " + unit_ + " in " + decimal(seconds(), 2) + " s, " + rate(done);
}

std::string Progress::rate(uint64_t done) const {
  const double perSecond = static_cast<double>(done) / std::max(seconds(), 1e-9);
  if (unit_ != "bytes") return decimal(perSecond, perSecond < 10 ? 1 : 0) + "/s";
  return perSecond < 1e6 ? decimal(perSecond / 1e3, 1) + " kB/s" : decimal(perSecond / 1e6, 1) + " MB/s";
}

void Progress::show(uint64_t done, double fraction) {
  if (isSilent_) return;
  std::string text = name_ + ": ";
  if (isTerminal_ && fraction > 0) {
    const auto filled = static_cast<size_t>(fraction * kBarWidth);
    text += "[" + std::string(filled, '#') + std::string(static_cast<size_t>(kBarWidth) - filled, '.') + "] ";
  }
  if (fraction > 0) text += duration(seconds() * (1 - fraction) / fraction) + " left, ";
  text +=
      std::to_string(done) + (total_ == 0 ? " " : " of " + std::to_string(total_) + " ") + unit_ + ", " + rate(done);
  if (isTerminal_) text.resize(std::min(text.size(), terminalWidth() - 1));  // what wraps would not be cleared
  std::fputs((isTerminal_ ? kStartOfEmptyLine + text : text + "\n").c_str(), stderr);
  shown_ = Clock::now();
  isShown_ = true;
}

}  // namespace tool
