// Asks the transports for cameras.
#pragma once

#include <OxCameraTransport/Transport.h>

#include <string>
#include <vector>

namespace ox::camera {

// A camera, and the transport that found it.
struct Way {
  Transport* transport;
  CameraFacts facts;
};

struct Discovery {
  std::vector<Way> ways;
  std::vector<Note> notes;
};

// Asks them all at the same time. One that has not answered three seconds after the search's time is left alone, with a
// note.
Discovery searchAll(const std::vector<Transport*>& transports, const Search& search);

}  // namespace ox::camera
