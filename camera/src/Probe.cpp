// Loads one module and ends: what a crash in it costs is this process.
#include <dlfcn.h>
#include <sys/resource.h>

#include <OxCameraTransport/Transport.h>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const rlimit none{0, 0};
  setrlimit(RLIMIT_CORE, &none);
  void* module = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) return 1;
  const auto open = reinterpret_cast<ox::camera::OpenTransport>(dlsym(module, ox::camera::kTransportEntry));
  if (open != nullptr) open(ox::camera::kTransportVersion);
  return 0;
}
