// Interface names and the ids given to them.
#include <map>
#include <mutex>
#include <string>
#include <string_view>

#include "OxBase/OxBase.h"

namespace {

// Well above the fixed ids, so that those can grow.
constexpr uint64_t kFirstRegisteredId = 65536;

struct InterfaceRegistry {
  std::mutex mutex;
  std::map<std::string, uint64_t, std::less<>> ids;
};

// Never destroyed: names are registered from static initialisers and may be asked for as late as from destructors.
InterfaceRegistry& registry() {
  static auto* const instance = new InterfaceRegistry;
  return *instance;
}

}  // namespace

uint64_t OxRegisterInterface(const char* Name) {
  if (Name == nullptr || *Name == '\0') return 0;
  try {
    InterfaceRegistry& known = registry();
    const std::lock_guard lock(known.mutex);
    const auto found = known.ids.find(std::string_view(Name));
    if (found != known.ids.end()) return found->second;
    const uint64_t id = kFirstRegisteredId + known.ids.size();
    known.ids.emplace(Name, id);
    return id;
  } catch (...) {
    return 0;  // no memory
  }
}
