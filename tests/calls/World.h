// The devices and host files that calls work on.
#pragma once
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

#include "OxGenApi/Types.h"
#include "OxSimulation/FaultPort.h"
#include "OxSimulation/MemoryDevice.h"
#include "OxSimulation/SimulatedCamera.h"
#include "calls/Vocabulary.h"

namespace calls {

class World {
 public:
  // How the ports behave; every n-th access (n the World's rate) does what is said here.
  enum class Mood : uint8_t {
    kGood,
    kFailWithText,
    kFailWithoutText,
    kGarbage,
    kThrow,
    kThrowForeign,
    kNoMemory,
    kMoods
  };

  World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  void setMood(Mood mood, uint8_t rate) {
    rate_ = rate;
    mood_ = mood;
  }
  // Ports give up in a call that asks too much, such as one waiting without end. This thread's next one begins.
  static void beginCall();
  // Called before each access of a port, on its thread.
  std::atomic<void (*)()> onAccess{nullptr};

  // Port callbacks; the user data is one of the places below.
  struct Place {
    World& world;
    bool isCamera;
    ox::simulation::RegisterDevice& device() const;
  };
  Place memory{*this, false}, camera{*this, true};
  static int read(void* buffer, int64_t address, int64_t length, void* place);
  static int write(const void* buffer, int64_t address, int64_t length, void* place);
  static TAccessMode accessMode(void* place);

  static const HostFiles& files();

 private:
  // 0, or the code of the fault that is due.
  int fault(bool& garbage);

  ox::simulation::MemoryDevice memoryDevice_;
  std::atomic<int64_t> cameraTime_{0};
  std::once_flag cameraMade_;  // when it is first asked: most worlds do without
  std::unique_ptr<ox::simulation::SimulatedCamera> camera_;
  std::atomic<Mood> mood_{Mood::kGood};
  std::atomic<uint8_t> rate_{1};
  std::atomic<uint32_t> accesses_{0};
};

}  // namespace calls
