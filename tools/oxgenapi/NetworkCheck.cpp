#include "NetworkCheck.h"

#include <filesystem>
#include <fstream>
#include <optional>

namespace tool {
namespace {

namespace fs = std::filesystem;

std::optional<int64_t> numberIn(const fs::path& file) {
  std::ifstream stream(file);
  int64_t number = 0;
  return stream >> number ? std::optional(number) : std::nullopt;
}

struct Setting {
  const char* name;
  const char* file;
  int64_t needed;
};

constexpr Setting kSettings[] = {
    {"net.core.rmem_max", "/proc/sys/net/core/rmem_max", 32 << 20},  // bytes that a receive buffer may have
    {"net.core.netdev_max_backlog", "/proc/sys/net/core/netdev_max_backlog", 5000},  // packets that wait for the kernel
};
constexpr int64_t kJumboFrame = 8192;  // bytes of a packet
constexpr int64_t kUsbMegabytes = 1000;
constexpr const char* kUsbMemory = "/sys/module/usbcore/parameters/usbfs_memory_mb";

}  // namespace

std::vector<SettingCheck> checkNetwork() {
  std::vector<SettingCheck> checks;
  for (const Setting& setting : kSettings) {
    if (const auto value = numberIn(setting.file)) {
      checks.push_back({setting.name, *value, setting.needed,
                        std::string("sudo sysctl -w ") + setting.name + "=" + std::to_string(setting.needed)});
    }
  }
  std::error_code none;
  for (const auto& entry : fs::directory_iterator("/sys/class/net", none)) {
    const std::string name = entry.path().filename().string();
    const auto mtu = numberIn(entry.path() / "mtu");
    const bool card = fs::exists(entry.path() / "device", none);
    if (card && mtu) checks.push_back({"MTU of " + name, *mtu, kJumboFrame, "sudo ip link set " + name + " mtu 9000"});
  }
  if (const auto value = numberIn(kUsbMemory)) {
    checks.push_back({"usbfs_memory_mb", *value, kUsbMegabytes,
                      "echo " + std::to_string(kUsbMegabytes) + " | sudo tee " + kUsbMemory});
  }
  return checks;
}

}  // namespace tool
