// Loads one module and ends: what a crash in it costs is this process. A transport is started; a producer of GenTL is
// initialised and its system opened.
#include <dlfcn.h>
#include <sys/resource.h>
#include <unistd.h>

#include <OxCameraTransport/Transport.h>

namespace {

void startProducer(void* module) {
  const auto init = reinterpret_cast<int32_t (*)()>(dlsym(module, "GCInitLib"));
  const auto open = reinterpret_cast<int32_t (*)(void**)>(dlsym(module, "TLOpen"));
  const auto close = reinterpret_cast<int32_t (*)(void*)>(dlsym(module, "TLClose"));
  const auto end = reinterpret_cast<int32_t (*)()>(dlsym(module, "GCCloseLib"));
  if (init == nullptr || open == nullptr || init() != 0) return;
  void* system = nullptr;
  if (open(&system) == 0 && close != nullptr) close(system);
  if (end != nullptr) end();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const rlimit none{0, 0};
  setrlimit(RLIMIT_CORE, &none);
  void* module = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) return 1;
  const auto open = reinterpret_cast<ox::camera::OpenTransport>(dlsym(module, ox::camera::kTransportEntry));
  if (open != nullptr) open(ox::camera::kTransportVersion);
  startProducer(module);
  _exit(0);  // what goes wrong at the end of a process is no reason to leave a module out
}
