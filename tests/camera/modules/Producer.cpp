// A producer of GenTL with one camera, which breaks the rules that producerBehaves() names, separated by spaces, or at
// first the environment variable OX_TEST_PRODUCER: FUNCTION=CODE lets a function fail; the other words stand in the
// code below.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#define GENTL_FUNCTION __attribute__((visibility("default"))) GC_ERROR
#include <GenTL.h>

namespace {

std::mutex wordsMutex;
std::string& words() {
  static std::string words = std::getenv("OX_TEST_PRODUCER") == nullptr ? "" : std::getenv("OX_TEST_PRODUCER");
  return words;
}

// What the test wants; "word" or "word=value".
std::string fault(const std::string& word) {
  const std::lock_guard lock(wordsMutex);
  const std::string all = " " + words() + " ";
  if (all.find(" " + word + " ") != all.npos) return "1";
  const size_t at = all.find(" " + word + "=");
  if (at == all.npos) return {};
  const size_t start = at + word.size() + 2;
  return all.substr(start, all.find(' ', start) - start);
}
bool is(const std::string& word) { return !fault(word).empty(); }
GC_ERROR begin(const char* function) {
  const std::string code = fault(function);
  return code.empty() ? GC_ERR_SUCCESS : std::atoi(code.c_str());
}
#define BEGIN \
  if (const GC_ERROR code = begin(__func__); code != GC_ERR_SUCCESS) return code

constexpr uint64_t kXml = 0x10000;
const char* const kDescription =
    R"(<?xml version="1.0"?><RegisterDescription ModelName="Producer" VendorName="Test" StandardNameSpace="None"
 SchemaMajorVersion="1" SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0"
 SubMinorVersion="0" ProductGuid="1" VersionGuid="2" xmlns="http://www.genicam.org/GenApi/Version_1_1">
<Category Name="Root"><pFeature>Width</pFeature></Category>
<Integer Name="Width"><pValue>WidthReg</pValue></Integer>
<IntReg Name="WidthReg"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Endianess>LittleEndian</Endianess></IntReg>
<IntSwissKnife Name="PayloadSize"><pVariable Name="W">Width</pVariable><Formula>W * 4</Formula></IntSwissKnife>
<Integer Name="TLParamsLocked"><Value>0</Value></Integer>
<Command Name="AcquisitionStart"><pValue>Run</pValue><CommandValue>1</CommandValue></Command>
<Command Name="AcquisitionStop"><pValue>Run</pValue><CommandValue>0</CommandValue></Command>
<Command Name="Fire"><pValue>FireReg</pValue><CommandValue>1</CommandValue></Command>
<IntReg Name="Run"><Address>8</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Endianess>LittleEndian</Endianess></IntReg>
<IntReg Name="FireReg"><Address>16</Address><Length>4</Length><AccessMode>WO</AccessMode><pPort>Device</pPort><Endianess>LittleEndian</Endianess></IntReg>
<IntReg Name="Told"><Address>0</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>EventPort</pPort><Endianess>LittleEndian</Endianess></IntReg>
<Port Name="EventPort"><EventID>9001</EventID></Port><Port Name="Device"/></RegisterDescription>)";

struct Buffer {
  uint8_t* data;
  size_t size;
  void* user;
  uint64_t id = 0;
};

struct World {
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<uint8_t> memory;
  std::vector<Buffer*> announced;
  std::deque<Buffer*> queued, filled;
  uint64_t frames = 0, killed = 0, events = 0;
  bool running = false, opened = false;
  World() : memory(kXml + std::strlen(kDescription)) {
    memory[0] = 16;
    std::memcpy(memory.data() + kXml, kDescription, std::strlen(kDescription));
  }
} world;

int handles[6];  // system, interface, device, port, stream, event of the camera
void* const kSystem = &handles[0];
void* const kInterface = &handles[1];
void* const kDevice = &handles[2];
void* const kPort = &handles[3];
void* const kStream = &handles[4];
void* const kMessages = &handles[5];
void* const kBuffers = &world;

