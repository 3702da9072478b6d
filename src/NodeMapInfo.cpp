// What a loaded description says about its device.
#include <array>

#include "GenApi/IDeviceInfo.h"
#include "LoadedMap.h"
#include "NodeMap.h"
#include "NodeText.h"

namespace orxGenApi {
namespace {

using GENAPI_NAMESPACE::IDeviceInfo;
using GENICAM_NAMESPACE::Version_t;

[[noreturn]] void refuseCommand() { throw orx_error(OXGENAPI_E_NOT_SUPPORTED, "Unknown info command"); }

IDeviceInfo& deviceInfo(LoadedMap& load) {
  auto* info = dynamic_cast<IDeviceInfo*>(load.map());
  if (info == nullptr) throw orx_error(OXGENAPI_E_NOT_SUPPORTED, "No NodeMap information available");
  return *info;
}

bool isVersion(TNodeMapInfo info) { return info >= NMI_SchemaMajorVersion && info <= NMI_DeviceSubMinorVersion; }

int64_t versionPart(const IDeviceInfo& device, TNodeMapInfo info) {
  Version_t version;
  const bool ofSchema = info < NMI_DeviceMajorVersion;
  if (ofSchema)
    device.GetSchemaVersion(version);
  else
    device.GetDeviceVersion(version);
  const std::array<int64_t, 3> parts = {version.Major, version.Minor, version.SubMinor};
  return parts[info - (ofSchema ? NMI_SchemaMajorVersion : NMI_DeviceMajorVersion)];
}

}  // namespace

int64_t NodeMap::versionNumber(TNodeMapInfo info) const {
  const auto load = required();
  if (!isVersion(info)) refuseCommand();
  return versionPart(deviceInfo(*load), info);
}

std::string NodeMap::infoText(TNodeMapInfo info) const {
  const auto load = required();
  if (info > NMI_ToolTip) refuseCommand();
  const IDeviceInfo& device = deviceInfo(*load);
  switch (info) {
    case NMI_VendorName: return device.GetVendorName().c_str();
    case NMI_ModelName: return device.GetModelName().c_str();
    case NMI_StandardNameSpace: return device.GetStandardNameSpace().c_str();
    case NMI_ProductGuid: return device.GetProductGuid().c_str();
    case NMI_VersionGuid: return device.GetVersionGuid().c_str();
    case NMI_ToolTip: return device.GetToolTip().c_str();
    default: return integerText(versionPart(device, info));
  }
}

uint32_t NodeMap::GetInfoAsBoolean(TNodeMapInfo, bool*) noexcept {
  return guarded(operation("-NodeMap::GetInfoAsBoolean", kAsking), [&] {
    required();
    refuseCommand();
  });
}

uint32_t NodeMap::GetInfoAsInteger(TNodeMapInfo info, int64_t* value) noexcept {
  return guarded(operation("-NodeMap::GetInfoAsInteger", kAsking), [&] { *value = versionNumber(info); });
}

uint32_t NodeMap::GetInfoAsFloat(TNodeMapInfo info, double* value) noexcept {
  return guarded(operation("-NodeMap::GetInfoAsFloat", kAsking),
                 [&] { *value = static_cast<double>(versionNumber(info)); });
}

uint32_t NodeMap::GetInfoAsString(TNodeMapInfo info, char* value, size_t& size) noexcept {
  return guardedText(operation("-NodeMap::GetInfoAsString", kAsking), value, size, [&] { return infoText(info); });
}

uint32_t NodeMap::GetInfoAsStringW(TNodeMapInfo info, wchar_t* value, size_t& size) noexcept {
  return guardedText(operation("-NodeMap::GetInfoAsString", kAsking), value, size, [&] { return infoText(info); });
}

}  // namespace orxGenApi
