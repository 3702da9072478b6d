// Words that only the device knows: what completion offers where a feature, a command or a value is asked for.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "NodeMap.h"

namespace tool {

class DeviceWords {
 public:
  // `map` opens the device when it is first needed.
  explicit DeviceWords(std::function<const NodeMap&()> map) : map_(std::move(map)) {}

  std::vector<std::string> nodes() const { return map_().nodeNames(); }
  std::vector<std::string> features() const;
  // The features of one type.
  std::vector<std::string> features(TNodeType type) const;
  // What an enumeration can be set to now, of a boolean true and false; nothing for other features.
  std::vector<std::string> valuesOf(const std::string& feature) const;
  // The IDs of cameras that answer at once.
  static std::vector<std::string> cameras();

 private:
  std::function<const NodeMap&()> map_;
};

}  // namespace tool
