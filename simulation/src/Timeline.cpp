#include "Timeline.h"

#include <algorithm>
#include <utility>

namespace ox::simulation {

void Timeline::advance() {
  target_ = std::max(target_, clock_() - start_);
  while (!due_.empty() && due_.begin()->first <= target_) {
    auto first = due_.extract(due_.begin());
    now_ = std::max(now_, first.key());
    first.mapped().run();
  }
  now_ = target_;
}

void Timeline::after(RegisterId owner, int64_t delayNs, std::function<void()> task) {
  cancel(owner);
  due_.emplace(now_ + std::max<int64_t>(0, delayNs), Task{owner, std::move(task)});
}

void Timeline::cancel(RegisterId owner) {
  std::erase_if(due_, [owner](const auto& entry) { return entry.second.owner == owner; });
}

bool Timeline::waits(RegisterId owner) const {
  return std::any_of(due_.begin(), due_.end(), [owner](const auto& entry) { return entry.second.owner == owner; });
}

void Timeline::restart() {
  due_.clear();
  start_ = clock_();
  now_ = target_ = 0;
}

}  // namespace ox::simulation
