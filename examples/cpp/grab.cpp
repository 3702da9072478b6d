// Takes a picture and saves it: grab GV01 picture.png.
#include <OxCamera/oxcamera.hpp>
#include <iostream>

int main(int argc, char** argv) {
  try {
    const auto camera = oxgenapi::Camera::open(argc > 1 ? argv[1] : "simulated");
    for (int i = 0; i < 3; ++i) {
      const oxgenapi::Image image = camera.grab();  // gives itself back
      std::cout << "image " << image.record().Count << ": " << image.width() << " x " << image.height() << ' '
                << image.pixelFormat() << '\n';
      if (i == 2 && argc > 2) image.save(argv[2]);
    }
    return 0;
  } catch (const oxgenapi::Error& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
