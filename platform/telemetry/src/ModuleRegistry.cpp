#include "ModuleRegistry.h"

#include <atomic>
#include <cstdlib>
#include <memory>
#include <mutex>

namespace oxtelemetry {

namespace {

constinit std::mutex registryMutex;
OxTSink nextSink = nullptr;
void* nextSinkUserData = nullptr;
uint32_t nextSinkLevel = OXT_LEVEL_OFF;

// Newest first. Modules are only ever added, so the list is walked without the mutex.
constinit std::atomic<OxTModuleRecord*> newestModule{nullptr};

// OX_TELEMETRY_LEVEL: exactly one digit from 0 to 3, everything else leaves telemetry off.
uint32_t environmentLevel() noexcept {
  const char* text = secure_getenv("OX_TELEMETRY_LEVEL");
  if (text == nullptr || text[0] < '0' || text[0] > '3' || text[1] != '\0') return OXT_LEVEL_OFF;
  return static_cast<uint32_t>(text[0] - '0');
}

// Settles level and destination; after this they are fixed.
void settle(OxTModuleRecord& module) noexcept {
  if (nextSink != nullptr) {
    module.sink = nextSink;
    module.sinkUserData = nextSinkUserData;
    module.level = nextSinkLevel;
    return;
  }
  module.level = environmentLevel();
  if (!module.enabled()) return;
  const char* path = secure_getenv("OX_TELEMETRY_FILE");
  if (path != nullptr && *path != '\0')
    module.writer.openFile(path);
  else
    module.writer.openStandardError();
}

}  // namespace

void setSink(OxTSink sink, void* userData, uint32_t level) noexcept {
  const std::lock_guard lock(registryMutex);
  nextSink = sink;
  nextSinkUserData = userData;
  nextSinkLevel = level < OXT_LEVEL_OFF ? level : OXT_LEVEL_OFF;
}

OxTModuleRecord& getModule(const char* name, const char* version) {
  auto module = std::make_unique<OxTModuleRecord>();
  if (name != nullptr) module->name = name;
  if (version != nullptr) module->version = version;

  const std::lock_guard lock(registryMutex);
  OxTModuleRecord* const newest = newestModule.load(std::memory_order_relaxed);
  for (OxTModuleRecord* known = newest; known != nullptr; known = known->next)
    if (known->name == module->name && known->version == module->version) return *known;
  settle(*module);
  module->next = newest;
  newestModule.store(module.get(), std::memory_order_release);
  return *module.release();
}

bool isModule(const OxTModuleRecord* module) noexcept {
  const OxTModuleRecord* known = newestModule.load(std::memory_order_acquire);
  while (known != nullptr && known != module) known = known->next;
  return known != nullptr;
}

}  // namespace oxtelemetry
