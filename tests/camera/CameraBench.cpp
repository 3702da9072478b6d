#include "CameraBench.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <thread>

namespace fs = std::filesystem;

fs::path CameraBench::built() {
  const char* const chosen = std::getenv("OX_BUILD_DIR");
  const fs::path program = fs::read_symlink("/proc/self/exe");
  return (chosen == nullptr ? program.parent_path().parent_path() : fs::path(chosen)) / "lib";
}

fs::path CameraBench::usualModules() {
  static const struct Folder {
    fs::path path = fs::temp_directory_path() / ("ox-camera-modules-" + std::to_string(getpid()));
    Folder() {
      fs::create_directories(path);
      fs::create_symlink(built() / "oxgenapi/simulated.so", path / "simulated.so");
      fs::create_symlink(built() / "oxgenapi/gentl.so", path / "gentl.so");
      fs::create_symlink(built() / "test_modules/Odd.so", path / "odd.so");
    }
    ~Folder() { fs::remove_all(path); }
  } folder;
  return folder.path;
}

CameraBench::CameraBench() : folder_(fs::temp_directory_path() / ("ox-camera-" + std::to_string(getpid()))) {
  fs::create_directories(folder_);
  setenv("OXGENAPI_TRANSPORTS", usualModules().c_str(), 1);
  for (const char* name : {"OXGENAPI_SIMULATED", "OXGENAPI_INTERFACES", "OXGENAPI_ADDRESSES", "GENICAM_GENTL64_PATH"})
    unsetenv(name);
  setenv("OXGENAPI_BYTE_ORDER", "/nonexistent", 1);
  odd() = {};
}

CameraBench::~CameraBench() { fs::remove_all(folder_); }

void CameraBench::simulate(const std::string& cameras) { setenv("OXGENAPI_SIMULATED", cameras.c_str(), 1); }

OddScript& CameraBench::odd() {
  static OddScript* const script = [] {
    void* module = dlopen((usualModules() / "odd.so").c_str(), RTLD_NOW | RTLD_LOCAL);
    return reinterpret_cast<OddScript* (*)()>(dlsym(module, "oddScript"))();
  }();
  return *script;
}

fs::path CameraBench::modules(const std::vector<std::string>& names) const {
  fs::path path = folder_ / "modules";
  fs::create_directories(path);
  for (const std::string& name : names)
    fs::create_symlink(built() / "test_modules" / (name + ".so"), path / (name + ".so"));
  return path;
}

Outcome outcomeOf(const std::function<void()>& work) {
  try {
    work();
    return {};
  } catch (const oxgenapi::Error& error) {
    return {error.code(), error.what()};
  }
}

void expectFailure(uint32_t code, const std::string& text, const std::function<void()>& work) {
  const Outcome outcome = outcomeOf(work);
  EXPECT_EQ(outcome.code, code) << std::hex << outcome.code << " " << outcome.text;
  EXPECT_THAT(outcome.text, testing::HasSubstr(text));
}

void setFault(const oxgenapi::Camera& camera, uint64_t address, uint32_t value) {
  const uint8_t bytes[] = {static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16),
                           static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
  camera.write(bytes, address, sizeof bytes);
}

uint32_t fault(const oxgenapi::Camera& camera, uint64_t address) {
  uint8_t b[4];
  camera.read(b, address, sizeof b);
  return uint32_t{b[0]} << 24 | uint32_t{b[1]} << 16 | uint32_t{b[2]} << 8 | b[3];
}

std::chrono::milliseconds timeOf(const std::function<void()>& work) {
  const auto start = Clock::now();
  work();
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
}

bool becomes(std::chrono::milliseconds time, const std::function<bool()>& condition) {
  for (const auto end = Clock::now() + time; !condition(); std::this_thread::sleep_for(1ms))
    if (Clock::now() > end) return false;
  return true;
}
