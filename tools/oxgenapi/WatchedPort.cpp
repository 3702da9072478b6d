#include "WatchedPort.h"

namespace tool {

template <class Access>
void WatchedPort::access(int64_t address, int64_t length, Access access) {
  if (watcher_ != nullptr && !watcher_->mayAccess()) throw Failure(OXGENAPI_E_UNSPECIFIED, "stopped by the user");
  if (const int result = access(); result < 0) {
    const Failure failure(static_cast<uint32_t>(result), ox::simulation::RegisterDevice::lastFailureText());
    if (!failure_ && result != ox::simulation::kAccessRefused) failure_ = failure;
    throw failure;
  }
  if (watcher_ != nullptr) watcher_->accessed(address, length);
}

void WatchedPort::read(void* buffer, int64_t address, int64_t length) {
  access(address, length, [&] { return device_.read(buffer, address, length); });
}

void WatchedPort::write(const void* buffer, int64_t address, int64_t length) {
  hasWritten_ = true;
  access(address, length, [&] { return device_.write(buffer, address, length); });
}

}  // namespace tool
