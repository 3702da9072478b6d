// One run of the tool: the global options, the device they choose, and the node map connected to it.
#pragma once

#include <OxSimulation/FaultPort.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Device.h"
#include "NodeMap.h"
#include "Output.h"
#include "WatchedPort.h"

namespace tool {

// How the device fails, to see what becomes of it; with 0 in both numbers not at all.
struct Faults {
  int64_t access = 0;  // the access, counted from 1, that fails
  int64_t every = 0;   // every so many accesses one fails
  uint32_t code = OXGENAPI_E_UNSPECIFIED;
  std::string text = "made to fail";
};

// Exit statuses of the tool, besides 0 and that of wrong usage.
inline constexpr int kFailed = 1;      // a feature or the device failed
inline constexpr int kNoCamera = 3;    // there is no camera, or none of that name
inline constexpr int kNotWritten = 4;  // an image could not be written

struct Options {
  std::string xml;     // description file; empty: the simulated camera and its own description
  std::string memory;  // register image behind `xml`; empty: all zero, kept nowhere
  std::string state;   // register file of the simulated camera; empty: factory settings, kept nowhere
  std::string camera;  // one that the camera library opens, by any of its names; empty: one of the above
  Faults faults;
  bool json = false;
  Output::Colour colour = Output::Colour::automatic;
};

class Session {
 public:
  explicit Session(const Options& options);

  const Output& output() const { return output_; }
  // What --camera says; empty without.
  const std::string& cameraName() const { return options_.camera; }
  // Whether files stand for the device.
  bool hasFiles() const { return !options_.xml.empty() || !options_.state.empty(); }
  // Before the device is opened: this run writes nothing, and another program may control the camera meanwhile.
  void onlyRead() { onlyReads_ = true; }
  // Opens the device and loads its description on the first call. Throws Failure.
  NodeMap& map();
  // The device behind map(), which it opens.
  Device& device();
  // What stands before the device, which it opens.
  WatchedPort& port();
  // Names of the ports that the device answers.
  const std::vector<std::string>& ports();
  // Lets the device restart and connects a new node map to it, which takes the place of map(). Throws Failure.
  NodeMap& restart(std::chrono::milliseconds delay, std::chrono::milliseconds duration);
  // Writes the device's registers back to the file they come from, if there is one and something was written.
  void keep();

  // Reports what failed at one feature; the run goes on and its exit status becomes 1.
  void report(const Failure& failure);
  // An access of the device that failed makes an answer doubtful; reports it where nothing else has been reported.
  void reportHidden();
  // Sets the exit status without a report.
  void fail(int status = kFailed) { status_ = status; }
  bool failed() const { return status_ != 0; }
  int status() const { return status_; }

 private:
  void open();
  // The device, or what lets it fail as the options say.
  ox::simulation::RegisterDevice& failing(ox::simulation::RegisterDevice& device);
  void suggest(const Failure& failure);
  NodeMap load();
  void connect(NodeMap& map);

  Options options_;
  Output output_;
  std::unique_ptr<Device> device_;  // outlives the map, whose ports read from it
  std::unique_ptr<ox::simulation::FaultPort> faults_;
  std::unique_ptr<WatchedPort> port_;
  std::optional<NodeMap> map_;
  std::vector<std::string> ports_;
  bool onlyReads_ = false;
  int status_ = 0;
};

}  // namespace tool
