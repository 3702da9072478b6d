// A camera made of registers: describes itself, answers register accesses, takes pictures, sends events, keeps files.
#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>

#include "OxSimulation/RegisterDevice.h"

namespace ox::simulation {

/// Gives the time in nanoseconds, never backwards. Called while the camera is locked: must not call the camera.
using Clock = std::function<int64_t()>;

struct CameraOptions {
  /// Time of the camera; empty means the steady clock of the machine. Tests set a clock of their own.
  Clock clock;
  /// Bytes of FileAccessBuffer: what one file operation moves at most. 64 .. 1048576.
  int32_t fileBufferBytes = 4096;
};

/// All members may be called from any thread; one access at a time takes place.
class SimulatedCamera final : public RegisterDevice {
 public:
  /// Throws std::invalid_argument for an option outside its range.
  explicit SimulatedCamera(CameraOptions options = {});
  ~SimulatedCamera() override;

  int read(void* buffer, int64_t address, int64_t length) override;
  int write(const void* buffer, int64_t address, int64_t length) override;
  int accessMode() override;

  /// The description (XML text) that fits a camera fresh from the factory.
  static std::string_view description();

  /// Writes everything the camera remembers: registers, user sets, files, firmware. Failures show in the stream.
  void saveState(std::ostream& out) const;
  /// Takes over what saveState() wrote. Registers that this version does not know are skipped; those that the text
  /// does not mention keep their value. Throws std::runtime_error, with nothing changed, if it is not such a text.
  void loadState(std::istream& in);

  /// What a power cycle does: registers return to their values at power on, an activated firmware starts.
  void reset();

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace ox::simulation
