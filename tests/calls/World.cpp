#include "calls/World.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>
#include <utility>

#include "OxBase/OxBase.h"

namespace calls {

World::World() { files().restore(); }

const HostFiles& World::files() {
  static const HostFiles made;
  return made;
}

ox::simulation::RegisterDevice& World::Place::device() const {
  if (!isCamera) return world.memoryDevice_;
  std::call_once(world.cameraMade_, [this] {
    // Time goes on with each look at it: what takes time comes to an end without anybody waiting for long.
    const ox::simulation::CameraOptions options{.clock = [&now = world.cameraTime_] { return now += 100'000'000; },
                                                .fileBufferBytes = 64};
    world.camera_ = std::make_unique<ox::simulation::SimulatedCamera>(options);
  });
  return *world.camera_;
}

namespace {

// What no call has to do with a device that does not mislead it.
constexpr int kMostAccesses = 20'000, kMostInARow = 6;
constexpr int kGivenUp = static_cast<int>(0x80000013);

// What the call that this thread is in has asked for until now.
thread_local int accessesOfCall = 0, timesInARow = 0;
thread_local int64_t lastRead = 0;

// Nobody waits for long for an answer that does not come: who asks one place over and over gets an error instead.
bool asksInVain(int64_t address) {
  if (std::exchange(lastRead, address) != address) timesInARow = 0;
  if (++timesInARow <= kMostInARow) return false;
  timesInARow = 0;
  return true;
}

}  // namespace

void World::beginCall() { accessesOfCall = timesInARow = 0; }

int World::fault(bool& garbage) {
  if (const auto told = onAccess.load()) told();
  if (++accessesOfCall > kMostAccesses) return kGivenUp;
  const uint8_t rate = rate_;
  if (rate == 0 || ++accesses_ % rate != 0) return 0;
  switch (mood_.load()) {
    case Mood::kFailWithText: OxSetLastError(0x8000000e, "port broken"); return static_cast<int>(0x8000000e);
    case Mood::kFailWithoutText: return static_cast<int>(0x80000013);
    case Mood::kGarbage: garbage = true; return 0;
    case Mood::kThrow: throw std::runtime_error("thrown by a port");
    case Mood::kThrowForeign: throw 42;
    case Mood::kNoMemory: throw std::bad_alloc();
    default: return 0;
  }
}

namespace {

// The library promises buffers with at least a byte. Addresses of the memory are kept few.
int64_t checked(const World::Place& place, const void* buffer, int64_t address, int64_t length) {
  if (buffer == nullptr || length <= 0) std::abort();
  return place.isCamera ? address : address & 0xffff;
}

int finish(int result) {
  if (result < 0)
    OxSetLastError(static_cast<uint32_t>(result), ox::simulation::RegisterDevice::lastFailureText().c_str());
  return result;
}

}  // namespace

int World::read(void* buffer, int64_t address, int64_t length, void* user) {
  const Place& place = *static_cast<Place*>(user);
  address = checked(place, buffer, address, length);
  if (asksInVain(address)) return kGivenUp;
  bool garbage = false;
  if (const int code = place.world.fault(garbage)) return code;
  if (garbage) {
    std::memset(buffer, 0xee, static_cast<size_t>(length));
    return 0;
  }
  const int result = finish(place.device().read(buffer, address, length));
  // A download is as long as the device says, so this one never says more than 255 bytes.
  constexpr int64_t kFileSize = 288;
  if (!place.isCamera && address == kFileSize && length == 4) std::memset(static_cast<char*>(buffer) + 1, 0, 3);
  return result;
}

int World::write(const void* buffer, int64_t address, int64_t length, void* user) {
  const Place& place = *static_cast<Place*>(user);
  address = checked(place, buffer, address, length);
  bool garbage = false;
  if (const int code = place.world.fault(garbage)) return code;
  const int result = finish(place.device().write(buffer, address, length));
  // File operations are done at once; nobody waits for them.
  constexpr int64_t kFileOperationExecute = 272;
  if (!place.isCamera && address == kFileOperationExecute) {
    constexpr uint32_t kDone = 0;
    place.device().write(&kDone, address, sizeof kDone);
  }
  return result;
}

TAccessMode World::accessMode(void* user) {
  const Place& place = *static_cast<Place*>(user);
  bool garbage = false;
  if (place.world.fault(garbage) != 0 || garbage) return AM_NotAvailable;
  return static_cast<TAccessMode>(place.device().accessMode());
}

}  // namespace calls
