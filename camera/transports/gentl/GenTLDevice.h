// A device of a producer as a camera.
#pragma once

#include <OxCameraTransport/Transport.h>

#include <memory>

#include "System.h"

namespace ox::camera::gentl {

// Throws TransportError.
std::unique_ptr<Device> openDevice(const std::shared_ptr<System>& system, const OpenRequest& request);

// A data stream of a device, opened and closed; the frames that its payload size is for are not yet announced.
class DataStream {
 public:
  DataStream(std::shared_ptr<System> system, DEV_HANDLE device);
  ~DataStream();
  DataStream(const DataStream&) = delete;
  DataStream& operator=(const DataStream&) = delete;

  const Producer& producer() const { return system_->producer(); }
  DS_HANDLE handle() const { return handle_; }
  std::optional<uint64_t> info(STREAM_INFO_CMD item) const;

 private:
  const std::shared_ptr<System> system_;
  DS_HANDLE handle_ = nullptr;
};

// Announces the buffers and starts. Throws TransportError.
std::unique_ptr<Stream> openStream(std::unique_ptr<DataStream> stream, uint64_t tickFrequency,
                                   std::span<const BufferMemory> buffers, FrameSink& sink);

}  // namespace ox::camera::gentl
