// How far a long command has come, on standard error: a bar on a terminal, else one line for each step.
#pragma once

#include <cstddef>
#include <string_view>

namespace tool {

class Progress {
 public:
  explicit Progress(size_t steps);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  // Takes the bar away.
  ~Progress() { clear(); }

  // The next step begins.
  void step(std::string_view name);
  // Takes the bar away until the next step, so that something else can be printed.
  void clear();

 private:
  size_t steps_;
  size_t done_ = 0;
  bool terminal_;
};

}  // namespace tool
