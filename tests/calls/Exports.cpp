// Every export, how it is called, and how its result is judged.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <mutex>

#include "calls/Caller.h"

namespace calls {
namespace {

enum Flags : unsigned {
  kBuffersFirst = 1,   // looks at some arguments before the handle
  kSizeMayBeNull = 2,  // its size may be missing
  kQuietFailure = 4,   // some failures leave the last error alone
  kAlone = 8,          // needs the node map for itself
  kTouchesError = 16,  // passes over problems that are told through the last error
  kNoHandle = 32,      // takes none
  kRegisters = 64,     // gives out a registration
  kIsTest = 128,       // answers a question instead of giving a code
  kLoads = 256,        // makes new nodes with a new lock
  kNoRecord = 512,     // its failures leave no record
};

constexpr uint32_t kKnownCodes[] = {OXGENAPI_E_UNSPECIFIED,       OXGENAPI_E_INVALID_ARGUMENT, OXGENAPI_E_RUNTIME,
                                    OXGENAPI_E_OUT_OF_MEMORY,     OXGENAPI_E_NOT_READABLE,     OXGENAPI_E_NOT_WRITABLE,
                                    OXGENAPI_E_ACCESS_DENIED,     OXGENAPI_E_UPLOAD_FAILED,    OXGENAPI_E_NOT_SUPPORTED,
                                    OXGENAPI_E_DEVICE_FILE,       OXGENAPI_E_INVALID_HANDLE,   OXGENAPI_E_INVALID_STATE,
                                    OXGENAPI_E_EXPIRED,           OXGENAPI_E_NOT_PRESENT,      OXGENAPI_E_FEATURE_TYPE,
                                    OXGENAPI_E_INVALIDATE_FAILED, OXGENAPI_E_FIRMWARE_INDEX};

constexpr uint32_t kNoErrorYet = 0x12345678;

std::string lastError(uint32_t& code) {
  char text[128];
  size_t size = sizeof text;
  OxGetLastError(&code, text, &size);
  return text;
}

}  // namespace

// Text parameters, in order: p path, x description, s settings, n name or names.
struct Exports {
  struct Entry {
    const char* name;
    uint32_t (*call)(Caller& caller, Caller::Frame& frame);
    const char* texts = "";
    unsigned flags = 0;
  };

  static uint8_t byte(Caller& c) { return c.bytes_.next(); }

  // A buffer for bytes, sometimes null, and how many it has.
  static uint8_t* buffer(Caller& c, Caller::Frame& f, int64_t& size) {
    const uint8_t choice = byte(c);
    size = choice % 80;
    if (choice >= 0xf0) {
      size = c.number();
      return nullptr;
    }
    if (choice >= 0xe8) size = 0;
    auto& bytes = f.bytes.emplace_back(static_cast<size_t>(size) + (size == 0), uint8_t{0x5a});
    if (choice >= 0xe0 && choice < 0xe8) size = -size - 1;
    return bytes.data();
  }

  template <class Character>
  static const Character* name(Caller& c, Caller::Frame& f) {
    return c.argument(f, Caller::Wanted<const Character*>{});
  }
  static NODE node(Caller& c, Caller::Frame& f) { return c.argument(f, Caller::Wanted<NODE>{}); }
  static NODEMAP map(Caller& c, Caller::Frame& f) { return c.argument(f, Caller::Wanted<NODEMAP>{}); }
  static World::Place* place(Caller& c) { return (byte(c) & 3) == 0 ? &c.world_.camera : &c.world_.memory; }

  template <class Character>
  static uint32_t connect(Caller& c, Caller::Frame& f,
                          uint32_t (*function)(NODEMAP, TReadMem, TWriteMem, TPortAccessMode, void*,
                                               const Character*)) {
    const NODEMAP handle = map(c, f);
    const auto read = c.argument(f, Caller::Wanted<TReadMem>{});
    const auto write = c.argument(f, Caller::Wanted<TWriteMem>{});
    const auto mode = c.argument(f, Caller::Wanted<TPortAccessMode>{});
    World::Place* const user = place(c);
    return function(handle, read, write, mode, user, name<Character>(c, f));
  }

