// The library's C++ objects, under the tool's own roof.
#pragma once

#include <OxGenApi/oxgenapi.hpp>

namespace tool {

using oxgenapi::Node;
using oxgenapi::NodeMap;

}  // namespace tool
