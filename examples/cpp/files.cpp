// Copies memory to a file of the camera and back.
#include <iostream>
#include <string>

#include "Camera.h"

int main() {
  const Camera camera;
  const std::string note = "calibrated in March";
  camera.map.upload("UserFile1", note.data(), note.size());
  const std::vector<std::byte> copy = camera.map.download("UserFile1");
  std::cout << copy.size() << " bytes: " << std::string(reinterpret_cast<const char*>(copy.data()), copy.size())
            << '\n';
}
