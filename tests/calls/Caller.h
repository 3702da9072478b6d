// Calls any export with arguments made from a stream of bytes, and judges what comes back: a known code, the same code
// as last error, a refusal of what is surely no handle, an untouched last error after success. A broken promise ends
// the program.
//
// Callbacks handed to the library call further exports out of the same stream, so everything re-enters everything.
// Pointers are valid or, where that is allowed, null; handles are anything.
#pragma once
#include <cstdint>
#include <cstring>
#include <list>
#include <optional>
#include <shared_mutex>
#include <string>
#include <tuple>
#include <vector>

#include "OxBase/OxBase.h"
#include "OxGenApi/OxGenApi.h"
#include "calls/World.h"

namespace calls {

// Where decisions come from; zeros when it has run dry.
class Bytes {
 public:
  virtual ~Bytes() = default;
  virtual bool empty() const = 0;
  virtual uint8_t next() = 0;
};

class SavedBytes final : public Bytes {
 public:
  SavedBytes(const uint8_t* data, size_t size) : at_(data), end_(data + size) {}
  bool empty() const override { return at_ == end_; }
  uint8_t next() override { return empty() ? uint8_t{0} : *at_++; }

 private:
  const uint8_t* at_;
  const uint8_t* end_;
};

// A handle and what it stands for.
enum class Kind { kNodeMap, kNode, kStream, kUpdater };
struct Handle {
  OxHandle value;
  Kind kind;
  int group;  // the node map it belongs to; of a node, the load, which has the lock
};

// Handles of one node map that several callers use. Calls that need a node map for themselves lock out all others
// meanwhile; a callback calls only into the load of the node map whose call it runs in, so that no two locks are ever
// taken in two orders.
struct Shared {
  static constexpr int kGroup = -1;  // nodes of later loads have lower numbers
  std::vector<Handle> handles;
  std::shared_mutex rule;
  int loads = 0;
  std::vector<std::vector<uint8_t>> chunkBuffers;  // what stays attached when a caller goes
};

// What the library has done so far on this thread, where a program stands in between and counts it.
struct Reports {
  int64_t lastErrors;  // set
  int64_t records;     // of errors, sent
};

class Caller {
 public:
  Caller(Bytes& bytes, World& world, Shared* shared = nullptr);
  // Gives everything back, then tries every handle again.
  ~Caller();
  Caller(const Caller&) = delete;
  Caller& operator=(const Caller&) = delete;

  // Calls one export, or does one of the other things a client does.
  void step();
  // Calls every export once, with this value wherever a handle is wanted; not those that want one of its own kind, if
  // it has one. Returns the number of calls refused.
  int refuseEverywhere(OxHandle value, std::optional<Kind> own = std::nullopt);
  int64_t calls() const { return calls_; }
  // Null, or how the judgement learns what a call has reported.
  static inline Reports (*reports)() = nullptr;

  static constexpr int kMaxDepth = 4;
  static constexpr int kMaxEntered = 24;  // callbacks that call, in one step
  static constexpr size_t kMaxHandles = 48;
  static constexpr size_t kChunkBufferBytes = 64;

 private:
  friend struct Exports;

  // What a call may write to; a handle's place tells zero from nothing.
  template <class Type>
  static Type untouched() {
    return reinterpret_cast<Type>(uintptr_t{4711});
  }
  struct Outputs {
    std::list<std::vector<uint8_t>> bytes;
    std::list<int64_t> integers;
    std::list<double> reals;
    std::list<size_t> sizes;
    std::list<uint32_t> counts;
    NODEMAP nodeMap = untouched<NODEMAP>();
    NODE node = untouched<NODE>();
    NODEMAPSTREAM stream = untouched<NODEMAPSTREAM>();
    FWUPDATER updater = untouched<FWUPDATER>();
    bool boolean = false;
    TVerifyMode verifyMode{};
    bool operator==(const Outputs&) const = default;
  };

