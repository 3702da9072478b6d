#include "UsbCameras.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace ox::camera::usb {
namespace {

namespace fs = std::filesystem;

std::string lineOf(const fs::path& file) {
  std::ifstream stream(file);
  std::string line;
  std::getline(stream, line);
  return line;
}

// The control interface of USB3 Vision: miscellaneous class 0xef, subclass 5, protocol 0.
bool isControlInterface(const fs::path& interface) {
  return lineOf(interface / "bInterfaceClass") == "ef" && lineOf(interface / "bInterfaceSubClass") == "05" &&
         lineOf(interface / "bInterfaceProtocol") == "00";
}

std::string nodeName(const fs::path& device, const fs::path& nodes) {
  char name[16];
  snprintf(name, sizeof name, "%03d/%03d", std::atoi(lineOf(device / "busnum").c_str()),
           std::atoi(lineOf(device / "devnum").c_str()));
  return (nodes / name).string();
}

bool isHeld(const std::string& driver) { return !driver.empty(); }

}  // namespace

std::vector<UsbCamera> systemCameras(const fs::path& devices, const fs::path& nodes) {
  std::vector<UsbCamera> cameras;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(devices, error)) {
    const std::string name = entry.path().filename().string();
    const size_t colon = name.find(':');
    if (colon == std::string::npos || !isControlInterface(entry.path())) continue;
    const fs::path device = devices / name.substr(0, colon);
    UsbCamera camera;
    camera.position = name.substr(0, colon);
    camera.vendorNumber = lineOf(device / "idVendor");
    camera.manufacturer = lineOf(device / "manufacturer");
    camera.product = lineOf(device / "product");
    camera.serial = lineOf(device / "serial");
    std::error_code none;
    camera.driver = fs::read_symlink(entry.path() / "driver", none).filename().string();
    camera.node = nodeName(device, nodes);
    camera.speed = static_cast<uint64_t>(std::atof(lineOf(device / "speed").c_str()) * 1e6);
    camera.mayOpen = access(camera.node.c_str(), R_OK | W_OK) == 0;
    cameras.push_back(std::move(camera));
  }
  std::sort(cameras.begin(), cameras.end(), [](const auto& a, const auto& b) { return a.position < b.position; });
  return cameras;
}

CameraFacts factsOf(const UsbCamera& camera) {
  CameraFacts facts;
  facts.place = facts.address = camera.position;
  facts.vendor = camera.manufacturer;
  facts.model = camera.product;
  facts.serial = camera.serial;
  facts.protocol = "USB3Vision";
  complete(facts, camera);
  if (!camera.mayOpen) {
    facts.reach = Reach::noPermission;
    facts.obstacle = "this user may not open " + camera.node + "; put SUBSYSTEM==\"usb\", ATTRS{idVendor}==\"" +
                     camera.vendorNumber +
                     "\", TAG+=\"uaccess\" into /etc/udev/rules.d/70-usb3-vision.rules and plug the "
                     "camera in again";
  }
  return facts;
}

void complete(CameraFacts& facts, const UsbCamera& camera) {
  facts.address = camera.position;
  facts.interface = "usb" + camera.position.substr(0, camera.position.find('-'));
  facts.linkSpeed = camera.speed;
  if (isHeld(camera.driver)) {
    facts.reach = Reach::busy;
    facts.obstacle = camera.driver == "usbfs" ? "another program uses it (" + camera.node + ")"
                                              : "the kernel driver " + camera.driver + " has taken it";
  } else {
    facts.reach = Reach::free;
  }
}

}  // namespace ox::camera::usb
