// The exported functions: modules, records and their way out.
#include <atomic>
#include <chrono>
#include <memory>
#include <new>

#include "JsonLine.h"
#include "ModuleRegistry.h"

// A record between its creation and its end in OxTSendLog.
struct OxTLogRecord {
  OxTModuleRecord& module;
  uint32_t level;
  std::chrono::system_clock::time_point time;
  oxtelemetry::Attributes attributes;
};

namespace {

constexpr int32_t kOk = 0;
constexpr auto kInvalidArgument = static_cast<int32_t>(0x80000002);
constexpr auto kDropped = static_cast<int32_t>(0x80000003);
constexpr auto kOutOfMemory = static_cast<int32_t>(0x80000005);
constexpr auto kInvalidHandle = static_cast<int32_t>(0x8000001d);

constinit std::atomic<uint64_t> droppedLines{0};

// Set while a sink runs, so that failures inside the sink are not reported to it again.
constinit thread_local bool insideSink = false;

// Calls the sink. What it throws passes through.
void callSink(const OxTModuleRecord& module, const std::string& line) {
  struct Inside {
    Inside() { insideSink = true; }
    ~Inside() { insideSink = false; }
  } inside;
  module.sink(line.c_str(), line.size(), module.sinkUserData);
}

// Renders and delivers the record; false when the line could not be written.
bool deliver(const OxTLogRecord& record, const char* message) {
  OxTModuleRecord& module = record.module;
  std::string line = oxtelemetry::jsonLine(
      {record.time, module.name, module.version, record.level, message == nullptr ? "" : message, record.attributes});
  if (module.sink != nullptr) {
    callSink(module, line);
    return true;
  }
  line += '\n';
  return module.writer.write(line);
}

// Attaches one entry; false when it has no name or an unknown tag.
bool attach(oxtelemetry::Attributes& attributes, const OxTAttribute& entry) {
  if (entry.Name == nullptr) return false;
  switch (entry.Tag) {
    case OXT_TAG_STRING:
      if (entry.Value.String != nullptr) attributes.insert_or_assign(entry.Name, std::string(entry.Value.String));
      return true;
    case OXT_TAG_BOOLEAN: attributes.insert_or_assign(entry.Name, entry.Value.Boolean != 0); return true;
    case OXT_TAG_INTEGER: attributes.insert_or_assign(entry.Name, entry.Value.Integer); return true;
    case OXT_TAG_DOUBLE: attributes.insert_or_assign(entry.Name, entry.Value.Double); return true;
    default: return false;
  }
}

}  // namespace

int32_t OxTSetSink(OxTSink Sink, void* UserData, uint32_t Level) {
  oxtelemetry::setSink(Sink, UserData, Level);
  return kOk;
}

int32_t OxTGetModule(const char* Name, const char* Version, OxTModule* Module, OxTSettings* Settings) {
  if (Module != nullptr) *Module = nullptr;
  if (Settings == nullptr) return kInvalidArgument;
  const bool known = Settings->Revision == OXT_SETTINGS_REVISION;
  Settings->Enabled = OXT_DISABLED;
  Settings->Level = OXT_LEVEL_OFF;
  if (Module == nullptr || !known) return kInvalidArgument;
  try {
    OxTModuleRecord& module = oxtelemetry::getModule(Name, Version);
    Settings->Enabled = module.enabled() ? OXT_ENABLED : OXT_DISABLED;
    Settings->Level = module.level;
    *Module = &module;
    return kOk;
  } catch (...) {
    return kOutOfMemory;
  }
}

int32_t OxTCreateLog(OxTModule Module, uint32_t Level, OxTLog* Log) {
  if (Log == nullptr) return kInvalidArgument;
  *Log = nullptr;
  if (!oxtelemetry::isModule(Module)) return kInvalidHandle;
  if (Level < Module->level || Level >= OXT_LEVEL_OFF || insideSink) return kOk;
  *Log = new (std::nothrow) OxTLogRecord{*Module, Level, std::chrono::system_clock::now(), {}};
  if (*Log != nullptr) return kOk;
  droppedLines.fetch_add(1, std::memory_order_relaxed);
  return kOutOfMemory;
}

int32_t OxTAttributeMapStore(OxTLog Log, const OxTAttribute* Entries, size_t Count) {
  if (Log == nullptr || (Entries == nullptr && Count > 0)) return kInvalidArgument;
  int32_t status = kOk;
  try {
    for (size_t i = 0; i < Count; ++i)
      if (!attach(Log->attributes, Entries[i])) status = kInvalidArgument;
  } catch (...) {
    return kOutOfMemory;
  }
  return status;
}

int32_t OxTSendLog(OxTLog Log, const char* Message) {
  if (Log == nullptr) return kInvalidArgument;
  const std::unique_ptr<OxTLogRecord> record(Log);
  bool delivered = false;
  try {
    delivered = deliver(*record, Message);
  } catch (...) {
    // No memory for the line, or the sink threw: the line is lost, the caller's call goes on.
  }
  if (delivered) return kOk;
  droppedLines.fetch_add(1, std::memory_order_relaxed);
  return kDropped;
}

uint64_t OxTDroppedLineCount(void) { return droppedLines.load(std::memory_order_relaxed); }
