#include "Snapshot.h"

#include <nlohmann/json.hpp>

namespace tool {

std::string snapshotText(const NodeMap& map, const std::vector<std::string>& features,
                         const std::function<void(const Failure&)>& problem) {
  const oxgenapi::NodeMapStream stream(map);
  for (const std::string& name : features) {
    try {
      stream.push(map.node(name));
    } catch (const Failure& failure) {
      problem(failure);
    }
  }
  return stream.dump();
}

bool isSnapshot(std::string_view text) {
  const size_t first = text.find_first_not_of(" \t\r\n");
  return first != std::string_view::npos && text[first] == '[';
}

std::vector<Setting> parseSnapshot(std::string_view text) {
  std::vector<Setting> settings;
  try {
    for (const auto& record : nlohmann::json::parse(text)) {
      const auto name = record.at("Name").get<std::string>();
      settings.push_back({name, name, record.at("Value").get<std::string>()});
    }
  } catch (const nlohmann::json::exception& error) {
    throw Failure(kFileFailed, std::string("no snapshot: ") + error.what());
  }
  return settings;
}

}  // namespace tool