  static uint32_t connectDevice(Caller& c, Caller::Frame& f) {
    const NODEMAP handle = map(c, f);
    const auto read = c.argument(f, Caller::Wanted<TReadMem>{});
    return NMConnectPort(handle, read, &World::write, nullptr, place(c));
  }

  static uint32_t moveChunks(Caller& c, Caller::Frame& f) {
    const NODEMAP handle = map(c, f);
    return NMUpdateChunks(handle, byte(c) < 0x80 ? c.chunkBuffer(f) : nullptr);
  }

  static uint32_t deregister(Caller& c, Caller::Frame& f) {
    const NODE handle = node(c, f);
    const std::vector<int64_t>& known = c.registrations_;
    const uint8_t which = byte(c);
    return NDeregisterUpdate(handle, known.empty() || which >= 0xf0 ? c.number() : known[which % known.size()]);
  }

  template <class Character>
  static uint32_t upload(Caller& c, Caller::Frame& f,
                         uint32_t (*function)(NODEMAP, const Character*, const void*, size_t)) {
    const NODEMAP handle = map(c, f);
    const Character* const file = name<Character>(c, f);
    int64_t size = 0;
    const uint8_t* const data = buffer(c, f, size);
    return function(handle, file, data, data == nullptr || size >= 0 ? static_cast<size_t>(size) : 0);
  }

  template <class Character>
  static uint32_t download(Caller& c, Caller::Frame& f,
                           uint32_t (*function)(NODEMAP, const Character*, void*, size_t*)) {
    const NODEMAP handle = map(c, f);
    const Character* const file = name<Character>(c, f);
    int64_t size = 0;
    uint8_t* const data = buffer(c, f, size);
    size_t& room = f.sizes.emplace_back(data == nullptr || size >= 0 ? static_cast<size_t>(size) : 0);
    const bool hasSize = byte(c) < 0xf8;
    f.remember();
    return function(handle, file, data, hasSize ? &room : nullptr);
  }

  template <class Chunk>
  static uint32_t attach(Caller& c, Caller::Frame& f, std::vector<Chunk>& list,
                         uint32_t (*function)(NODEMAP, const Chunk*, size_t)) {
    const NODEMAP handle = map(c, f);
    const size_t count = byte(c) % 4;
    if (byte(c) >= 0xf8) return function(handle, nullptr, count);
    const Chunk* first = nullptr;
    for (size_t i = 0; i < count; ++i) first = c.argument(f, Caller::Wanted<const Chunk*>{});
    return function(handle, list.empty() ? nullptr : first - (count - 1), count);
  }

  static const Entry kAll[101];
};

#define CALL(name, ...)                                                                                \
  {                                                                                                    \
#name, [](Caller & c, Caller::Frame & f) { return c.invoke(f, &name); } __VA_OPT__(, ) __VA_ARGS__ \
  }
#define CALL_BY(name, how, ...)                                                                          \
  {                                                                                                      \
#name, []([[maybe_unused]] Caller & c,                                                               \
              [[maybe_unused]] Caller::Frame & f) -> uint32_t { return how; } __VA_OPT__(, ) __VA_ARGS__ \
  }

