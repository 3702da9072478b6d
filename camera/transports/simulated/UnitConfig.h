// Which simulated cameras there are, and how they are.
#pragma once

#include <OxCameraTransport/Transport.h>

#include <string>
#include <vector>

namespace ox::camera::simulated {

enum class Order {
  plain,  // registers as the description says
  old,    // words read as memory come in the other order, and the description says schema 1.0
  wrong,  // the same, but the description says schema 1.1
};

struct UnitConfig {
  std::string name;
  std::string vendor = "OxSimulation";
  std::string model = "SC-200";
  std::string serial;  // empty: the name
  std::string user = {};
  std::string identity;  // empty: made from the name
  Reach reach = Reach::free;
  Order order = Order::plain;
  Milliseconds late{0};
  Milliseconds heartbeat{3000};  // control is gone when nothing comes for so long
};

// Reads "NAME[,KEY=VALUE]...[;NAME...]": keys vendor, model, serial, user, identity, state (busy, wrong-subnet,
// no-permission), order (old, wrong), late and heartbeat (milliseconds). Throws std::invalid_argument naming what is
// wrong.
std::vector<UnitConfig> parseUnits(const std::string& text);

}  // namespace ox::camera::simulated
