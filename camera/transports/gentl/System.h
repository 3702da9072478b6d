// What a producer reaches: its system, the interfaces of it, and the devices that these find.
#pragma once

#include <OxCameraTransport/Transport.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Producer.h"

namespace ox::camera::gentl {

// Any thread may call; one at a time is inside the producer's lists. A system stays open until the process ends.
class System {
 public:
  // Throws TransportError.
  explicit System(const std::filesystem::path& file);
  ~System();
  System(const System&) = delete;
  System& operator=(const System&) = delete;

  const Producer& producer() const { return producer_; }

  // The devices that answer in that time. What fails at one interface or device is a note.
  Findings search(Milliseconds time);

  struct Opened {
    DEV_HANDLE device;
    PORT_HANDLE port;
    bool control;
  };
  // A device by the place that search() gave it; with control, or read only where control is refused and not wanted.
  // Throws TransportError.
  Opened open(const std::string& place, bool control);
  void close(DEV_HANDLE device);

 private:
  struct Device {
    std::string interface, id;
  };
  // Throws TransportError when a call of the producer's lists does not come back.
  std::unique_lock<std::timed_mutex> enter();
  IF_HANDLE openInterface(const std::string& id);
  std::vector<std::string> ids(const char* function, uint32_t count,
                               const std::function<GC_ERROR(uint32_t, char*, size_t*)>& ask, Findings& findings);
  void searchInterface(const std::string& id, Milliseconds time, Findings& findings);
  CameraFacts factsOf(IF_HANDLE interface, const std::string& interfaceId, const std::string& id);
  std::string interfaceText(const std::string& id, INTERFACE_INFO_CMD item);

  Producer producer_;
  TL_HANDLE handle_ = nullptr;
  std::timed_mutex mutex_;  // for what follows, and calls of lists
  std::map<std::string, IF_HANDLE> interfaces_;
  std::map<std::string, Device> devices_;  // by place
};

}  // namespace ox::camera::gentl
