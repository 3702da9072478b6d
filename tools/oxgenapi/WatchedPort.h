// Stands between the node maps and the device: one command at a time may watch what passes, and stop it.
#pragma once

#include <OxSimulation/RegisterDevice.h>

#include <cstdint>

namespace tool {

class PortWatcher {
 public:
  virtual ~PortWatcher() = default;
  // False lets this one access fail. Must not throw.
  virtual bool mayAccess() = 0;
  // An access that has succeeded.
  virtual void accessed(int64_t address, int64_t length) = 0;
};

class WatchedPort final : public ox::simulation::RegisterDevice {
 public:
  explicit WatchedPort(ox::simulation::RegisterDevice& device) : device_(device) {}

  int read(void* buffer, int64_t address, int64_t length) override;
  int write(const void* buffer, int64_t address, int64_t length) override;
  int accessMode() override { return device_.accessMode(); }

  // Null ends the watching. The watcher must stay until then.
  void watch(PortWatcher* watcher) { watcher_ = watcher; }

 private:
  template <class Access>
  int access(int64_t address, int64_t length, Access access);

  ox::simulation::RegisterDevice& device_;
  PortWatcher* watcher_ = nullptr;
};

}  // namespace tool
