#include "OxSimulation/SimulatedCamera.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <mutex>
#include <new>
#include <stdexcept>
#include <utility>

#include "Acquisition.h"
#include "Behaviours.h"
#include "CameraCore.h"
#include "DeviceFailure.h"
#include "Files.h"
#include "Firmware.h"
#include "Picture.h"

namespace ox::simulation {

namespace {

constexpr int32_t kMinFileBufferBytes = 64;
constexpr int32_t kMaxFileBufferBytes = 1 << 20;

CameraOptions checked(CameraOptions options) {
  if (options.fileBufferBytes < kMinFileBufferBytes || options.fileBufferBytes > kMaxFileBufferBytes)
    throw std::invalid_argument("fileBufferBytes must lie in 64 .. 1048576");
  if (options.restartNs < 0) throw std::invalid_argument("restartNs must not be negative");
  if (!options.clock)
    options.clock = [] {
      return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
          .count();
    };
  return options;
}

}  // namespace

struct SimulatedCamera::Parts {
  explicit Parts(CameraOptions o)
      : options(checked(std::move(o))),
        core(options.clock, options.fileBufferBytes),
        files(core),
        firmware(core, files),
        acquisition(core),
        housekeeping(makeHousekeeping(core, [this] { resetWanted = true; })),
        signals(makeSignals(core)),
        automatics(makeAutomatics(core)),
        testRegisters(makeTestRegisters(core)),
        userSets(makeUserSets(core)) {
    for (Behaviour* behaviour : behaviours()) behaviour->powerOn();
  }

  // In this order they power on: the user sets last, because they remember what the others set up.
  std::array<Behaviour*, 8> behaviours() {
    return {&files,        &firmware,        &acquisition,        housekeeping.get(),
            signals.get(), automatics.get(), testRegisters.get(), userSets.get()};
  }

  void reset() {
    resetWanted = false;
    ++resets;
    core.timeline.restart();
    core.events.clear();
    core.registers.powerOn(true);
    for (Behaviour* behaviour : behaviours()) behaviour->powerOn();
    backAt = options.clock() + options.restartNs;
  }

  bool away() const { return options.restartNs != 0 && resets != 0 && options.clock() < backAt; }

  // Runs an access: the lock, what is due by now, and failures turned into codes.
  template <typename Access>
  int access(Access run) {
    try {
      const std::lock_guard lock(mutex);
      if (away()) throw DeviceFailure(kAccessRefused, "the camera restarts");
      core.timeline.advance();
      run(core.registers);
      if (resetWanted) reset();
      return kSuccess;
    } catch (const DeviceFailure& failure) {
      return fail(failure.code(), failure.what());
    } catch (const std::bad_alloc&) {
      return fail(kOutOfMemory, {});
    }
  }

