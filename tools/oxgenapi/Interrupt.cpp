#include "Interrupt.h"

namespace tool {
namespace {

volatile std::sig_atomic_t interrupted = 0;

}  // namespace

Interrupt::Interrupt() {
  interrupted = 0;
  struct sigaction action {};
  action.sa_handler = [](int) { interrupted = 1; };
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigaction(SIGINT, &action, &former_);
}

Interrupt::~Interrupt() { sigaction(SIGINT, &former_, nullptr); }

bool Interrupt::requested() const { return interrupted != 0; }

}  // namespace tool
