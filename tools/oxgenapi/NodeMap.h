// The library's C++ objects, as the tool uses them: a node map that is connected to a register device.
#pragma once

#include <OxSimulation/RegisterDevice.h>
#include <OxGenApi/oxgenapi.hpp>

#include <string>

namespace tool {

using oxgenapi::Node;

class NodeMap : public oxgenapi::NodeMap {
 public:
  // Register accesses through the named port go to `device`, which must outlive the map.
  void connect(const std::string& port, ox::simulation::RegisterDevice& device);
};

}  // namespace tool
