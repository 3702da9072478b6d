#include "OxSimulation/SimulatedCamera.h"

namespace ox::simulation {

namespace {
constexpr std::string_view kPieces[] = {
#include "CameraDescription.inc"
};
}  // namespace

std::string_view SimulatedCamera::description() {
  static const std::string text = [] {
    std::string joined;
    for (const std::string_view piece : kPieces) joined += piece;
    return joined;
  }();
  return text;
}

}  // namespace ox::simulation
