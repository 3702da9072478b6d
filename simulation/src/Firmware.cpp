#include "Firmware.h"

#include <charconv>
#include <stdexcept>

#include "OxSimulation/FirmwareImage.h"

namespace ox::simulation {

namespace {

constexpr int64_t kActivationNs = 300 * kMillisecond;
constexpr std::string_view kVersionPrefix = "FW ";
constexpr int kFirstVersionWithReadoutMode = 2;
enum Status : uint64_t { kIdle, kPending, kInvalid };

constexpr std::string_view kLinkMark = "<!-- Firmware 2.0 adds its features here. -->";
constexpr std::string_view kNodeMark = "<!-- Firmware 2.0 adds its nodes here. -->";
constexpr std::string_view kAddedLink = "<pFeature>SensorReadoutMode</pFeature>";
constexpr std::string_view kAddedNodes = R"(<Enumeration Name="SensorReadoutMode" NameSpace="Standard">
    <ToolTip>How the sensor is read</ToolTip>
    <Description>Fast reading doubles the noise.</Description>
    <DisplayName>Sensor Readout Mode</DisplayName>
    <Visibility>Expert</Visibility>
    <EnumEntry Name="Normal" NameSpace="Standard">
      <ToolTip>Little noise</ToolTip>
      <DisplayName>Normal</DisplayName>
      <Value>0</Value>
    </EnumEntry>
    <EnumEntry Name="Fast" NameSpace="Standard">
      <ToolTip>Twice the speed</ToolTip>
      <DisplayName>Fast</DisplayName>
      <Value>1</Value>
    </EnumEntry>
    <pValue>SensorReadoutModeReg</pValue>
  </Enumeration>
  <IntReg Name="SensorReadoutModeReg" NameSpace="Custom">
    <Visibility>Invisible</Visibility>
    <Address>@ADDRESS@</Address>
    <Length>4</Length>
    <AccessMode>RW</AccessMode>
    <pPort>Device</pPort>
    <Sign>Unsigned</Sign>
    <Endianess>BigEndian</Endianess>
  </IntReg>)";

void replace(std::string& text, std::string_view from, std::string_view to) {
  const std::size_t at = text.find(from);
  if (at == std::string::npos) throw std::logic_error("description without '" + std::string(from) + "'");
  text.replace(at, from.size(), to);
}

const std::string& secondDescription() {
  static const std::string text = [] {
    const int64_t address = kRegisters[static_cast<std::size_t>(reg("SensorReadoutMode"))].address;
    std::string nodes(kAddedNodes);
    replace(nodes, "@ADDRESS@", std::to_string(address));
    std::string changed(SimulatedCamera::description());
    replace(changed, kLinkMark, kAddedLink);
    replace(changed, kNodeMark, nodes);
    replace(changed, "MajorVersion=\"1\" MinorVersion=\"4\" SubMinorVersion=\"2\"",
            "MajorVersion=\"2\" MinorVersion=\"0\" SubMinorVersion=\"0\"");
    return changed;
  }();
  return text;
}

}  // namespace

Firmware::Firmware(CameraCore& core, Files& files) : Behaviour(core), files_(files) {
  registers().onWrite(reg("FirmwareActivate"), [this](int32_t) {
    core_.finishLater(reg("FirmwareActivate"), kActivationNs, [this] { activate(); });
  });
}

void Firmware::activate() {
  try {
    pending_ = FirmwareImage::decode(files_.content("FirmwareImage")).version;
    registers().setInteger(reg("FirmwareStatus"), kPending);
  } catch (const std::runtime_error&) {
    pending_.clear();
    registers().setInteger(reg("FirmwareStatus"), kInvalid);
  }
  registers().setText(reg("FirmwarePendingVersion"), pending_);
}

void Firmware::powerOn() {
  if (pending_.empty()) return;
  registers().setText(reg("DeviceFirmwareVersion"), std::string(kVersionPrefix) + pending_);
  pending_.clear();
}

void Firmware::save(StateBlocks& blocks) const {
  blocks.emplace("firmware/pending", std::vector<uint8_t>(pending_.begin(), pending_.end()));
}

void Firmware::load(const StateBlocks& blocks) {
  registers().setInteger(reg("FirmwareActivate"), 0);
  const auto found = blocks.find("firmware/pending");
  if (found != blocks.end()) pending_.assign(found->second.begin(), found->second.end());
}

std::string_view Firmware::description() const {
  const std::string version = registers().text(reg("DeviceFirmwareVersion"));
  int major = 0;
  if (version.starts_with(kVersionPrefix))
    std::from_chars(version.data() + kVersionPrefix.size(), version.data() + version.size(), major);
  return major >= kFirstVersionWithReadoutMode ? std::string_view(secondDescription()) : SimulatedCamera::description();
}

}  // namespace ox::simulation
