#include "Modules.h"

#include <ModuleProbe.h>
#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <string_view>

namespace ox::camera {
namespace {

namespace fs = std::filesystem;

fs::path installedFolder() { return folderOfCode(reinterpret_cast<const void*>(&installedFolder)) / "oxgenapi"; }

std::vector<fs::path> folders() {
  const char* chosen = std::getenv("OXGENAPI_TRANSPORTS");
  if (chosen == nullptr) return {installedFolder()};
  std::vector<fs::path> paths;
  const std::string_view list = chosen;
  for (size_t start = 0; start <= list.size();) {
    const size_t end = std::min(list.find(':', start), list.size());
    if (end > start) paths.emplace_back(list.substr(start, end - start));
    start = end + 1;
  }
  return paths;
}

struct Module {
  std::unique_ptr<Transport> transport;  // null: refused
  std::string text;                      // what its note says
};

Module loadModule(const fs::path& path, bool foreign) {
  const std::string file = path.string();
  if (foreign) {
    if (const std::string fault = probeModule(installedFolder(), path); !fault.empty())
      return {nullptr, file + " " + fault};
  }
  void* module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) return {nullptr, file + " cannot be loaded: " + dlerror()};
  void* entry = dlsym(module, kTransportEntry);
  if (entry == nullptr) return {nullptr, file + " is no transport: it has no function " + kTransportEntry};
  try {
    std::unique_ptr<Transport> transport(reinterpret_cast<OpenTransport>(entry)(kTransportVersion));
    if (!transport) return {nullptr, file + " was built for another version of the library"};
    return {std::move(transport), file + " is loaded"};
  } catch (const std::exception& error) {
    return {nullptr, file + " does not start: " + error.what()};
  } catch (...) {
    return {nullptr, file + " does not start"};
  }
}

}  // namespace

LoadedTransports loadTransports() {
  static std::mutex& mutex = *new std::mutex;
  static auto& modules = *new std::map<fs::path, Module>;  // never ends: other threads may use it at exit
  const std::lock_guard lock(mutex);
  std::vector<fs::path> files;
  LoadedTransports result;
  const fs::path trusted = installedFolder();
  for (const fs::path& folder : folders()) {
    std::error_code error;
    const fs::path real = fs::canonical(folder, error);
    auto entries = error ? fs::directory_iterator{} : fs::directory_iterator(real, error);
    if (error)
      result.notes.push_back({Note::Kind::moduleFailed, folder.string() + " cannot be read: " + error.message()});
    for (const auto& entry : entries)
      if (entry.path().extension() == ".so") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  files.erase(std::unique(files.begin(), files.end()), files.end());
  for (const fs::path& path : files) {
    auto known = modules.find(path);
    if (known == modules.end()) known = modules.emplace(path, loadModule(path, path.parent_path() != trusted)).first;
    const Module& module = known->second;
    if (module.transport) result.transports.push_back(module.transport.get());
    result.notes.push_back({module.transport ? Note::Kind::module : Note::Kind::moduleFailed, module.text});
  }
  std::stable_sort(result.transports.begin(), result.transports.end(),
                   [](const Transport* a, const Transport* b) { return a->name() < b->name(); });
  return result;
}

}  // namespace ox::camera
