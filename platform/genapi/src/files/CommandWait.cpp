#include "files/CommandWait.h"

#include <algorithm>
#include <atomic>
#include <thread>

#include "GenApi/ICommand.h"

namespace GENAPI_NAMESPACE {

namespace {

const WaitTime kMachineTime;
std::atomic<const WaitTime*> currentTime{nullptr};

}  // namespace

std::chrono::milliseconds WaitTime::now() const {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch());
}

void WaitTime::sleep(std::chrono::milliseconds pause) const { std::this_thread::sleep_for(pause); }

const WaitTime& WaitTime::current() {
  const WaitTime* exchanged = currentTime.load(std::memory_order_acquire);
  return exchanged ? *exchanged : kMachineTime;
}

void WaitTime::exchange(const WaitTime* other) { currentTime.store(other, std::memory_order_release); }

bool waitUntilDone(ICommand& command, std::chrono::milliseconds limit, std::chrono::milliseconds firstPause,
                   std::chrono::milliseconds longestPause) {
  if (command.IsDone()) return true;  // the usual case, without a look at the clock
  const WaitTime& time = WaitTime::current();
  const std::chrono::milliseconds start = time.now();
  std::chrono::milliseconds pause{0};
  do {
    if (time.now() - start > limit) return false;
    time.sleep(pause);
    pause = std::clamp(pause * 2, firstPause, longestPause);
  } while (!command.IsDone());
  return true;
}

}  // namespace GENAPI_NAMESPACE
