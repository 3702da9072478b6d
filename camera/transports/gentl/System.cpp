#include "System.h"

#include <algorithm>

#include "Answer.h"

namespace ox::camera::gentl {
namespace {

constexpr uint32_t kMostListed = 1024;  // interfaces of a system, and devices of an interface
constexpr Milliseconds kShortestSearch{100};
constexpr Milliseconds kPatience{2000};  // with another search

std::string protocolOf(const std::string& type) {
  static constexpr std::pair<const char*, const char*> kNames[] = {{"GEV", "GigEVision"}, {"U3V", "USB3Vision"},
                                                                   {"CL", "CameraLink"},  {"CLHS", "CameraLinkHS"},
                                                                   {"CXP", "CoaXPress"},  {"IIDC", "IIDC"}};
  for (const auto& [word, name] : kNames)
    if (type == word) return name;
  return type.empty() ? "GenTL" : type;
}

}  // namespace

System::System(const std::filesystem::path& file) : producer_(file) {
  const GC_ERROR code = producer_.functions.TLOpen(&handle_);
  if (code != GC_ERR_SUCCESS) producer_.fail("TLOpen", code);
  if (handle_ == nullptr) producer_.failAnswer("TLOpen", "gives no handle");
}

System::~System() {
  for (const auto& [id, interface] : interfaces_) producer_.functions.IFClose(interface);
  if (handle_ != nullptr) producer_.functions.TLClose(handle_);
}

std::unique_lock<std::timed_mutex> System::enter() {
  std::unique_lock lock(mutex_, kPatience);
  if (!lock) throw TransportError(Reason::timedOut, producer_.name() + ".cti has not come back from listing cameras");
  return lock;
}

IF_HANDLE System::openInterface(const std::string& id) {
  IF_HANDLE& interface = interfaces_[id];
  if (interface != nullptr) return interface;
  IF_HANDLE opened = nullptr;
  producer_.call(producer_.functions.TLOpenInterface, handle_, id.c_str(), &opened);
  if (opened == nullptr) producer_.failAnswer("TLOpenInterface", "gives no handle");
  return interface = opened;
}

// What fails at one entry, which may have gone since the count, costs only that.
std::vector<std::string> System::ids(const char* function, uint32_t count,
                                     const std::function<GC_ERROR(uint32_t, char*, size_t*)>& ask, Findings& findings) {
  if (count > kMostListed) {
    findings.notes.push_back({Note::Kind::interfaceFailed, producer_.name() + ".cti says " + std::to_string(count) +
                                                               " entries; the first " + std::to_string(kMostListed) +
                                                               " are looked at"});
    count = kMostListed;
  }
  std::vector<std::string> ids;
  for (uint32_t index = 0; index < count; ++index) {
    try {
      std::string id = requireText(producer_, function, [&](INFO_DATATYPE*, void* buffer, size_t* size) {
        return ask(index, static_cast<char*>(buffer), size);
      });
      if (id.empty()) producer_.failAnswer(function, "gives an empty ID for entry " + std::to_string(index));
      if (std::find(ids.begin(), ids.end(), id) == ids.end()) ids.push_back(std::move(id));
    } catch (const TransportError& error) {
      findings.notes.push_back({Note::Kind::interfaceFailed, error.what()});
      if (ids.empty() && index >= 8) break;  // nothing but failures
    }
  }
  return ids;
}

Findings System::search(Milliseconds time) {
  const auto lock = enter();
  Findings findings;
  const auto wait = static_cast<uint64_t>(std::max(time, kShortestSearch).count());
  bool8_t changed = 0;
  GC_ERROR code = producer_.functions.TLUpdateInterfaceList(handle_, &changed, wait);
  if (code == GC_ERR_NOT_INITIALIZED) {
    producer_.initialise();
    code = producer_.functions.TLUpdateInterfaceList(handle_, &changed, wait);
  }
  if (code != GC_ERR_SUCCESS && code != GC_ERR_TIMEOUT) producer_.fail("TLUpdateInterfaceList", code);
  uint32_t count = 0;
  producer_.call(producer_.functions.TLGetNumInterfaces, handle_, &count);
  const auto interfaces = ids(
      "TLGetInterfaceID", count,
      [&](uint32_t index, char* buffer, size_t* size) {
        return producer_.functions.TLGetInterfaceID(handle_, index, buffer, size);
      },
      findings);
  for (const std::string& id : interfaces) {
    const Milliseconds share = std::max(time / static_cast<int>(interfaces.size()), kShortestSearch);
    try {
      searchInterface(id, share, findings);
    } catch (const TransportError& error) {
      findings.notes.push_back({Note::Kind::interfaceFailed, error.what()});
    }
  }
  return findings;
}

void System::searchInterface(const std::string& id, Milliseconds time, Findings& findings) {
  const auto& functions = producer_.functions;
  IF_HANDLE interface = openInterface(id);
  bool8_t changed = 0;
  const auto wait = static_cast<uint64_t>(time.count());
  GC_ERROR code = functions.IFUpdateDeviceList(interface, &changed, wait);
  if (isDead(code)) {
    interfaces_.erase(id);
    interface = openInterface(id);
    code = functions.IFUpdateDeviceList(interface, &changed, wait);
  }
  if (code != GC_ERR_SUCCESS && code != GC_ERR_TIMEOUT) producer_.fail("IFUpdateDeviceList", code);
  uint32_t count = 0;
  producer_.call(functions.IFGetNumDevices, interface, &count);
  const auto devices = ids(
      "IFGetDeviceID", count,
      [&](uint32_t index, char* buffer, size_t* size) {
        return functions.IFGetDeviceID(interface, index, buffer, size);
      },
      findings);
  findings.notes.push_back(
      {Note::Kind::interface, producer_.name() + ".cti: " + printable(interfaceText(id, INTERFACE_INFO_DISPLAYNAME)) +
                                  ": " + std::to_string(devices.size()) + " cameras"});
  for (const std::string& device : devices) {
    CameraFacts facts = factsOf(interface, id, device);
    devices_[facts.place] = {id, device};
    findings.cameras.push_back(std::move(facts));
  }
}

std::string System::interfaceText(const std::string& id, INTERFACE_INFO_CMD item) {
  const std::string found = text([&](INFO_DATATYPE* type, void* buffer, size_t* size) {
    return producer_.functions.TLGetInterfaceInfo(handle_, id.c_str(), item, type, buffer, size);
  });
  return found.empty() ? id : found;
}

CameraFacts System::factsOf(IF_HANDLE interface, const std::string& interfaceId, const std::string& id) {
  const auto ask = [&](DEVICE_INFO_CMD item) {
    return text([&](INFO_DATATYPE* type, void* buffer, size_t* size) {
      return producer_.functions.IFGetDeviceInfo(interface, id.c_str(), item, type, buffer, size);
    });
  };
  CameraFacts facts;
  facts.place = producer_.file() + "/" + interfaceId + "/" + id;
  facts.vendor = ask(DEVICE_INFO_VENDOR);
  facts.model = ask(DEVICE_INFO_MODEL);
  facts.serial = ask(DEVICE_INFO_SERIAL_NUMBER);
  facts.userName = ask(DEVICE_INFO_USER_DEFINED_NAME);
  facts.version = ask(DEVICE_INFO_VERSION);
  facts.protocol = protocolOf(ask(DEVICE_INFO_TLTYPE));
  if (facts.model.empty()) facts.model = ask(DEVICE_INFO_DISPLAYNAME);
  if (facts.serial.empty()) facts.identity = id;
  facts.address = id;
  facts.interface = producer_.name() + ":" + interfaceText(interfaceId, INTERFACE_INFO_DISPLAYNAME);
  const std::optional<uint64_t> status = number([&](INFO_DATATYPE* type, void* buffer, size_t* size) {
    return producer_.functions.IFGetDeviceInfo(interface, id.c_str(), DEVICE_INFO_ACCESS_STATUS, type, buffer, size);
  });
  switch (status.value_or(DEVICE_ACCESS_STATUS_UNKNOWN)) {
    case DEVICE_ACCESS_STATUS_READWRITE: facts.reach = Reach::free; break;
    case DEVICE_ACCESS_STATUS_READONLY:
    case DEVICE_ACCESS_STATUS_BUSY:
    case DEVICE_ACCESS_STATUS_OPEN_READWRITE:
    case DEVICE_ACCESS_STATUS_OPEN_READONLY:
      facts.reach = Reach::busy;
      facts.obstacle = "Another program has control";
      break;
    case DEVICE_ACCESS_STATUS_NOACCESS:
      facts.reach = Reach::noPermission;
      facts.obstacle = producer_.name() + ".cti gives no access to it";
      break;
    default: facts.reach = Reach::unknown;
  }
  return facts;
}

System::Opened System::open(const std::string& place, bool control) {
  const auto lock = enter();
  const auto found = devices_.find(place);
  if (found == devices_.end()) throw TransportError(Reason::notFound, "No producer knows " + printable(place));
  const auto& functions = producer_.functions;
  IF_HANDLE interface = openInterface(found->second.interface);
  Opened opened{nullptr, nullptr, control};
  const auto openWith = [&](DEVICE_ACCESS_FLAGS flag) {
    opened.device = nullptr;
    return functions.IFOpenDevice(interface, found->second.id.c_str(), flag, &opened.device);
  };
  GC_ERROR code = openWith(control ? DEVICE_ACCESS_CONTROL : DEVICE_ACCESS_READONLY);
  if (isDead(code)) {
    interfaces_.erase(found->second.interface);
    interface = openInterface(found->second.interface);
    code = openWith(control ? DEVICE_ACCESS_CONTROL : DEVICE_ACCESS_READONLY);
  }
  // Not every producer opens a device to look only.
  if (!control && (code == GC_ERR_NOT_IMPLEMENTED || code == GC_ERR_INVALID_PARAMETER || code == GC_ERR_ACCESS_DENIED))
    code = openWith(DEVICE_ACCESS_CONTROL);
  if (code != GC_ERR_SUCCESS) producer_.fail("IFOpenDevice", code);
  if (opened.device == nullptr) producer_.failAnswer("IFOpenDevice", "gives no handle");
  try {
    producer_.call(functions.DevGetPort, opened.device, &opened.port);
    if (opened.port == nullptr) producer_.failAnswer("DevGetPort", "gives no handle");
  } catch (...) {
    functions.DevClose(opened.device);
    throw;
  }
  return opened;
}

void System::close(DEV_HANDLE device) { producer_.functions.DevClose(device); }

}  // namespace ox::camera::gentl
