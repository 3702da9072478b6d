#include "FeatureMap.h"

#include <OxBase/OxBase.h>

#include <map>
#include <shared_mutex>
#include <utility>
#include <vector>

#include "ByteOrder.h"
#include "DescriptionBytes.h"
#include "Failure.h"

namespace ox::camera {
namespace {

struct Ports {
  std::shared_mutex mutex;
  uint64_t last = 0;
  std::map<uint64_t, std::weak_ptr<FeaturePort>> open;
};

Ports& ports() {
  static Ports& all = *new Ports;  // never ends: node maps may be used until the process does
  return all;
}

std::shared_ptr<FeaturePort> portOf(void* key) {
  Ports& all = ports();
  const std::shared_lock lock(all.mutex);
  const auto found = all.open.find(reinterpret_cast<uintptr_t>(key));
  std::shared_ptr<FeaturePort> port = found == all.open.end() ? nullptr : found->second.lock();
  if (!port) throw CameraError(OXCAMERA_E_CLOSED, "The camera is closed");
  return port;
}

int readPort(void* buffer, int64_t address, int64_t length, void* key) {
  return answerPort(
      [&] { portOf(key)->readFeature(buffer, static_cast<uint64_t>(address), static_cast<size_t>(length)); });
}

int writePort(const void* buffer, int64_t address, int64_t length, void* key) {
  return answerPort(
      [&] { portOf(key)->writeFeature(buffer, static_cast<uint64_t>(address), static_cast<size_t>(length)); });
}

TAccessMode portAccess(void* key) {
  try {
    return portOf(key)->featureAccess();
  } catch (...) {
    return AM_ReadWrite;  // let the access tell that the camera is closed
  }
}

bool ended(uint32_t code) { return code == OXCAMERA_E_LOST || code == OXCAMERA_E_CLOSED; }

int64_t info(NODEMAP map, TNodeMapInfo item) {
  int64_t value = 0;
  NMInfoAsInteger(map, item, &value);
  return value;
}

// A port that nothing serves yet and that event messages do not fill.
bool isVacant(NODE node) {
  TNodeType type = NT_Invalid;
  int64_t access = 1;
  char event[2] = "";
  size_t size = sizeof event;
  NType(node, &type);
  return type == NT_Port && NInfoAsInteger(node, NI_AccessMode, &access) == OXGENAPI_OK && access == 0 &&
         NInfoAsString(node, NI_EventID, event, size) == OXGENAPI_OK && event[0] == '\0';
}

std::vector<std::string> vacantPorts(NODEMAP map) {
  std::vector<std::string> names;
  uint32_t count = 0;
  NMNodeCount(map, count);
  for (uint32_t index = 0; index < count; ++index) {
    char name[512] = "";
    size_t size = sizeof name;
    NODE node = nullptr;
    if (NMListNode(map, index, name, size) != OXGENAPI_OK || NMGetNode(map, name, node) != OXGENAPI_OK) continue;
    if (isVacant(node)) names.push_back(name);
    OxIfaceContainerReleaseUseCounter(node);
  }
  return names;
}

class NewMap {
 public:
  NewMap() {
    const uint32_t result = CreateNodeMap(map_);
    if (result != OXGENAPI_OK) throw lastFailure(result);
  }
  NewMap(const NewMap&) = delete;
  NewMap& operator=(const NewMap&) = delete;
  ~NewMap() {
    if (map_ != nullptr) OxIfaceContainerReleaseUseCounter(map_);
  }
  NODEMAP get() const { return map_; }
  NODEMAP release() { return std::exchange(map_, nullptr); }

