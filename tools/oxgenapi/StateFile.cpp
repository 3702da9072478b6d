#include "StateFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "Failure.h"
#include "FileReplacement.h"

namespace tool {
namespace {

constexpr std::chrono::milliseconds kLockPause{10};
constexpr int kPausesUnnoticed = 100;  // one second

std::optional<struct stat> statusOf(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? std::optional(status) : std::nullopt;
}

// Each commit makes another file.
bool isSame(const std::optional<struct stat>& a, const std::optional<struct stat>& b) {
  if (!a || !b) return !a && !b;
  return a->st_ino == b->st_ino && a->st_dev == b->st_dev && a->st_size == b->st_size &&
         a->st_mtim.tv_sec == b->st_mtim.tv_sec && a->st_mtim.tv_nsec == b->st_mtim.tv_nsec;
}

}  // namespace

StateFile::StateFile(ox::simulation::SimulatedCamera& camera, std::string path)
    : camera_(camera), path_(std::move(path)) {
  follow();
}

void StateFile::follow() {
  if (folder_ >= 0) return;
  const auto now = statusOf(path_);
  if (now && !isSame(now, known_)) {
    known_ = now;  // read afterwards: if it changes meanwhile, the next call loads it again
    load();
  }
}

// The file itself is replaced at each commit and may not exist yet, so its folder carries the lock.
void StateFile::lock() {
  if (folder_ >= 0) return;
  const std::string parent = std::filesystem::path(path_).parent_path().string();
  const int folder = open(parent.empty() ? "." : parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) throw Failure(kFileFailed, "'" + path_ + "': its folder cannot be opened");
  for (int pauses = 0; flock(folder, LOCK_EX | LOCK_NB) != 0; ++pauses) {
    if (pauses == kPausesUnnoticed)
      std::fprintf(stderr, "oxgenapi: waiting for another run that changes '%s'\n", path_.c_str());
    std::this_thread::sleep_for(kLockPause);
  }
  try {
    follow();
  } catch (...) {
    close(folder);
    throw;
  }
  folder_ = folder;
  before_ = text();
}

void StateFile::commit() {
  if (folder_ < 0) return;
  try {
    if (const std::string now = text(); now != before_ || !known_) {
      FileReplacement file(path_);
      file.write(now);
      file.commit();
      known_ = statusOf(path_);
    }
  } catch (...) {
    unlock();
    throw;
  }
  unlock();
}

void StateFile::load() {
  try {
    std::ifstream file(path_, std::ios::binary);
    if (!file) throw Failure(kFileFailed, "'" + path_ + "' cannot be read");
    camera_.loadState(file);
  } catch (const Failure&) {
    throw;
  } catch (const std::exception& error) {
    throw Failure(kFileFailed, "'" + path_ + "': " + error.what());
  }
}

void StateFile::unlock() noexcept {
  if (folder_ >= 0) {
    close(folder_);  // and with it goes the lock
    folder_ = -1;
  }
}

std::string StateFile::text() const {
  std::ostringstream text;
  camera_.saveState(text);
  return std::move(text).str();
}

}  // namespace tool
