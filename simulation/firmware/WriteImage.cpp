// Writes a firmware image of the simulated camera: WriteImage VERSION BYTES FILE, BYTES of payload.
#include <OxSimulation/FirmwareImage.h>

#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: WriteImage VERSION BYTES FILE\n";
    return 2;
  }
  try {
    ox::simulation::FirmwareImage image{argv[1], std::vector<uint8_t>(std::strtoul(argv[2], nullptr, 10))};
    uint32_t state = 1;
    for (uint8_t& byte : image.payload) {
      state = state * 1664525 + 1013904223;
      byte = static_cast<uint8_t>(state >> 24);
    }
    const std::vector<uint8_t> bytes = image.encode();
    std::ofstream file(argv[3], std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (file) return 0;
    std::cerr << "WriteImage: " << argv[3] << " cannot be written\n";
  } catch (const std::exception& error) {
    std::cerr << "WriteImage: " << error.what() << '\n';
  }
  return 1;
}
