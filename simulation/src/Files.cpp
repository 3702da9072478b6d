#include "Files.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string>

#include "DeviceFailure.h"

namespace ox::simulation {

namespace {

constexpr int64_t kLongestOperationMs = 60'000;
constexpr int64_t kMaxFileBytes = int64_t{1} << 30;
constexpr std::size_t kCalibrationBytes = 10'000;  // more than two blocks, and no whole number of them
enum OpenMode : uint64_t { kForRead, kForWrite, kForBoth };

std::vector<uint8_t> factoryCalibration() {
  std::vector<uint8_t> bytes(kCalibrationBytes);
  uint32_t state = 200;
  for (uint8_t& byte : bytes) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<uint8_t>(state >> 24);
  }
  return bytes;
}

}  // namespace

Files::Files(CameraCore& core)
    : Behaviour(core),
      files_{File{"UserFile1", true, true, {}}, File{"UserFile2", true, true, {}},
             File{"FactoryCalibration", true, false, factoryCalibration()}, File{"DebugScript", false, true, {}},
             File{"FirmwareImage", true, true, {}}} {
  registers().onWrite(reg("FileOperationExecute"), [this](int32_t) { execute(); });
  registers().onRead(reg("FileSize"), [this](int32_t) {
    const uint64_t selected = registers().integer(reg("FileSelector"));
    registers().setInteger(reg("FileSize"), selected < files_.size() ? files_[selected].bytes.size() : 0);
  });
  registers().onWrite(reg("FileSelector"), [this](int32_t) {
    if (registers().integer(reg("FileSelector")) >= files_.size())
      throw DeviceFailure(kInvalidArgument, "FileSelector: there is no such file");
  });
}

void Files::powerOn() {
  for (File& file : files_) file.openForRead = file.openForWrite = false;
}

void Files::save(StateBlocks& blocks) const {
  for (const File& file : files_) blocks.emplace("file/" + std::string(file.name), file.bytes);
}

void Files::load(const StateBlocks& blocks) {
  registers().setInteger(reg("FileOperationExecute"), 0);
  for (File& file : files_) {
    file.openForRead = file.openForWrite = false;
    const auto found = blocks.find("file/" + std::string(file.name));
    if (found != blocks.end()) file.bytes = found->second;
  }
}

std::vector<uint8_t>& Files::content(std::string_view name) {
  for (File& file : files_)
    if (file.name == name) return file.bytes;
  throw std::invalid_argument("the camera has no file '" + std::string(name) + "'");
}

const std::vector<uint8_t>& Files::content(std::string_view name) const {
  return const_cast<Files*>(this)->content(name);
}

void Files::execute() {
  const auto& r = registers();
  if (r.integer(reg("FileOperationExecute")) == 0) return;
  const uint64_t selected = std::min<uint64_t>(r.integer(reg("FileSelector")), files_.size() - 1);
  const auto operation = static_cast<FileOperation>(r.integer(reg("FileOperationSelector")));
  FileVerdict verdict;
  if (judge_)
    verdict = judge_({files_[selected].name, operation, static_cast<int64_t>(r.integer(reg("FileAccessOffset"))),
                      static_cast<int64_t>(r.integer(reg("FileAccessLength")))});
  if (verdict.refusal != 0)
    throw DeviceFailure(verdict.refusal,
                        "FileOperationExecute: file '" + std::string(files_[selected].name) + "' refused");
  if (verdict.durationNs == 0) {
    const auto wanted = static_cast<int64_t>(r.integer(reg("TestFileOperationTime")));
    verdict.durationNs = std::min(wanted, kLongestOperationMs) * kMillisecond;
  }
  const auto act = [this, selected, operation, verdict] {
    registers().setInteger(reg("FileOperationResult"), 0);
    if (verdict.status != FileStatus::kSuccess) return finish(verdict.status);
    perform(selected, operation, verdict.maxBytes);
  };
  if (verdict.durationNs > 0) return core_.finishLater(reg("FileOperationExecute"), verdict.durationNs, act);
  registers().setInteger(reg("FileOperationExecute"), 0);
  act();
}

void Files::perform(std::size_t selected, FileOperation operation, int64_t maxBytes) {
  File& file = files_[selected];
  switch (operation) {
    case FileOperation::kOpen: return finish(open(file));
    case FileOperation::kClose: {
      const bool wasOpen = file.openForRead || file.openForWrite;
      file.openForRead = file.openForWrite = false;
      return finish(wasOpen ? FileStatus::kSuccess : FileStatus::kFailure);
    }
    case FileOperation::kRead: return finish(read(file, maxBytes));
    case FileOperation::kWrite: return finish(write(file, maxBytes));
    case FileOperation::kDelete:
      if (!file.writable || file.openForRead || file.openForWrite) return finish(FileStatus::kFailure);
      file.bytes.clear();
      return finish(FileStatus::kSuccess);
  }
  finish(FileStatus::kInvalidParameter);
}

FileStatus Files::open(File& file) {
  if (file.openForRead || file.openForWrite) return FileStatus::kFailure;
  const uint64_t mode = registers().integer(reg("FileOpenMode"));
  if (mode > kForBoth) return FileStatus::kInvalidParameter;
  if ((mode != kForWrite && !file.readable) || (mode != kForRead && !file.writable)) return FileStatus::kUnavailable;
  file.openForRead = mode != kForWrite;
  file.openForWrite = mode != kForRead;
  if (mode == kForWrite) file.bytes.clear();
  return FileStatus::kSuccess;
}

FileStatus Files::read(const File& file, int64_t maxBytes) {
  if (!file.openForRead) return FileStatus::kFailure;
  const uint64_t offset = registers().integer(reg("FileAccessOffset"));
  const uint64_t length = registers().integer(reg("FileAccessLength"));
  const auto buffer = registers().bytes(reg("FileAccessBuffer"));
  if (offset > file.bytes.size() || length > buffer.size()) return FileStatus::kInvalidParameter;
  const uint64_t moved =
      std::min({length, file.bytes.size() - offset, static_cast<uint64_t>(std::max<int64_t>(0, maxBytes))});
  if (moved != 0) std::memcpy(buffer.data(), file.bytes.data() + offset, moved);
  registers().setInteger(reg("FileOperationResult"), moved);
  return FileStatus::kSuccess;
}

FileStatus Files::write(File& file, int64_t maxBytes) {
  if (!file.openForWrite) return FileStatus::kFailure;
  const uint64_t offset = registers().integer(reg("FileAccessOffset"));
  const uint64_t length = registers().integer(reg("FileAccessLength"));
  const auto buffer = registers().bytes(reg("FileAccessBuffer"));
  if (offset > file.bytes.size() || length > buffer.size()) return FileStatus::kInvalidParameter;
  const uint64_t moved =
      std::min({length, static_cast<uint64_t>(std::max<int64_t>(0, maxBytes)), kMaxFileBytes - offset});
  const uint64_t over = std::min(moved, file.bytes.size() - offset);  // the part that lies inside the file already
  if (over != 0) std::memcpy(file.bytes.data() + offset, buffer.data(), over);
  file.bytes.insert(file.bytes.end(), buffer.begin() + static_cast<int64_t>(over),
                    buffer.begin() + static_cast<int64_t>(moved));
  registers().setInteger(reg("FileOperationResult"), moved);
  return FileStatus::kSuccess;
}

void Files::finish(FileStatus status) {
  registers().setInteger(reg("FileOperationStatus"), static_cast<uint64_t>(status));
}

}  // namespace ox::simulation
