#include "Transports.h"

#include <OxGenApi/Types.h>
#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "Failure.h"

namespace tool {
namespace {

namespace fs = std::filesystem;
using ox::transport::Transport;

std::vector<fs::path> folders() {
  const char* chosen = std::getenv("OXGENAPI_TRANSPORTS");
  const fs::path program = fs::read_symlink("/proc/self/exe").parent_path();
  const std::string_view list = chosen != nullptr ? chosen : OX_TRANSPORT_FOLDERS;
  std::vector<fs::path> paths;
  for (size_t start = 0; start <= list.size();) {
    const size_t end = std::min(list.find(':', start), list.size());
    if (end > start) {
      paths.push_back((program / list.substr(start, end - start)).lexically_normal());
    }
    start = end + 1;
  }
  return paths;
}

std::vector<fs::path> modules() {
  std::vector<fs::path> found;
  for (const fs::path& folder : folders()) {
    std::error_code ignored;  // a folder that is not there has no modules
    for (const auto& entry : fs::directory_iterator(folder, ignored)) {
      if (entry.path().extension() == ".so") {
        found.push_back(entry.path());
      }
    }
  }
  std::sort(found.begin(), found.end());
  found.erase(std::unique(found.begin(), found.end()), found.end());
  return found;
}

}  // namespace

std::vector<std::unique_ptr<Transport>> openTransports() {
  std::vector<std::unique_ptr<Transport>> transports;
  std::string reasons;
  for (const fs::path& path : modules()) {
    void* module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* entry = module == nullptr ? nullptr : dlsym(module, ox::transport::kEntryPoint);
    if (entry == nullptr) {
      const char* reason = dlerror();
      reasons += std::string("; ") + (reason == nullptr ? path.string() : reason);
      continue;
    }
    const auto open = reinterpret_cast<ox::transport::OpenTransport>(entry);
    if (std::unique_ptr<Transport> transport{open(ox::transport::kInterfaceVersion)}) {
      transports.push_back(std::move(transport));
    } else {
      reasons += "; " + path.string() + " was built for another version of the tool";
    }
  }
  if (transports.empty()) {
    throw Failure(OXGENAPI_E_NOT_SUPPORTED,
                  "No transport for real cameras is installed: build with libaravis-dev present, or name the folder "
                  "of the modules in OXGENAPI_TRANSPORTS" +
                      reasons);
  }
  return transports;
}

}  // namespace tool
