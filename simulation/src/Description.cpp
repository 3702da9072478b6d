#include "OxSimulation/SimulatedCamera.h"

namespace ox::simulation {

namespace {
constexpr char kDescription[] =
#include "CameraDescription.inc"
    ;
}  // namespace

std::string_view SimulatedCamera::description() {
  return {kDescription, sizeof(kDescription) - 1};
}

}  // namespace ox::simulation
