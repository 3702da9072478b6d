#include "files/FileProtocolNodes.h"

#include <algorithm>
#include <chrono>
#include <cstring>

#include "GenApi/IEnumEntry.h"
#include "files/CommandWait.h"
#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;
using GENICAM_NAMESPACE::InvalidArgumentException;
using GENICAM_NAMESPACE::OutOfRangeException;

namespace {

constexpr int64_t kBufferAccessUnit = 4;  // transports move registers in groups of four bytes
constexpr std::chrono::milliseconds kFirstPause{1};
constexpr std::chrono::milliseconds kLongestPause{50};

int64_t roundUp(int64_t value, int64_t unit) { return (value + unit - 1) / unit * unit; }

struct Steps {
  int64_t min;
  int64_t max;
  int64_t inc;
};

Steps stepsOf(IInteger& node) {
  const int64_t inc = node.GetIncMode() == fixedIncrement ? node.GetInc() : 1;
  return {std::max<int64_t>(node.GetMin(), 0), node.GetMax(), std::max<int64_t>(inc, 1)};
}

}  // namespace

void FileProtocolAdapter::Nodes::Selection::write(const char* name) {
  entry.clear();
  node->FromString(name);
  if (IEnumEntry* chosen = node->GetEntryByName(name)) {
    value = chosen->GetValue();
    entry = name;
  }
}

bool FileProtocolAdapter::Nodes::Selection::holds(const char* name) const {
  if (entry != name) return false;
  return !IsReadable(node) || node->GetIntValue() == value;
}

void FileProtocolAdapter::Nodes::require(const char* fileName) const {
  if (!attached) refuse<LogicalErrorException>("device files: no node map with the file access features is attached");
  if (!fileName) refuse<InvalidArgumentException>("device files: the file name is null");
}

void FileProtocolAdapter::Nodes::select(const char* fileName, const char* operationName) {
  block = 0;
  file.write(fileName);
  operation.write(operationName);
}

void FileProtocolAdapter::Nodes::keepSelected(const char* fileName, const char* operationName) {
  if (!file.holds(fileName)) {
    select(fileName, operationName);
  } else if (!operation.holds(operationName)) {
    block = 0;
    operation.write(operationName);
  }
}

int64_t FileProtocolAdapter::Nodes::blockSize() {
  if (block == 0) {
    const Steps steps = stepsOf(*length);
    const int64_t most = std::min(buffer->GetLength(), steps.max);
    const int64_t fitting = most < steps.min ? most : steps.min + (most - steps.min) / steps.inc * steps.inc;
    block = std::max<int64_t>(fitting, 1);
  }
  return block;
}

int64_t FileProtocolAdapter::Nodes::announceLength(int64_t wanted) {
  try {
    length->SetValue(wanted);
    return wanted;
  } catch (const OutOfRangeException&) {
    // Either the limits have moved since the block size was taken, or the increment forbids this length.
    const Steps steps = stepsOf(*length);
    const int64_t most = std::min(buffer->GetLength(), steps.max);
    if (most < std::max<int64_t>(steps.min, 1)) return 0;
    const int64_t last = steps.min + (most - steps.min) / steps.inc * steps.inc;
    const int64_t next = wanted <= steps.min ? steps.min : steps.min + roundUp(wanted - steps.min, steps.inc);
    const int64_t accepted = std::min(next, last);
    if (accepted == wanted) throw;
    if (accepted < 1) return 0;
    length->SetValue(accepted);
    return accepted;
  }
}

void FileProtocolAdapter::Nodes::fillBuffer(const char* bytes, int64_t count, int64_t announced) {
  const int64_t whole = std::min(roundUp(announced, kBufferAccessUnit), buffer->GetLength());
  const auto* data = reinterpret_cast<const uint8_t*>(bytes);
  if (whole <= count) {
    buffer->Set(data, count);
    return;
  }
  if (padded.size() < static_cast<size_t>(whole)) padded.resize(static_cast<size_t>(whole));
  std::memcpy(padded.data(), data, static_cast<size_t>(count));
  std::memset(padded.data() + count, 0, static_cast<size_t>(whole - count));
  buffer->Set(padded.data(), whole);
}

bool FileProtocolAdapter::Nodes::run() {
  execute->Execute();
  if (!waitUntilDone(*execute, std::chrono::milliseconds(kFileOperationTimeout), kFirstPause, kLongestPause)) {
    isStuck = true;
    refuse<TimeoutException>("file '{}': operation '{}' has not finished within {} ms", file.entry, operation.entry,
                             kFileOperationTimeout);
  }
  const int64_t value = operationStatus->GetIntValue(false, true);
  if (hasSuccess && value == successValue) {
    outcome = "status Success";
    return true;
  }
  const IEnumEntry* entry = operationStatus->GetEntry(value);
  outcome = "status " + (entry ? std::string(entry->GetSymbolic().view()) : std::to_string(value));
  return false;
}

}  // namespace GENAPI_NAMESPACE