 private:
  NODEMAP map_ = nullptr;
};

}  // namespace

int failPort() noexcept {
  const uint32_t code = failWithCurrentException();
  if (code != OXCAMERA_E_READ_ONLY && code != OXCAMERA_E_REFUSED) return static_cast<int>(code);
  try {
    const CameraError error = lastFailure(code);
    OxSetLastError(OXGENAPI_E_ACCESS_DENIED, error.what());
  } catch (...) {  // without memory without a text
  }
  return static_cast<int>(OXGENAPI_E_ACCESS_DENIED);
}

FeatureMap::~FeatureMap() {
  {
    const std::unique_lock lock(ports().mutex);
    ports().open.erase(key_);
  }
  if (map_ != nullptr) OxIfaceContainerReleaseUseCounter(map_);
}

void FeatureMap::connectTo(std::weak_ptr<FeaturePort> port) {
  const std::unique_lock lock(ports().mutex);
  key_ = ++ports().last;
  ports().open.emplace(key_, std::move(port));
}

NODEMAP FeatureMap::take(Connection& connection, const ListedCamera& camera) {
  const auto shared = [this] {
    const std::lock_guard lock(mutex_);
    if (map_ != nullptr) OxIfaceContainerAddUseCounter(map_);
    return map_;
  };
  if (const NODEMAP map = shared()) return map;
  const std::lock_guard lock(loading_);
  if (const NODEMAP map = shared()) return map;
  NewMap fresh;
  load(fresh.get(), connection);
  chooseByteOrder(fresh.get(), connection, camera);
  connect(fresh.get());
  {
    const std::lock_guard leaf(mutex_);
    map_ = fresh.release();
  }
  return shared();
}

void FeatureMap::renew(Connection& connection, const ListedCamera& camera) {
  NODEMAP map = nullptr;
  std::string former;
  {
    const std::lock_guard lock(mutex_);
    map = map_;
    former = bytes_;
  }
  if (map == nullptr) return;
  bool same = !file_.empty();
  if (!same) fromSources(connection, [&](const std::string& bytes) { same = same || bytes == former; });
  if (!same) load(map, connection);
  chooseByteOrder(map, connection, camera);
  connect(map);
}

std::string FeatureMap::description(Connection& connection) {
  {
    const std::lock_guard lock(mutex_);
    if (!bytes_.empty()) return bytes_;
  }
  std::string found;
  fromSources(connection, [&](const std::string& bytes) { found = bytes; });
  return found;
}

void FeatureMap::fromSources(Connection& connection, const Use& use) const {
  std::vector<DescriptionSource> sources;
  if (file_.empty())
    connection.use([&](Device& device) { sources = device.descriptions(); });
  else
    sources.push_back({"file:" + file_});
  const auto read = [&](void* buffer, uint64_t address, size_t length) {
    connection.use([&](Device& device) { device.read(buffer, address, length); });
  };
  std::string reasons;
  for (const DescriptionSource& source : sources) {
    try {
      use(fetchDescription(source, read));
      return;
    } catch (const CameraError& error) {
      if (ended(error.code())) throw;
      reasons += (reasons.empty() ? "" : "; ") + std::string(error.what());
    } catch (const TransportError& error) {
      reasons += (reasons.empty() ? "" : "; ") + std::string(error.what());
    }
  }
  throw CameraError(OXGENAPI_E_RUNTIME, reasons.empty() ? "The camera carries no description" : reasons);
}

void FeatureMap::load(NODEMAP map, Connection& connection) {
  fromSources(connection, [&](const std::string& bytes) {
    loadDescription(map, bytes);
    const std::lock_guard lock(mutex_);
    bytes_ = bytes;
  });
}

void FeatureMap::chooseByteOrder(NODEMAP map, Connection& connection, const ListedCamera& camera) const {
  const bool registers = usesRegisterAccess({camera.text(CI_Vendor), camera.text(CI_Model),
                                             info(map, NMI_SchemaMajorVersion), info(map, NMI_SchemaMinorVersion)},
                                            byteOrder_);
  connection.use([&](Device& device) {
    if (device.hasRegisterAccess()) device.useRegisterAccess(registers);
  });
}

// Connecting drops everything that was read through the port before.
void FeatureMap::connect(NODEMAP map) const {
  const auto port = [this, map](const char* name) {
    return NMConnectPortEx(map, readPort, writePort, portAccess, reinterpret_cast<void*>(uintptr_t{key_}), name);
  };
  uint32_t result = port("Device");
  if (result == OXGENAPI_E_NOT_PRESENT)
    for (const std::string& name : vacantPorts(map)) result = port(name.c_str());
  if (result != OXGENAPI_OK) throw lastFailure(result);
}

}  // namespace ox::camera
