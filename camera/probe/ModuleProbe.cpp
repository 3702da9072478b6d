#include "ModuleProbe.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <thread>

extern char** environ;

namespace ox::camera {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds kLoadTime{10};
constexpr const char* kProbe = "oxcamera-probe";

}  // namespace

fs::path folderOfCode(const void* address) {
  Dl_info info{};
  dladdr(address, &info);
  std::error_code ignored;
  return fs::canonical(info.dli_fname == nullptr ? "" : info.dli_fname, ignored).parent_path();
}

std::string probeModule(const fs::path& folder, const fs::path& module) {
  const fs::path program = folder / kProbe;
  std::error_code ignored;
  if (!fs::exists(program, ignored)) return {};
  const std::string path = module.string();
  std::string name = program.string();
  char* arguments[] = {name.data(), const_cast<char*>(path.c_str()), nullptr};
  posix_spawn_file_actions_t silent;
  posix_spawn_file_actions_init(&silent);
  posix_spawn_file_actions_addopen(&silent, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&silent, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t process = 0;
  const int failed = posix_spawn(&process, name.c_str(), &silent, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&silent);
  if (failed != 0) return {};
  const auto end = std::chrono::steady_clock::now() + kLoadTime;
  int status = 0;
  while (waitpid(process, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > end) {
      kill(process, SIGKILL);
      waitpid(process, &status, 0);
      return "does not finish loading";
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  if (!WIFSIGNALED(status)) return "";
  const char* const signal = sigdescr_np(WTERMSIG(status));  // in English whatever the locale, as all texts here
  return std::string("crashes when it is loaded (") + (signal ? signal : std::to_string(WTERMSIG(status))) + ")";
}

}  // namespace ox::camera
