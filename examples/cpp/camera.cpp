// Opens a camera by any of its names and shows a feature: camera GV01, camera 192.168.0.20, camera simulated.
#include <OxCamera/oxcamera.hpp>
#include <iostream>

int main(int argc, char** argv) {
  try {
    const auto camera = oxgenapi::Camera::open(argc > 1 ? argv[1] : "simulated");
    const oxgenapi::Node width = camera["Width"];
    width.set(320);
    std::cout << "Width = " << width.integer() << '\n';
    return 0;
  } catch (const oxgenapi::Error& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
