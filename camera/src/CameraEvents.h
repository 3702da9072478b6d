// The event messages of one camera, fetched and delivered on the caller's thread.
#pragma once

#include <OxCamera/Events.h>
#include <OxCameraTransport/Transport.h>

#include <mutex>

namespace ox::camera {

class Session;

class CameraEvents {
 public:
  explicit CameraEvents(Session& session) : session_(session) {}
  CameraEvents(const CameraEvents&) = delete;
  CameraEvents& operator=(const CameraEvents&) = delete;

  // See OxCameraNextEvent. Throws CameraError, TransportError; after `event` was set when delivering fails.
  void next(Milliseconds time, TCameraEvent& event);

 private:
  bool fetch(Milliseconds time);
  void deliver() const;

  Session& session_;
  std::mutex fetching_;   // held while a thread waits, and for the next
  EventMessage message_;  // the last one handed out
};

}  // namespace ox::camera