  // What one call needs for its arguments.
  struct Frame : Outputs {
    const char* texts = "";         // what its text parameters are, in order; see Exports.cpp
    bool isUncertain = false;       // a handle may be dead
    const char* refusal = nullptr;  // the handle is surely none of the kind wanted
    unsigned flags = 0;             // of the export, see Exports.cpp
    int group = 0;                  // node map of the first handle
    size_t room = 0;                // elements of the buffer handed out last
    std::list<std::string> narrow;  // texts
    std::list<std::wstring> wide;
    std::list<TEventDataEx> events;
    TEventData event{};
    TEventDataExW eventW{};
    std::vector<TChunkData> chunks;
    std::vector<TChunkDataEx> chunksEx;
    std::vector<TChunkDataExW> chunksExW;
    TNodeType type = NT_Float;
    std::optional<Outputs> before;  // of a call that will surely be refused

    // All arguments are there: the call comes next.
    void remember() {
      if (refusal != nullptr) before = *this;
    }
  };

  // Thrown instead of a call that would accept the forced handle.
  struct Accepted {};

  template <class Type>
  struct Wanted {};

  // A call through the whole judgement.
  template <class... Parameters>
  uint32_t invoke(Frame& frame, uint32_t (*function)(Parameters...)) {
    // Braces keep the order of the arguments.
    std::tuple<Parameters...> arguments{argument(frame, Wanted<Parameters>{})...};
    frame.remember();
    return std::apply(function, arguments);
  }

  OxHandle pick(Frame& frame, Kind kind);
  int groupOf(const Handle& handle) const;
  OxHandle oddHandle();
  std::string text(char kind);
  std::string rawText();
  std::wstring wideText(char kind);
  int64_t number();
  uint8_t* chunkBuffer(const Frame& frame);

