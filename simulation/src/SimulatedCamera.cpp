#include "OxSimulation/SimulatedCamera.h"

#include <chrono>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "DeviceFailure.h"
#include "RegisterBank.h"
#include "StateBlob.h"

namespace ox::simulation {

struct SimulatedCamera::Parts {
  explicit Parts(CameraOptions o) : options(std::move(o)), registers(options.fileBufferBytes) {}

  CameraOptions options;
  mutable std::mutex mutex;
  RegisterBank registers;
};

namespace {

constexpr int32_t kMinFileBufferBytes = 64;
constexpr int32_t kMaxFileBufferBytes = 1 << 20;

CameraOptions checked(CameraOptions options) {
  if (options.fileBufferBytes < kMinFileBufferBytes || options.fileBufferBytes > kMaxFileBufferBytes)
    throw std::invalid_argument("fileBufferBytes must lie in 64 .. 1048576");
  if (!options.clock)
    options.clock = [] {
      return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
          .count();
    };
  return options;
}

}  // namespace

SimulatedCamera::SimulatedCamera(CameraOptions options)
    : parts_(std::make_unique<Parts>(checked(std::move(options)))) {}

SimulatedCamera::~SimulatedCamera() = default;

int SimulatedCamera::read(void* buffer, int64_t address, int64_t length) {
  if (length < 0 || (!buffer && length > 0)) return fail(kInvalidArgument, "read: no buffer or negative length");
  try {
    const std::lock_guard lock(parts_->mutex);
    parts_->registers.read(buffer, address, length);
    return kSuccess;
  } catch (const DeviceFailure& failure) {
    return fail(failure.code(), failure.what());
  } catch (const std::bad_alloc&) {
    return fail(kOutOfMemory, {});
  }
}

int SimulatedCamera::write(const void* buffer, int64_t address, int64_t length) {
  if (length < 0 || (!buffer && length > 0)) return fail(kInvalidArgument, "write: no buffer or negative length");
  try {
    const std::lock_guard lock(parts_->mutex);
    parts_->registers.write(buffer, address, length);
    return kSuccess;
  } catch (const DeviceFailure& failure) {
    return fail(failure.code(), failure.what());
  } catch (const std::bad_alloc&) {
    return fail(kOutOfMemory, {});
  }
}

int SimulatedCamera::accessMode() {
  return kPortReadWrite;
}

void SimulatedCamera::saveState(std::ostream& out) const {
  StateBlocks blocks;
  {
    const std::lock_guard lock(parts_->mutex);
    for (std::size_t i = 0; i < kRegisterCount; ++i) {
      const auto bytes = std::as_const(parts_->registers).bytes(static_cast<RegisterId>(i));
      blocks.emplace("register/" + std::string(kRegisters[i].name), std::vector<uint8_t>(bytes.begin(), bytes.end()));
    }
  }
  writeState(out, blocks);
}

void SimulatedCamera::loadState(std::istream& in) {
  const StateBlocks blocks = readState(in);
  const std::lock_guard lock(parts_->mutex);
  for (std::size_t i = 0; i < kRegisterCount; ++i) {
    const auto found = blocks.find("register/" + std::string(kRegisters[i].name));
    const auto bytes = parts_->registers.bytes(static_cast<RegisterId>(i));
    if (found != blocks.end() && found->second.size() == bytes.size())
      std::copy(found->second.begin(), found->second.end(), bytes.begin());
  }
}

void SimulatedCamera::reset() {
  const std::lock_guard lock(parts_->mutex);
  parts_->registers.powerOn();
}

}  // namespace ox::simulation