const Exports::Entry Exports::kAll[101] = {
    CALL_BY(CreateNodeMap, c.invoke(f, &CreateNodeMap), "", kNoHandle),
    CALL(CreateNodeMapProxy),
    CALL_BY(IsNodeMap, IsNodeMap(map(c, f)), "", kIsTest),
    CALL(NMLoadXMLFile, "p", kAlone | kLoads),
    CALL(NMLoadXMLFileW, "p", kAlone | kLoads),
    CALL(NMLoadXMLString, "x", kAlone | kLoads),
    CALL(NMLoadXMLStringW, "x", kAlone | kLoads),
    CALL_BY(NMLoadXML, NMLoadXML(map(c, f), 1), "", kBuffersFirst),
    CALL_BY(NMConnectRegisterPort, NMConnectRegisterPort(map(c, f), 1), "", kBuffersFirst),
    CALL_BY(NMConnectMultiRegisterPort, NMConnectMultiRegisterPort(map(c, f), 1), "", kBuffersFirst),
    CALL(NMNodeCount),
    CALL(NMGetNode),
    CALL(NMGetNodeW),
    CALL(NMListNode),
    CALL(NMListNodeW),
    CALL(NMInfoAsBoolean),
    CALL(NMInfoAsInteger),
    CALL(NMInfoAsFloat),
    CALL(NMInfoAsString),
    CALL(NMInfoAsStringW),
    CALL(NMPollNodes),
    CALL_BY(NMConnectPort, connectDevice(c, f)),
    CALL_BY(NMConnectPortEx, connect(c, f, &NMConnectPortEx)),
    CALL_BY(NMConnectPortExW, connect(c, f, &NMConnectPortExW)),
    CALL(NMDeliverEvent),
    CALL(NMDeliverEventEx),
    CALL(NMDeliverEventExW),
    CALL(NMAttachChunk, "", kAlone),
    CALL(NMAttachChunkEx, "", kAlone),
    CALL(NMAttachChunkExW, "", kAlone),
    CALL_BY(NMAttachChunkList, attach(c, f, f.chunks, &NMAttachChunkList), "", kAlone | kBuffersFirst),
    CALL_BY(NMAttachChunkListEx, attach(c, f, f.chunksEx, &NMAttachChunkListEx), "", kAlone | kBuffersFirst),
    CALL_BY(NMAttachChunkListExW, attach(c, f, f.chunksExW, &NMAttachChunkListExW), "", kAlone | kBuffersFirst),
    CALL_BY(NMUpdateChunks, moveChunks(c, f), "", kAlone),
    CALL(NMDetachAllChunks, "", kAlone),
    CALL(NMLoadSet, "p", kTouchesError),
    CALL(NMLoadSetW, "p", kTouchesError),
    CALL(NMLoadSetEx, "p", kTouchesError),
    CALL(NMLoadSetExW, "p", kTouchesError),
    CALL(NMLoadSetString, "s", kTouchesError),
    CALL(NMLoadSetStringW, "s", kTouchesError),
    CALL(NMSaveSet, "p", kTouchesError),
    CALL(NMSaveSetW, "p", kTouchesError),
    CALL(NMSaveSetEx, "pn", kTouchesError),
    CALL(NMSaveSetExW, "pn", kTouchesError),
    CALL(NMSaveSetString, "", kTouchesError | kSizeMayBeNull),
    CALL(NMSaveSetStringW, "", kTouchesError | kSizeMayBeNull),
    CALL(NMSaveSetStringEx, "", kTouchesError | kSizeMayBeNull),
    CALL(NMSaveSetStringExW, "", kTouchesError | kSizeMayBeNull),
    CALL(NMCreateStream),
    CALL(NMUploadFile, "np", kAlone),
    CALL(NMUploadFileW, "np", kAlone),
    CALL_BY(NMUploadFileMemory, upload(c, f, &NMUploadFileMemory), "", kAlone | kBuffersFirst),
    CALL_BY(NMUploadFileMemoryW, upload(c, f, &NMUploadFileMemoryW), "", kAlone | kBuffersFirst),
    CALL(NMDownloadFile, "np", kAlone | kQuietFailure),
    CALL(NMDownloadFileW, "np", kAlone | kQuietFailure),
    CALL_BY(NMDownloadFileMemory, download(c, f, &NMDownloadFileMemory), "", kAlone | kBuffersFirst | kQuietFailure),
    CALL_BY(NMDownloadFileMemoryW, download(c, f, &NMDownloadFileMemoryW), "", kAlone | kBuffersFirst | kQuietFailure),
    CALL_BY(IsNode, IsNode(node(c, f)), "", kIsTest),
    CALL(NType),
    CALL(NGetAsBoolean),
    CALL(NGetAsInteger),
    CALL(NGetAsFloat),
    CALL(NGetAsString),
    CALL(NGetAsStringW),
    CALL(NSetAsBoolean),
    CALL(NSetAsInteger),
    CALL(NSetAsFloat),
    CALL(NSetAsString),
    CALL(NSetAsStringW),
    CALL(NInfoAsBoolean),
    CALL(NInfoAsInteger),
    CALL(NInfoAsFloat),
    CALL(NInfoAsString),
    CALL(NInfoAsStringW),
    CALL(NInfoEnum),
    CALL(NInfoEnumW),
    CALL(NListCount),
    CALL(NList),
    CALL(NListW),
    {"NGetAsMemory",
     [](Caller& c, Caller::Frame& f) {
       const NODE handle = node(c, f);
       int64_t size = 0;
       uint8_t* const data = buffer(c, f, size);
       const int64_t address = c.number();
       f.remember();
       return NGetAsMemory(handle, address, data, size);
     }},
    {"NSetAsMemory",
     [](Caller& c, Caller::Frame& f) {
       const NODE handle = node(c, f);
       int64_t size = 0;
       const uint8_t* const data = buffer(c, f, size);
       return NSetAsMemory(handle, c.number(), data, size);
     }},
    {"NGetAsRegisterData",
     [](Caller& c, Caller::Frame& f) {
       const NODE handle = node(c, f);
       int64_t& size = f.integers.emplace_back();
       uint8_t* const data = buffer(c, f, size);
       f.remember();
       return NGetAsRegisterData(handle, data, &size);
     }},
    CALL(NRegisterUpdate, "", kRegisters),
    CALL_BY(NDeregisterUpdate, deregister(c, f)),
    CALL(NInvalidate),
    CALL(NGetVerifyMode),
    CALL(NSetVerifyMode),
    CALL(NMStreamPush),
    CALL(NMStreamDump, "", kSizeMayBeNull),
    CALL(NMStreamDumpW, "", kSizeMayBeNull),
    CALL(CreateFirmwareUpdater, "p", kNoHandle | kNoRecord),
    CALL(CreateFirmwareUpdaterW, "p", kNoHandle | kNoRecord),
    CALL(FWUpdateFileCount),
    CALL(FWUpdateFileInfoCount),
    CALL(FWUpdateFileInfo, "", kSizeMayBeNull),
    CALL(FWUpdateFileInfoW, "", kSizeMayBeNull),
    CALL(FWUpdate, "", kAlone),
    CALL(GetGenApiVersion, "", kNoHandle),
    CALL_BY(Resource_GetFileVersion,
            (Resource_GetFileVersion(&f.counts.emplace_back(), &f.counts.emplace_back(), &f.counts.emplace_back()), 0),
            "", kNoHandle),
    CALL_BY(Resource_GetOriginalFileName, Resource_GetOriginalFileName() == nullptr, "", kNoHandle),
};