  CameraOptions options;
  mutable std::mutex mutex;
  CameraCore core;
  Files files;
  Firmware firmware;
  Acquisition acquisition;
  std::unique_ptr<Behaviour> housekeeping;
  std::unique_ptr<Behaviour> signals;
  std::unique_ptr<Behaviour> automatics;
  std::unique_ptr<Behaviour> testRegisters;
  std::unique_ptr<Behaviour> userSets;
  bool resetWanted = false;
  int64_t resets = 0;
  int64_t backAt = 0;
};

SimulatedCamera::SimulatedCamera(CameraOptions options) : parts_(std::make_unique<Parts>(std::move(options))) {}

SimulatedCamera::~SimulatedCamera() = default;

int SimulatedCamera::read(void* buffer, int64_t address, int64_t length) {
  if (length < 0 || (!buffer && length > 0)) return fail(kInvalidArgument, "read: no buffer or negative length");
  return parts_->access([&](RegisterBank& registers) { registers.read(buffer, address, length); });
}

int SimulatedCamera::write(const void* buffer, int64_t address, int64_t length) {
  if (length < 0 || (!buffer && length > 0)) return fail(kInvalidArgument, "write: no buffer or negative length");
  return parts_->access([&](RegisterBank& registers) { registers.write(buffer, address, length); });
}

int SimulatedCamera::accessMode() {
  const std::lock_guard lock(parts_->mutex);
  return parts_->away() ? kPortNotAvailable : kPortReadWrite;
}

std::string_view SimulatedCamera::currentDescription() const {
  const std::lock_guard lock(parts_->mutex);
  parts_->core.timeline.advance();
  return parts_->firmware.description();
}

bool SimulatedCamera::nextEvent(CameraEvent& event) {
  const std::lock_guard lock(parts_->mutex);
  parts_->core.timeline.advance();
  return parts_->core.events.fetch(event);
}

Frame SimulatedCamera::acquireFrame() {
  PictureFacts facts;
  {
    const std::lock_guard lock(parts_->mutex);
    parts_->core.timeline.advance();
    if (!parts_->acquisition.nextPicture(facts)) return {};
  }
  return develop(facts);
}

bool SimulatedCamera::takeFrame(std::span<uint8_t> memory, Frame& frame, uint64_t& needed) {
  PictureFacts facts;
  {
    const std::lock_guard lock(parts_->mutex);
    parts_->core.timeline.advance();
    if (!parts_->acquisition.duePicture(facts)) return false;
  }
  needed = developInto(facts, memory, frame);
  return true;
}

std::vector<uint8_t> SimulatedCamera::fileContent(std::string_view file) const {
  const std::lock_guard lock(parts_->mutex);
  parts_->core.timeline.advance();
  return parts_->files.content(file);
}

void SimulatedCamera::setFileContent(std::string_view file, std::vector<uint8_t> content) {
  const std::lock_guard lock(parts_->mutex);
  parts_->core.timeline.advance();
  parts_->files.content(file) = std::move(content);
}

void SimulatedCamera::judgeFileOperations(FileJudge judge) {
  const std::lock_guard lock(parts_->mutex);
  parts_->core.timeline.advance();
  parts_->files.judgeBy(std::move(judge));
}

void SimulatedCamera::saveState(std::ostream& out) const {
  StateBlocks blocks;
  {
    const std::lock_guard lock(parts_->mutex);
    parts_->core.timeline.advance();
    for (const Behaviour* behaviour : parts_->behaviours()) behaviour->save(blocks);
    for (std::size_t i = 0; i < kRegisterCount; ++i) {
      const auto bytes = std::as_const(parts_->core.registers).bytes(static_cast<RegisterId>(i));
      blocks.emplace("register/" + std::string(kRegisters[i].name), std::vector<uint8_t>(bytes.begin(), bytes.end()));
    }
  }
  writeState(out, blocks);
}

void SimulatedCamera::loadState(std::istream& in) {
  const StateBlocks blocks = readState(in);
  const std::lock_guard lock(parts_->mutex);
  for (std::size_t i = 0; i < kRegisterCount; ++i) {
    const auto id = static_cast<RegisterId>(i);
    // How this camera was built, not what it remembers.
    if (id == reg("FileAccessBufferLength")) continue;
    const auto found = blocks.find("register/" + std::string(kRegisters[i].name));
    const auto bytes = parts_->core.registers.bytes(id);
    if (found != blocks.end() && found->second.size() == bytes.size())
      std::copy(found->second.begin(), found->second.end(), bytes.begin());
  }
  parts_->core.timeline.restart();
  parts_->core.events.clear();
  for (Behaviour* behaviour : parts_->behaviours()) behaviour->load(blocks);
}

void SimulatedCamera::reset() {
  const std::lock_guard lock(parts_->mutex);
  parts_->reset();
}

int64_t SimulatedCamera::resetCount() const {
  const std::lock_guard lock(parts_->mutex);
  return parts_->resets;
}

}  // namespace ox::simulation
