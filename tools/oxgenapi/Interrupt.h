// Ctrl-C while a command works that can end in an orderly way.
#pragma once

#include <csignal>

namespace tool {

// While one lives, the first Ctrl-C only shows in requested(); a second one ends the program as usual. One at a time.
class Interrupt {
 public:
  Interrupt();
  ~Interrupt();
  Interrupt(const Interrupt&) = delete;
  Interrupt& operator=(const Interrupt&) = delete;

  bool requested() const;

 private:
  struct sigaction former_ {};
};

}  // namespace tool