size_t* Caller::argument(Frame& frame, Wanted<size_t*>) {
  if ((frame.flags & kSizeMayBeNull) != 0 && bytes_.next() >= 0xf8) return nullptr;
  return &frame.sizes.emplace_back(frame.room);
}

// Payloads and chunks.

const TEventData* Caller::argument(Frame& frame, Wanted<const TEventData*>) {
  int64_t size = 0;
  const uint8_t* const data = Exports::buffer(*this, frame, size);
  frame.event = {static_cast<uint64_t>(number()), data, data != nullptr && size >= 0 ? static_cast<uint64_t>(size) : 0};
  return &frame.event;
}

const TEventDataEx* Caller::argument(Frame& frame, Wanted<const TEventDataEx*>) {
  const TEventData& event = *argument(frame, Wanted<const TEventData*>{});
  const char* const id = argument(frame, Wanted<const char*>{});
  return &frame.events.emplace_back(TEventDataEx{id, event.pBuffer, event.BufferSize});
}

const TEventDataExW* Caller::argument(Frame& frame, Wanted<const TEventDataExW*>) {
  const TEventData& event = *argument(frame, Wanted<const TEventData*>{});
  frame.eventW = {argument(frame, Wanted<const wchar_t*>{}), event.pBuffer, event.BufferSize};
  return &frame.eventW;
}

