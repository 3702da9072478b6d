// What node maps are connected to: the device, and between them one command at a time that watches what passes and may
// stop it.
#pragma once

#include <OxSimulation/RegisterDevice.h>
#include <OxGenApi/cpp/Registers.hpp>

#include <cstdint>
#include <optional>

#include "Failure.h"

namespace tool {

class PortWatcher {
 public:
  virtual ~PortWatcher() = default;
  // False lets this one access fail. Must not throw.
  virtual bool mayAccess() = 0;
  // An access that has succeeded.
  virtual void accessed(int64_t address, int64_t length) = 0;
};

class WatchedPort final : public oxgenapi::Registers {
 public:
  explicit WatchedPort(ox::simulation::RegisterDevice& device) : device_(device) {}

  void read(void* buffer, int64_t address, int64_t length) override;
  void write(const void* buffer, int64_t address, int64_t length) override;
  TAccessMode accessMode() noexcept override { return static_cast<TAccessMode>(device_.accessMode()); }

  // The first failure of the device, if there was one; a refusal is none, for that is how many a device tells that a
  // feature is not there now.
  const std::optional<Failure>& failure() const { return failure_; }

  // Whether a write has been tried.
  bool hasWritten() const { return hasWritten_; }

  // Null ends the watching. The watcher must stay until then.
  void watch(PortWatcher* watcher) { watcher_ = watcher; }

 private:
  template <class Access>
  void access(int64_t address, int64_t length, Access access);

  ox::simulation::RegisterDevice& device_;
  PortWatcher* watcher_ = nullptr;
  std::optional<Failure> failure_;
  bool hasWritten_ = false;
};

}  // namespace tool
