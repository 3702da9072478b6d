// Streams through the aravis library: its buffers lie in the memory that we are given.
#pragma once

#include <OxCameraTransport/Transport.h>
#include <arv.h>

#include <memory>
#include <span>

namespace ox::camera::aravis {

// Of an open device. `loopback`: no packet socket receives there. Throws TransportError.
std::unique_ptr<Stream> openAravisStream(ArvDevice* device, bool loopback, const StreamRequest& request,
                                         std::span<const BufferMemory> buffers, FrameSink& sink);

}  // namespace ox::camera::aravis