uint8_t* Caller::chunkBuffer(const Frame& frame) {
  constexpr size_t kBuffers = 6;
  auto& buffers = frame.group < 0 ? shared_->chunkBuffers : chunkBuffers_;
  if (buffers.empty()) buffers.resize(kBuffers, std::vector<uint8_t>(kChunkBufferBytes, 'c'));
  return buffers[bytes_.next() % kBuffers].data();
}

// All buffers have the same size, so that a layout fits each of them.
const TChunkData* Caller::argument(Frame& frame, Wanted<const TChunkData*>) {
  frame.chunks.reserve(4);
  const uint8_t choice = bytes_.next();
  TChunkData& chunk = frame.chunks.emplace_back();
  chunk.ChunkID = choice < 0x80 ? 0xa1 + choice % 2 : static_cast<uint64_t>(number());
  chunk.pBase = (choice & 0x70) == 0x70 ? nullptr : chunkBuffer(frame);
  chunk.ChunkOffset = bytes_.next() % kChunkBufferBytes;
  chunk.ChunkLength = bytes_.next() % (static_cast<int64_t>(kChunkBufferBytes) - chunk.ChunkOffset + 1);
  const uint8_t twist = bytes_.next();
  if (twist >= 0xf8) chunk.ChunkOffset = -chunk.ChunkOffset - 1;
  if (twist >= 0xf0 && twist < 0xf8) chunk.ChunkLength = -chunk.ChunkLength;
  return &chunk;
}

const TChunkDataEx* Caller::argument(Frame& frame, Wanted<const TChunkDataEx*>) {
  frame.chunksEx.reserve(4);
  const TChunkData& chunk = *argument(frame, Wanted<const TChunkData*>{});
  const char* const id = chunk.ChunkID == 0xa1 ? "a1" : argument(frame, Wanted<const char*>{});
  return &frame.chunksEx.emplace_back(TChunkDataEx{id, chunk.pBase, chunk.ChunkOffset, chunk.ChunkLength});
}

const TChunkDataExW* Caller::argument(Frame& frame, Wanted<const TChunkDataExW*>) {
  frame.chunksExW.reserve(4);
  const TChunkData& chunk = *argument(frame, Wanted<const TChunkData*>{});
  const wchar_t* const id = chunk.ChunkID == 0xa1 ? L"a1" : argument(frame, Wanted<const wchar_t*>{});
  return &frame.chunksExW.emplace_back(TChunkDataExW{id, chunk.pBase, chunk.ChunkOffset, chunk.ChunkLength});
}

void Caller::judge(const Frame& frame, const char* name, uint32_t result, bool undisturbed) const {
  const auto require = [&](bool holds, const char* promise) {
    if (holds) return;
    uint32_t code = 0;
    const std::string text = lastError(code);
    std::fprintf(stderr, "broken promise: %s gave 0x%08x, last error 0x%08x \"%s\": %s\n", name, result, code,
                 text.c_str(), promise);
    std::abort();
  };
  uint32_t code = 0;
  const std::string text = lastError(code);
  if ((frame.flags & kIsTest) != 0) {
    require(!undisturbed || code == kNoErrorYet, "tests of handles set no error");
    require(frame.refusal == nullptr || result == 0, "what is no handle is told so");
    return;
  }
  if (result == OXGENAPI_OK) {
    require(!undisturbed || (frame.flags & kTouchesError) != 0 || code == kNoErrorYet,
            "success leaves the last error alone");
  } else {
    require(std::ranges::count(kKnownCodes, result) == 1, "the code is a known one");
    const bool isQuiet =
        (frame.flags & kQuietFailure) != 0 && (result == OXGENAPI_E_DEVICE_FILE || result == OXGENAPI_E_UNSPECIFIED);
    require(isQuiet || code == result, "the last error carries the result");
    require(isQuiet || !text.empty(), "a failure has a text");
    const bool mayNameFeature = (frame.flags & kTouchesError) != 0;
    require(result != OXGENAPI_E_OUT_OF_MEMORY || text == "Unspecified error" ||
                (mayNameFeature && text.ends_with(": Unspecified error")),
            "memory failures have their text");
  }
  if (frame.refusal == nullptr || (frame.flags & kNoHandle) != 0) return;
  require(!frame.before || *frame.before == frame, "a refused call leaves its outputs alone");
  require(frame.type == (std::string_view(name) == "NType" ? NT_Invalid : NT_Float), "what is no node has no type");
  if ((frame.flags & kBuffersFirst) != 0 && result != OXGENAPI_E_INVALID_HANDLE) {
    require(result != OXGENAPI_OK, "what is no handle is refused");
    return;
  }
  require(result == OXGENAPI_E_INVALID_HANDLE && (frame.isUncertain || text == frame.refusal),
          "what is no handle is refused as such");
}

