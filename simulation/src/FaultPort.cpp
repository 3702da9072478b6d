#include "OxSimulation/FaultPort.h"

#include <stdexcept>

namespace ox::simulation {

std::optional<FaultPort::Fault> FaultPort::faultFor(const Access& access) {
  if (auto once = once_.extract(access.number)) return std::move(once.mapped());
  if (every_ > 0 && (access.number - everySince_) % every_ == 0) return everyFault_;
  for (const auto& [condition, fault] : conditions_)
    if (condition(access)) return fault;
  return std::nullopt;
}

std::optional<FaultPort::Fault> FaultPort::enter(Kind kind, int64_t address, int64_t length) {
  std::function<void(const Access&)> hook;
  std::optional<Fault> fault;
  Access access{kind, address, length, 0};
  {
    const std::lock_guard lock(mutex_);
    access.number = ++number_;
    ++(kind == Kind::kRead ? reads_ : writes_);
    ++counts_[{kind, address}];
    if (log_.size() < kMaxLogged) log_.push_back(access);
    fault = faultFor(access);
    hook = hook_;
  }
  if (hook) hook(access);
  return fault;
}

int FaultPort::read(void* buffer, int64_t address, int64_t length) {
  if (const auto fault = enter(Kind::kRead, address, length)) return fail(fault->code, fault->text);
  std::optional<uint64_t> garbage;
  {
    const std::lock_guard lock(mutex_);
    garbage = garbage_;
    if (garbage_) *garbage_ = *garbage_ * 6364136223846793005u + 1442695040888963407u;
  }
  if (!garbage) return device_.read(buffer, address, length);
  uint64_t state = *garbage;
  for (int64_t i = 0; i < length; ++i) {
    state = state * 6364136223846793005u + 1442695040888963407u;
    static_cast<uint8_t*>(buffer)[i] = static_cast<uint8_t>(state >> 56);
  }
  return kSuccess;
}

int FaultPort::write(const void* buffer, int64_t address, int64_t length) {
  if (const auto fault = enter(Kind::kWrite, address, length)) return fail(fault->code, fault->text);
  return device_.write(buffer, address, length);
}

int FaultPort::accessMode() {
  std::optional<int> mode;
  {
    const std::lock_guard lock(mutex_);
    ++accessModeQueries_;
    mode = mode_;
  }
  return mode ? *mode : device_.accessMode();
}

void FaultPort::failNth(int64_t n, int code, std::string text) {
  const std::lock_guard lock(mutex_);
  once_[number_ + n] = {code, std::move(text)};
}

void FaultPort::failEvery(int64_t k, int code, std::string text) {
  if (k < 1) throw std::invalid_argument("failEvery: k must be at least 1");
  const std::lock_guard lock(mutex_);
  every_ = k;
  everySince_ = number_;
  everyFault_ = {code, std::move(text)};
}

void FaultPort::failWhen(std::function<bool(const Access&)> condition, int code, std::string text) {
  const std::lock_guard lock(mutex_);
  conditions_.emplace_back(std::move(condition), Fault{code, std::move(text)});
}

void FaultPort::garbleReads(uint64_t seed) {
  const std::lock_guard lock(mutex_);
  garbage_ = seed;
}

void FaultPort::reportAccessMode(int mode) {
  const std::lock_guard lock(mutex_);
  mode_ = mode;
}

void FaultPort::onAccess(std::function<void(const Access&)> hook) {
  const std::lock_guard lock(mutex_);
  hook_ = std::move(hook);
}

void FaultPort::heal() {
  const std::lock_guard lock(mutex_);
  once_.clear();
  every_ = 0;
  conditions_.clear();
  garbage_.reset();
  mode_.reset();
  hook_ = nullptr;
}

int64_t FaultPort::reads() const {
  const std::lock_guard lock(mutex_);
  return reads_;
}

int64_t FaultPort::writes() const {
  const std::lock_guard lock(mutex_);
  return writes_;
}

int64_t FaultPort::accessModeQueries() const {
  const std::lock_guard lock(mutex_);
  return accessModeQueries_;
}

int64_t FaultPort::count(Kind kind, int64_t address) const {
  const std::lock_guard lock(mutex_);
  const auto found = counts_.find({kind, address});
  return found == counts_.end() ? 0 : found->second;
}

std::vector<FaultPort::Access> FaultPort::log() const {
  const std::lock_guard lock(mutex_);
  return log_;
}

void FaultPort::clearCounts() {
  const std::lock_guard lock(mutex_);
  reads_ = writes_ = accessModeQueries_ = 0;
  counts_.clear();
  log_.clear();
}

}  // namespace ox::simulation
