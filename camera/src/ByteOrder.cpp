#include "ByteOrder.h"

#include <fnmatch.h>

#include <cstdlib>
#include <fstream>
#include <optional>
#include <sstream>
#include <vector>

namespace ox::camera {
namespace {

std::vector<std::string> lists() {
  if (const char* chosen = std::getenv("OXGENAPI_BYTE_ORDER")) return {chosen};
  std::vector<std::string> paths;
  if (const char* folder = std::getenv("XDG_CONFIG_HOME"))
    paths.push_back(folder);
  else if (const char* home = std::getenv("HOME"))
    paths.push_back(std::string(home) + "/.config");
  paths.push_back("/etc");
  for (std::string& path : paths) path += "/oxgenapi/byte-order.conf";
  return paths;
}

std::string field(std::istringstream& line) {
  std::string text;
  std::getline(line, text, '|');
  const size_t start = text.find_first_not_of(" \t\r");
  return start == std::string::npos ? "" : text.substr(start, text.find_last_not_of(" \t\r") - start + 1);
}

std::optional<bool> known(const DescribedCamera& camera) {
  for (const std::string& path : lists()) {
    std::ifstream file(path);
    for (std::string text; std::getline(file, text);) {
      std::istringstream line(text.substr(0, text.find('#')));
      const std::string vendor = field(line), model = field(line), order = field(line);
      if (order != "register" && order != "memory") continue;
      if (fnmatch(vendor.c_str(), camera.vendor.c_str(), 0) == 0 &&
          fnmatch(model.c_str(), camera.model.c_str(), 0) == 0)
        return order == "register";
    }
  }
  return std::nullopt;
}

}  // namespace

bool usesRegisterAccess(const DescribedCamera& camera, TByteOrder wanted) {
  if (wanted != BO_Automatic) return wanted == BO_Register;
  const bool old = camera.schemaMajor < 1 || (camera.schemaMajor == 1 && camera.schemaMinor < 1);
  return known(camera).value_or(old);
}

}  // namespace ox::camera