void Caller::judgeReports(const Frame& frame, const char* name, uint32_t result, Reports before) {
  const Reports now = reports();
  const int64_t lastErrors = now.lastErrors - before.lastErrors, records = now.records - before.records;
  const bool failed = result != OXGENAPI_OK && (frame.flags & kIsTest) == 0;
  const bool passesProblems = (frame.flags & kTouchesError) != 0;
  const int64_t least = failed && (frame.flags & kQuietFailure) == 0 ? 1 : 0;
  const bool holds = lastErrors >= least && (passesProblems || lastErrors <= (failed ? 1 : 0));
  if (holds && records == (failed && (frame.flags & kNoRecord) == 0 ? 1 : 0)) return;
  std::fprintf(stderr, "broken promise: %s gave 0x%08x, set %lld last errors and sent %lld records\n", name, result,
               static_cast<long long>(lastErrors), static_cast<long long>(records));
  std::abort();
}

uint32_t Caller::call(size_t number) {
  const Exports::Entry& entry = Exports::kAll[number % std::size(Exports::kAll)];
  if (shared_ != nullptr && depth_ > 1 && (entry.flags & kAlone) != 0) return 0;
  std::unique_lock<std::shared_mutex> alone;
  std::shared_lock<std::shared_mutex> together;
  if (shared_ != nullptr && depth_ <= 1) {
    if ((entry.flags & kAlone) != 0)
      alone = std::unique_lock(shared_->rule);
    else
      together = std::shared_lock(shared_->rule);
  }
  ++calls_;
  Frame frame;
  frame.texts = entry.texts;
  frame.flags = entry.flags;
  OxSetLastError(kNoErrorYet, "no error yet");
  const int64_t before = callbacks_;
  const int enteredBefore = entered_;
  const Reports reported = reports != nullptr ? reports() : Reports{};
  const uint32_t result = entry.call(*this, frame);
  judge(frame, entry.name, result, callbacks_ == before);
  if (reports != nullptr && entered_ == enteredBefore) judgeReports(frame, entry.name, result, reported);
  if (result == OXGENAPI_OK && (entry.flags & kRegisters) != 0) registrations_.push_back(frame.integers.front());
  if (result == OXGENAPI_OK && (entry.flags & kLoads) != 0 && frame.group < 0) ++shared_->loads;
  keep(frame);
  return result;
}

int Caller::refuseEverywhere(OxHandle value, std::optional<Kind> own) {
  forced_ = &value;
  own_ = own;
  int refused = 0;
  for (size_t i = 0; i < std::size(Exports::kAll); ++i) {
    if ((Exports::kAll[i].flags & kNoHandle) != 0) continue;
    try {
      const uint32_t result = call(i);
      if ((Exports::kAll[i].flags & kIsTest) != 0 ? result == 0 : result != OXGENAPI_OK) ++refused;
    } catch (const Accepted&) {
      continue;
    }
  }
  forced_ = nullptr;
  own_.reset();
  return refused;
}

}  // namespace calls
