// A transport that does what a test says: loaded as a module like any other.
#pragma once

#include <OxCameraTransport/Transport.h>

#include <functional>
#include <memory>

// What the transport "odd" does; replaced between searches only.
struct OddScript {
  std::function<ox::camera::Findings(const ox::camera::Search&)> search;
  std::function<std::unique_ptr<ox::camera::Device>(const ox::camera::OpenRequest&)> open;
};