GC_ERROR give(const void* data, size_t length, INFO_DATATYPE kind, INFO_DATATYPE* type, void* buffer, size_t* size) {
  if (size == nullptr) return GC_ERR_INVALID_PARAMETER;
  if (type != nullptr) *type = kind;
  if (buffer == nullptr) return *size = is("hugesize") ? SIZE_MAX / 2 : length, GC_ERR_SUCCESS;
  if (*size < length) return is("oldsmall") ? GC_ERR_INVALID_PARAMETER : GC_ERR_BUFFER_TOO_SMALL;
  std::memcpy(buffer, data, length);
  *size = is("moresize") ? *size + 100 : length;
  return GC_ERR_SUCCESS;
}
GC_ERROR give(const std::string& text, INFO_DATATYPE* type, void* buffer, size_t* size) {
  return give(text.c_str(), text.size() + (is("noend") ? 0 : 1), INFO_DATATYPE_STRING, type, buffer, size);
}
GC_ERROR give(uint64_t number, INFO_DATATYPE* type, void* buffer, size_t* size) {
  return give(&number, sizeof number, INFO_DATATYPE_UINT64, type, buffer, size);
}

void hang() {
  while (is("hang")) std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void producerBehaves(const char* as) {
  const std::lock_guard lock(wordsMutex);
  words() = as;
}

GC_ERROR GCInitLib() {
  BEGIN;
  return is("shared") ? GC_ERR_RESOURCE_IN_USE : GC_ERR_SUCCESS;
}
GC_ERROR GCCloseLib() {
  BEGIN;
  return GC_ERR_SUCCESS;
}
GC_ERROR GCGetLastError(GC_ERROR* code, char* text, size_t* size) {
  if (code != nullptr) *code = GC_ERR_ERROR;
  return give(std::string("the producer's own words"), nullptr, text, size);
}
GC_ERROR GCReadPort(PORT_HANDLE, uint64_t address, void* buffer, size_t* size) {
  BEGIN;
  if (address > world.memory.size() || *size > world.memory.size() - address) return GC_ERR_INVALID_ADDRESS;
  const std::lock_guard lock(world.mutex);
  std::memcpy(buffer, world.memory.data() + address, *size);
  if (is("short")) --*size;
  return GC_ERR_SUCCESS;
}
GC_ERROR GCWritePort(PORT_HANDLE, uint64_t address, const void* buffer, size_t* size) {
  BEGIN;
  if (address > kXml || *size > kXml - address) return GC_ERR_INVALID_ADDRESS;
  const std::lock_guard lock(world.mutex);
  std::memcpy(world.memory.data() + address, buffer, *size);
  if (address == 16) ++world.events;
  world.changed.notify_all();
  return GC_ERR_SUCCESS;
}
GC_ERROR GCGetNumPortURLs(PORT_HANDLE, uint32_t* count) {
  BEGIN;
  *count = is("manyurls") ? UINT32_MAX : 2;
  return 0;
}
GC_ERROR GCGetPortURLInfo(PORT_HANDLE, uint32_t index, URL_INFO_CMD item, INFO_DATATYPE* type, void* buffer,
                          size_t* size) {
  BEGIN;
  char url[80];
  std::snprintf(url, sizeof url, "Local:///Test.xml;%llX;%zx?SchemaVersion=1.1.0",
                static_cast<unsigned long long>(kXml), std::strlen(kDescription));
  const std::string chosen = fault("url");
  if (item == URL_INFO_URL) return give(index == 1 ? chosen.empty() ? url : chosen : "http://[", type, buffer, size);
  if (item == URL_INFO_SCHEMA_VER_MAJOR) return give(uint64_t{index == 1}, type, buffer, size);
  return GC_ERR_NOT_AVAILABLE;
}
GC_ERROR GCGetPortURL(PORT_HANDLE, char* url, size_t* size) {
  BEGIN;
  INFO_DATATYPE type = 0;
  size_t length = 200;
  char text[200];
  GCGetPortURLInfo(kPort, 1, URL_INFO_URL, &type, text, &length);
  return give(std::string(text), &type, url, size);
}
GC_ERROR GCRegisterEvent(EVENTSRC_HANDLE source, EVENT_TYPE type, EVENT_HANDLE* event) {
  BEGIN;
  *event = type == EVENT_NEW_BUFFER && source == kStream      ? kBuffers
           : type == EVENT_REMOTE_DEVICE && source == kDevice ? kMessages
                                                              : nullptr;
  return GC_ERR_SUCCESS;
}
GC_ERROR GCUnregisterEvent(EVENTSRC_HANDLE, EVENT_TYPE) {
  BEGIN;
  return GC_ERR_SUCCESS;
}
GC_ERROR EventGetData(EVENT_HANDLE event, void* buffer, size_t* size, uint64_t timeout) {
  BEGIN;
  std::unique_lock lock(world.mutex);
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout);
  const uint64_t killed = world.killed;
  do {
    if (world.killed != killed) return GC_ERR_ABORT;
    if (event == kMessages && world.events > 0) {
      --world.events;
      const uint32_t message[] = {9001, 77};
      return give(message, sizeof message, INFO_DATATYPE_BUFFER, nullptr, buffer, size);
    }
    if (event == kBuffers && world.running && world.memory[8] != 0 && !world.queued.empty() && !is("never")) {
      Buffer* const filled = world.queued.front();
      if (!is("twice") || world.frames % 2 == 1) world.queued.pop_front();
      filled->id = ++world.frames;
      std::memset(filled->data, static_cast<int>(filled->id), filled->size);
      world.changed.wait_for(lock, std::chrono::milliseconds(2));
      EVENT_NEW_BUFFER_DATA data{is("foreign") ? static_cast<void*>(&handles[0]) : filled, filled->user};
      return give(&data, sizeof data, INFO_DATATYPE_BUFFER, nullptr, buffer, size);
    }
  } while (world.changed.wait_until(lock, end) == std::cv_status::no_timeout);
  return GC_ERR_TIMEOUT;
}
GC_ERROR EventGetDataInfo(EVENT_HANDLE, const void* in, size_t, EVENT_DATA_INFO_CMD item, INFO_DATATYPE* type,
                          void* out, size_t* size) {
  BEGIN;
  if (item == EVENT_DATA_ID) return give(std::string("9001"), type, out, size);
  if (item == EVENT_DATA_VALUE)
    return give(static_cast<const uint8_t*>(in) + 4, 4, INFO_DATATYPE_BUFFER, type, out, size);
  return GC_ERR_NOT_AVAILABLE;
}
GC_ERROR EventKill(EVENT_HANDLE) {
  BEGIN;
  const std::lock_guard lock(world.mutex);
  ++world.killed;
  world.changed.notify_all();
  return GC_ERR_SUCCESS;
}
GC_ERROR TLOpen(TL_HANDLE* system) {
  if (is("crash")) std::abort();
  BEGIN;
  *system = is("nohandle") ? nullptr : kSystem;
  return GC_ERR_SUCCESS;
}
GC_ERROR TLClose(TL_HANDLE) {
  BEGIN;
  return GC_ERR_SUCCESS;
}
GC_ERROR TLUpdateInterfaceList(TL_HANDLE, bool8_t*, uint64_t) {
  BEGIN;
  hang();
  return GC_ERR_SUCCESS;
}
GC_ERROR TLGetNumInterfaces(TL_HANDLE, uint32_t* count) {
  BEGIN;
  *count = 1;
  return GC_ERR_SUCCESS;
}
GC_ERROR TLGetInterfaceID(TL_HANDLE, uint32_t, char* id, size_t* size) {
  BEGIN;
  return give(std::string("If"), nullptr, id, size);
}
GC_ERROR TLGetInterfaceInfo(TL_HANDLE, const char*, INTERFACE_INFO_CMD, INFO_DATATYPE* type, void* buffer,
                            size_t* size) {
  BEGIN;
  return give(std::string("Interface"), type, buffer, size);
}
GC_ERROR TLOpenInterface(TL_HANDLE, const char*, IF_HANDLE* interface) {
  BEGIN;
  *interface = kInterface;
  return 0;
}
GC_ERROR IFClose(IF_HANDLE) {
  BEGIN;
  return GC_ERR_SUCCESS;
}
GC_ERROR IFUpdateDeviceList(IF_HANDLE, bool8_t*, uint64_t) {
  BEGIN;
  return GC_ERR_SUCCESS;
}
GC_ERROR IFGetNumDevices(IF_HANDLE, uint32_t* count) {
  BEGIN;
  *count = is("many") ? UINT32_MAX : is("vanish") ? 2 : 1;
  return 0;
}
GC_ERROR IFGetDeviceID(IF_HANDLE, uint32_t index, char* id, size_t* size) {
  BEGIN;
  if (index > 0) return GC_ERR_INVALID_INDEX;
  return give(std::string("Camera"), nullptr, id, size);
}
GC_ERROR IFGetDeviceInfo(IF_HANDLE, const char*, DEVICE_INFO_CMD item, INFO_DATATYPE* type, void* buffer,
                         size_t* size) {
  BEGIN;
  switch (item) {
    case DEVICE_INFO_VENDOR: return give(std::string(is("binary") ? "Te\001st\377" : "Test"), type, buffer, size);
    case DEVICE_INFO_MODEL: return give(std::string("Model"), type, buffer, size);
    case DEVICE_INFO_SERIAL_NUMBER: return give(std::string("P1"), type, buffer, size);
    case DEVICE_INFO_TLTYPE: return give(std::string("U3V"), type, buffer, size);
    default: return GC_ERR_NOT_AVAILABLE;
  }
}
GC_ERROR IFOpenDevice(IF_HANDLE, const char*, DEVICE_ACCESS_FLAGS flags, DEV_HANDLE* device) {
  BEGIN;
  if (is("busy") && flags != DEVICE_ACCESS_READONLY) return GC_ERR_ACCESS_DENIED;
  *device = kDevice;
  return GC_ERR_SUCCESS;
}
GC_ERROR DevGetPort(DEV_HANDLE, PORT_HANDLE* port) {
  BEGIN;
  *port = kPort;
  return GC_ERR_SUCCESS;
}
GC_ERROR DevClose(DEV_HANDLE) {
  BEGIN;
  return GC_ERR_SUCCESS;
}
GC_ERROR DevGetInfo(DEV_HANDLE, DEVICE_INFO_CMD item, INFO_DATATYPE* type, void* buffer, size_t* size) {
  BEGIN;
  if (item == DEVICE_INFO_TIMESTAMP_FREQUENCY) return give(uint64_t{1000}, type, buffer, size);
  const int32_t status = DEVICE_ACCESS_STATUS_OPEN_READWRITE;
  return give(&status, sizeof status, INFO_DATATYPE_INT32, type, buffer, size);
}
GC_ERROR DevGetNumDataStreams(DEV_HANDLE, uint32_t* count) {
  BEGIN;
  *count = 1;
  return GC_ERR_SUCCESS;
}
GC_ERROR DevGetDataStreamID(DEV_HANDLE, uint32_t, char* id, size_t* size) {
  BEGIN;
  return give(std::string("S"), nullptr, id, size);
}
GC_ERROR DevOpenDataStream(DEV_HANDLE, const char*, DS_HANDLE* stream) {
  BEGIN;
  *stream = kStream;
  return 0;
}
GC_ERROR DSClose(DS_HANDLE) {
  BEGIN;
  return GC_ERR_SUCCESS;
}
GC_ERROR DSAnnounceBuffer(DS_HANDLE, void* data, size_t length, void* user, BUFFER_HANDLE* buffer) {
  BEGIN;
  const std::lock_guard lock(world.mutex);
  world.announced.push_back(new Buffer{static_cast<uint8_t*>(data), length, user});
  *buffer = world.announced.back();
  return GC_ERR_SUCCESS;
}
GC_ERROR DSQueueBuffer(DS_HANDLE, BUFFER_HANDLE buffer) {
  BEGIN;
  const std::lock_guard lock(world.mutex);
  world.queued.push_back(static_cast<Buffer*>(buffer));
  world.changed.notify_all();
  return GC_ERR_SUCCESS;
}
GC_ERROR DSStartAcquisition(DS_HANDLE, ACQ_START_FLAGS, uint64_t) {
  BEGIN;
  const std::lock_guard lock(world.mutex);
  world.running = true;
  world.frames = 0;
  return GC_ERR_SUCCESS;
}
GC_ERROR DSStopAcquisition(DS_HANDLE, ACQ_STOP_FLAGS) {
  const std::lock_guard lock(world.mutex);
  world.running = false;
  return begin(__func__);
}
GC_ERROR DSFlushQueue(DS_HANDLE, ACQ_QUEUE_TYPE) {
  const std::lock_guard lock(world.mutex);
  world.queued.clear();
  return begin(__func__);
}
GC_ERROR DSRevokeBuffer(DS_HANDLE, BUFFER_HANDLE buffer, void**, void**) {
  const std::lock_guard lock(world.mutex);
  std::erase(world.announced, static_cast<Buffer*>(buffer));
  delete static_cast<Buffer*>(buffer);
  return begin(__func__);
}
GC_ERROR DSGetInfo(DS_HANDLE, STREAM_INFO_CMD item, INFO_DATATYPE* type, void* buffer, size_t* size) {
  BEGIN;
  switch (item) {
    case STREAM_INFO_BUF_ANNOUNCE_MIN: return give(uint64_t{is("minimum") ? 100U : 1U}, type, buffer, size);
    case STREAM_INFO_DEFINES_PAYLOADSIZE: return give(uint64_t{is("payload")}, type, buffer, size);
    case STREAM_INFO_PAYLOAD_SIZE:
      return give(std::strtoull(fault("payload").c_str(), nullptr, 10), type, buffer, size);
    default: return GC_ERR_NOT_AVAILABLE;
  }
}
GC_ERROR DSGetBufferInfo(DS_HANDLE, BUFFER_HANDLE handle, BUFFER_INFO_CMD item, INFO_DATATYPE* type, void* buffer,
                         size_t* size) {
  BEGIN;
  const Buffer& about = *static_cast<Buffer*>(handle);
  const std::string chosen = fault("info" + std::to_string(item));
  if (!chosen.empty()) return give(std::strtoull(chosen.c_str(), nullptr, 10), type, buffer, size);
  switch (item) {
    case BUFFER_INFO_SIZE_FILLED:
      return give(uint64_t{is("larger") ? about.size + 4096 : about.size}, type, buffer, size);
    case BUFFER_INFO_IS_INCOMPLETE: return give(uint64_t{is("incomplete")}, type, buffer, size);
    case BUFFER_INFO_FRAMEID: return give(about.id, type, buffer, size);
    case BUFFER_INFO_TIMESTAMP: return give(about.id * 10, type, buffer, size);
    case BUFFER_INFO_WIDTH: return give(uint64_t{world.memory[0]}, type, buffer, size);
    case BUFFER_INFO_HEIGHT: return give(uint64_t{4}, type, buffer, size);
    case BUFFER_INFO_PIXELFORMAT: return give(uint64_t{0x01080001}, type, buffer, size);
    default: return GC_ERR_NOT_AVAILABLE;
  }
}
GC_ERROR DSGetNumBufferParts(DS_HANDLE, BUFFER_HANDLE, uint32_t* count) {
  *count = UINT32_MAX;
  return GC_ERR_SUCCESS;
}
