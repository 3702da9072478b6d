// The file in which a simulated camera keeps its registers, shared by every run of the tool that names it.
#pragma once

#include <OxSimulation/SimulatedCamera.h>
#include <sys/stat.h>

#include <optional>
#include <string>

namespace tool {

// One run changes the camera at a time: lock() waits for the others, commit() lets them go on. A run that only reads
// never writes the file, and sees what the others have written.
class StateFile {
 public:
  // Loads the file; one that does not exist yet is a camera fresh from the factory. Throws Failure.
  StateFile(ox::simulation::SimulatedCamera& camera, std::string path);
  StateFile(const StateFile&) = delete;
  StateFile& operator=(const StateFile&) = delete;
  // Drops what was not committed.
  ~StateFile() { unlock(); }

  // Loads what another run has written since, unless this one holds the lock. Throws Failure.
  void follow();
  // Call it before the camera changes. Throws Failure.
  void lock();
  // Writes what has changed since lock(), if it was called. Throws Failure.
  void commit();

 private:
  void load();
  void unlock() noexcept;
  std::string text() const;

  ox::simulation::SimulatedCamera& camera_;
  std::string path_;
  std::optional<struct stat> known_;  // the file that the camera was loaded from, or that it was written to
  std::string before_;                // the state when the lock was taken
  int folder_ = -1;                   // open while this run holds the lock
};

}  // namespace tool