  NODEMAP argument(Frame& frame, Wanted<NODEMAP>) { return static_cast<NODEMAP>(pick(frame, Kind::kNodeMap)); }
  NODE argument(Frame& frame, Wanted<NODE>) { return static_cast<NODE>(pick(frame, Kind::kNode)); }
  NODEMAPSTREAM argument(Frame& frame, Wanted<NODEMAPSTREAM>) {
    return static_cast<NODEMAPSTREAM>(pick(frame, Kind::kStream));
  }
  FWUPDATER argument(Frame& frame, Wanted<FWUPDATER>) { return static_cast<FWUPDATER>(pick(frame, Kind::kUpdater)); }
  NODEMAP& argument(Frame& frame, Wanted<NODEMAP&>) { return frame.nodeMap; }
  NODEMAP* argument(Frame& frame, Wanted<NODEMAP*>) { return &frame.nodeMap; }
  NODE& argument(Frame& frame, Wanted<NODE&>) { return frame.node; }
  NODEMAPSTREAM* argument(Frame& frame, Wanted<NODEMAPSTREAM*>) { return &frame.stream; }
  FWUPDATER* argument(Frame& frame, Wanted<FWUPDATER*>) { return &frame.updater; }
  const char* argument(Frame& frame, Wanted<const char*>);
  const wchar_t* argument(Frame& frame, Wanted<const wchar_t*>);
  char* argument(Frame& frame, Wanted<char*>);
  wchar_t* argument(Frame& frame, Wanted<wchar_t*>);
  size_t& argument(Frame& frame, Wanted<size_t&>);
  size_t* argument(Frame& frame, Wanted<size_t*>);
  size_t argument(Frame& frame, Wanted<size_t>);
  int64_t argument(Frame&, Wanted<int64_t>) { return number(); }
  int32_t argument(Frame&, Wanted<int32_t>) { return static_cast<int32_t>(number()); }
  uint32_t argument(Frame&, Wanted<uint32_t>) { return static_cast<uint32_t>(number()); }
  double argument(Frame&, Wanted<double>);
  bool argument(Frame&, Wanted<bool>) { return (bytes_.next() & 1) != 0; }
  int64_t* argument(Frame& frame, Wanted<int64_t*>) { return &frame.integers.emplace_back(4711); }
  double* argument(Frame& frame, Wanted<double*>) { return &frame.reals.emplace_back(4711); }
  bool* argument(Frame& frame, Wanted<bool*>) { return &frame.boolean; }
  uint32_t& argument(Frame& frame, Wanted<uint32_t&>) { return frame.counts.emplace_back(4711); }
  uint32_t* argument(Frame& frame, Wanted<uint32_t*>) { return &frame.counts.emplace_back(4711); }
  TNodeType* argument(Frame& frame, Wanted<TNodeType*>) { return &frame.type; }
  TVerifyMode* argument(Frame& frame, Wanted<TVerifyMode*>) { return &frame.verifyMode; }
  void* argument(Frame&, Wanted<void*>) { return &world_; }  // user data of callbacks, which find their caller anyway
  TReadMem argument(Frame&, Wanted<TReadMem>) { return (bytes_.next() & 7) != 0 ? &World::read : nullptr; }
  TWriteMem argument(Frame&, Wanted<TWriteMem>) { return (bytes_.next() & 7) != 0 ? &World::write : nullptr; }
  TPortAccessMode argument(Frame&, Wanted<TPortAccessMode>) {
    return (bytes_.next() & 3) == 0 ? &World::accessMode : nullptr;
  }
  TReleaseNotify argument(Frame&, Wanted<TReleaseNotify>) { return (bytes_.next() & 1) != 0 ? &onRelease : nullptr; }
  TNodeUpdate argument(Frame&, Wanted<TNodeUpdate>) { return (bytes_.next() & 7) != 0 ? &onUpdate : nullptr; }
  TSettingsCallback argument(Frame&, Wanted<TSettingsCallback>) {
    return (bytes_.next() & 1) != 0 ? &onSettings : nullptr;
  }
  TFirmwareReset argument(Frame&, Wanted<TFirmwareReset>) { return (bytes_.next() & 3) != 0 ? &onReset : nullptr; }
  // Enumerations: mostly numbers that mean something.
  template <class Enumeration>
  requires std::is_enum_v<Enumeration> Enumeration argument(Frame&, Wanted<Enumeration>) {
    const uint8_t byte = bytes_.next();
    return static_cast<Enumeration>(byte < 0xf0 ? byte % 24 : static_cast<int32_t>(number()));
  }
  const TEventData* argument(Frame& frame, Wanted<const TEventData*>);
  const TEventDataEx* argument(Frame& frame, Wanted<const TEventDataEx*>);
  const TEventDataExW* argument(Frame& frame, Wanted<const TEventDataExW*>);
  const TChunkData* argument(Frame& frame, Wanted<const TChunkData*>);
  const TChunkDataEx* argument(Frame& frame, Wanted<const TChunkDataEx*>);
  const TChunkDataExW* argument(Frame& frame, Wanted<const TChunkDataExW*>);

  uint32_t call(size_t number);
  void keep(const Frame& frame);
  void judge(const Frame& frame, const char* name, uint32_t result, bool undisturbed) const;
  static void judgeReports(const Frame& frame, const char* name, uint32_t result, Reports before);
  void giveBack(size_t index);
  // Inside a callback: counts it, and calls something; throws at times if the callback may.
  void enter(bool mayThrow);

  static void onAccess();
  static void onRelease(void*);
  static void onUpdate(NODE node, void*);
  static bool onSettings(NODE node, uint32_t code, void*);
  static bool onReset(unsigned duration, unsigned delay, void*& newNodeMap, void*);

  Bytes& bytes_;
  World& world_;
  Shared* shared_;
  std::vector<Handle> live_;
  std::vector<Handle> dead_;
  std::vector<OxHandle> borrowed_;  // nodes lent to the callbacks that run at the moment
  std::vector<int64_t> registrations_;
  std::vector<std::vector<uint8_t>> chunkBuffers_;
  const OxHandle* forced_ = nullptr;
  std::optional<Kind> own_;  // of the forced handle
  int depth_ = 0;
  int group_ = 0;      // while depth_ is above 0: that of the outermost call
  int groups_ = 0;     // given out so far
  int enterRate_ = 0;  // every so many port accesses call something; 0: none
  int accesses_ = 0;
  int entered_ = 0;  // in this step
  bool ending_ = false;
  int64_t calls_ = 0;
  int64_t callbacks_ = 0;
};

}  // namespace calls
