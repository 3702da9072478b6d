// Firmware: activating an uploaded image, and what changes at the next reset.
#pragma once

#include <string>

#include "CameraCore.h"
#include "Files.h"

namespace ox::simulation {

class Firmware final : public Behaviour {
 public:
  Firmware(CameraCore& core, Files& files);

  void powerOn() override;
  void save(StateBlocks& blocks) const override;
  void load(const StateBlocks& blocks) override;

  /// The description that fits the running firmware: from version 2 on it has one feature more.
  std::string_view description() const;

 private:
  void activate();

  Files& files_;
  std::string pending_;  // version that starts at the next reset
};

}  // namespace ox::simulation
