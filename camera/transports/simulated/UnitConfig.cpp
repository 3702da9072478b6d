#include "UnitConfig.h"

#include <charconv>
#include <map>
#include <sstream>
#include <stdexcept>

namespace ox::camera::simulated {
namespace {

template <class Value>
Value oneOf(const std::map<std::string, Value>& values, const std::string& key, const std::string& value) {
  const auto found = values.find(value);
  if (found == values.end()) throw std::invalid_argument("'" + value + "' is no " + key + " of a simulated camera");
  return found->second;
}

Milliseconds time(const std::string& key, const std::string& value) {
  int64_t number = 0;
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
  if (error != std::errc{} || end != value.data() + value.size() || number < 0)
    throw std::invalid_argument("'" + value + "' for " + key + " is no number of milliseconds");
  return Milliseconds{number};
}

void set(UnitConfig& unit, const std::string& key, const std::string& value) {
  const std::map<std::string, std::string UnitConfig::*> texts{{"vendor", &UnitConfig::vendor},
                                                               {"model", &UnitConfig::model},
                                                               {"serial", &UnitConfig::serial},
                                                               {"user", &UnitConfig::user},
                                                               {"identity", &UnitConfig::identity}};
  if (const auto text = texts.find(key); text != texts.end()) {
    unit.*text->second = value;
  } else if (key == "state") {
    unit.reach = oneOf<Reach>(
        {{"busy", Reach::busy}, {"wrong-subnet", Reach::wrongSubnet}, {"no-permission", Reach::noPermission}}, key,
        value);
  } else if (key == "order") {
    unit.order = oneOf<Order>({{"old", Order::old}, {"wrong", Order::wrong}}, key, value);
  } else if (key == "late") {
    unit.late = time(key, value);
  } else if (key == "heartbeat") {
    unit.heartbeat = time(key, value);
  } else {
    throw std::invalid_argument("'" + key + "' is nothing that a simulated camera has");
  }
}

UnitConfig parseUnit(const std::string& text) {
  UnitConfig unit;
  std::istringstream parts(text);
  std::getline(parts, unit.name, ',');
  if (unit.name.empty()) throw std::invalid_argument("A simulated camera has no name");
  for (std::string part; std::getline(parts, part, ',');) {
    const size_t equals = part.find('=');
    if (equals == std::string::npos) throw std::invalid_argument("'" + part + "' is no KEY=VALUE");
    set(unit, part.substr(0, equals), part.substr(equals + 1));
  }
  if (unit.serial.empty()) unit.serial = unit.name;
  if (unit.identity.empty()) unit.identity = "sim-" + unit.name;
  return unit;
}

}  // namespace

std::vector<UnitConfig> parseUnits(const std::string& text) {
  std::vector<UnitConfig> units;
  std::istringstream parts(text);
  for (std::string part; std::getline(parts, part, ';');)
    if (!part.empty()) units.push_back(parseUnit(part));
  return units;
}

}  // namespace ox::camera::simulated
