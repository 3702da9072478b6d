// Reads and writes features, and shows what a refused value says.
#include <iostream>

#include "Camera.h"

int main() {
  const Camera camera;
  const oxgenapi::Node exposure = camera.map["ExposureTime"];
  exposure.set(5000);
  std::cout << "ExposureTime = " << exposure.real() << ' ' << exposure.infoText(NI_Unit) << " of "
            << exposure.infoReal(NI_Min) << " .. " << exposure.infoReal(NI_Max) << '\n';
  std::cout << "PixelFormat = " << camera.map["PixelFormat"].text() << '\n';

  try {
    camera.map["Width"].set(1);
  } catch (const oxgenapi::Error& error) {
    std::cout << "refused: " << error.what() << '\n';
  }
  // Where a failure is ordinary, ask for a result instead.
  if (const auto temperature = camera.map["DeviceTemperature"].tryReal())
    std::cout << "DeviceTemperature = " << *temperature << '\n';
}
