// A camera made of registers: describes itself, answers register accesses, takes pictures, sends events, keeps files.
#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "OxSimulation/FileAccess.h"
#include "OxSimulation/Frame.h"
#include "OxSimulation/RegisterDevice.h"

namespace ox::simulation {

/// Gives the time in nanoseconds, never backwards. Called while the camera is locked: must not call the camera.
using Clock = std::function<int64_t()>;

struct CameraOptions {
  /// Time of the camera; empty means the steady clock of the machine. Tests set a clock of their own.
  Clock clock = {};
  /// Bytes of FileAccessBuffer: what one file operation moves at most. 64 .. 1048576.
  int32_t fileBufferBytes = 4096;
  /// Time that a restart takes, in nanoseconds: so long accessMode() is kPortNotAvailable and every access is refused.
  int64_t restartNs = 0;
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

  /// The description that fits the firmware now running. The text lives as long as the program.
  std::string_view currentDescription() const;

  /// Hands out the oldest event message that is due and not yet fetched; false, and `event` as it was, if there is
  /// none. At most 1024 wait; then the oldest is dropped and the register EventQueueLost counts it.
  bool nextEvent(CameraEvent& event);

  /// Hands out the oldest picture that nobody fetched (at most 16 wait). Without one, a camera that runs freely takes
  /// the next picture at once; one that waits for a trigger or does not run gives a frame without data. Throws
  /// std::bad_alloc.
  Frame acquireFrame();

  /// Draws the oldest picture that is due and not yet fetched into `memory`, followed by its chunks. Returns false if
  /// no picture is due. `needed` is set to the picture's size in bytes; if `memory` is smaller, the picture is dropped
  /// and nothing is drawn. Leaves `frame.data` alone. Does not hold the camera's lock while it draws. Throws
  /// std::bad_alloc.
  bool takeFrame(std::span<uint8_t> memory, Frame& frame, uint64_t& needed);

  /// Content of a file of the camera, named as in FileSelector. Throws std::invalid_argument for an unknown name.
  std::vector<uint8_t> fileContent(std::string_view file) const;
  void setFileContent(std::string_view file, std::vector<uint8_t> content);
  /// Lets `judge` decide how each file operation ends; an empty one restores normal behaviour.
  void judgeFileOperations(FileJudge judge);

  /// Writes everything the camera remembers: registers, user sets, files, firmware. Failures show in the stream.
  void saveState(std::ostream& out) const;
  /// Takes over what saveState() wrote. Registers that this version does not know are skipped; those that the text
  /// does not mention keep their value. Throws std::runtime_error, with nothing changed, if it is not such a text.
  void loadState(std::istream& in);

  /// What a power cycle does: registers return to their values at power on, an activated firmware starts.
  void reset();
  /// Restarts since construction, by reset() or by the command DeviceReset.
  int64_t resetCount() const;

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace ox::simulation
