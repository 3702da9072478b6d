// The settings of this machine that decide whether images of cameras arrive whole.
#pragma once

#include <string>
#include <vector>

namespace tool {

struct SettingCheck {
  std::string subject;  // "net.core.rmem_max", "MTU of eth0"
  int64_t value = 0;
  int64_t needed = 0;
  std::string command;  // that mends it

  bool ok() const { return value >= needed; }
};

// Changes nothing. A setting that this system does not have is left out.
std::vector<SettingCheck> checkNetwork();

}  // namespace tool
