#include "WatchedPort.h"

namespace tool {

template <class Access>
int WatchedPort::access(int64_t address, int64_t length, Access access) {
  if (watcher_ == nullptr) {
    return access();
  }
  if (!watcher_->mayAccess()) {
    return fail(ox::simulation::kUnspecifiedFailure, "stopped by the user");
  }
  const int result = access();
  if (result >= 0) {
    watcher_->accessed(address, length);
  }
  return result;
}

int WatchedPort::read(void* buffer, int64_t address, int64_t length) {
  return access(address, length, [&] { return device_.read(buffer, address, length); });
}

int WatchedPort::write(const void* buffer, int64_t address, int64_t length) {
  return access(address, length, [&] { return device_.write(buffer, address, length); });
}

}  // namespace tool
