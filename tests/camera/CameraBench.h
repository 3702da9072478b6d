// What tests of the camera library share: the modules they use, simulated cameras, a transport that does what they say.
#pragma once

#include <OxCamera/SimulatedFaults.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <OxCamera/oxcamera.hpp>
#include <chrono>
#include <filesystem>
#include <functional>
#include <string>

#include "modules/Odd.h"

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// The transports "odd" and "simulated" alone; the odd one finds nothing, and there are the simulated cameras that a
// test names.
class CameraBench : public testing::Test {
 protected:
  CameraBench();
  ~CameraBench() override;

  static void simulate(const std::string& cameras);  // as OXGENAPI_SIMULATED has it
  static OddScript& odd();
  // A folder with links to these built modules.
  std::filesystem::path modules(const std::vector<std::string>& names) const;
  std::filesystem::path folder() const { return folder_; }
  static std::filesystem::path built();  // where the build puts libraries
  static std::filesystem::path
  usualModules();  // one folder for the whole program: a module is loaded once for each path

 private:
  std::filesystem::path folder_;
};

// The code and text with which something fails; 0 and nothing if it does not.
struct Outcome {
  uint32_t code = 0;
  std::string text;
};
Outcome outcomeOf(const std::function<void()>& work);
// Fails the test unless it fails like that.
void expectFailure(uint32_t code, const std::string& text, const std::function<void()>& work);

// Four bytes, big-endian.
void setFault(const oxgenapi::Camera& camera, uint64_t address, uint32_t value);
uint32_t fault(const oxgenapi::Camera& camera, uint64_t address);

std::chrono::milliseconds timeOf(const std::function<void()>& work);
// Whether it comes true within that time.
bool becomes(std::chrono::milliseconds time, const std::function<bool()>& condition);
