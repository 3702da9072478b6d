#include "calls/Caller.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <new>
#include <stdexcept>

namespace calls {
namespace {

thread_local Caller* current = nullptr;

[[noreturn]] void broken(const char* promise, OxHandle handle) {
  std::fprintf(stderr, "broken promise: %s (handle %p)\n", promise, handle);
  std::abort();
}

const char* refusalOf(Kind kind) {
  constexpr const char* kTexts[] = {"Invalid NODEMAP handle", "Invalid NODE handle", "Invalid NODEMAPSTREAM handle",
                                    "Invalid FWUPDATER handle"};
  return kTexts[static_cast<size_t>(kind)];
}

}  // namespace

Caller::Caller(Bytes& bytes, World& world, Shared* shared) : bytes_(bytes), world_(world), shared_(shared) {
  current = this;
  world_.onAccess = &onAccess;
}

Caller::~Caller() {
  ending_ = true;
  while (!live_.empty()) giveBack(live_.size() - 1);
  // Whatever shared node map is left may keep a node of it alive; everything else has ended.
  for (const Handle& handle : dead_) {
    if (handle.group <= Shared::kGroup) continue;
    if (OxIfaceContainerReleaseUseCounter(handle.value) >= 0) broken("a dead handle cannot be released", handle.value);
    if (IsNode(static_cast<NODE>(handle.value))) broken("a dead handle is no node", handle.value);
    if (IsNodeMap(static_cast<NODEMAP>(handle.value))) broken("a dead handle is no node map", handle.value);
  }
  current = nullptr;
}

OxHandle Caller::oddHandle() {
  const uint8_t choice = bytes_.next();
  const auto some =
      live_.empty() ? uint64_t{0x7f0012345640} : std::bit_cast<uint64_t>(live_[choice % live_.size()].value);
  switch (choice % 6) {
    case 0: return nullptr;
    case 1:  // misaligned
      return std::bit_cast<OxHandle>(some + 1 + bytes_.next() % 63);
    case 2:  // the kernel's half
      return std::bit_cast<OxHandle>(some | (uint64_t{1} << 63));
    case 3: return std::bit_cast<OxHandle>(~uint64_t{0} - bytes_.next());
    case 4:  // an address of something else
      return this;
    default: {
      uint64_t value = 0;
      for (int i = 0; i < 8; ++i) value = value << 8 | bytes_.next();
      // A number made here must not be a handle by chance, or what it does could not be judged.
      return std::bit_cast<OxHandle>(value | 1);
    }
  }
}

int Caller::groupOf(const Handle& handle) const {
  const bool follows = handle.group == Shared::kGroup && handle.kind != Kind::kNode;
  return follows ? Shared::kGroup - shared_->loads : handle.group;
}

OxHandle Caller::pick(Frame& frame, Kind kind) {
  if (forced_ != nullptr) {
    if (frame.refusal == nullptr && kind == own_) throw Accepted();
    if (frame.refusal == nullptr) frame.refusal = refusalOf(kind);
    return *forced_;
  }
  const bool isFirst = frame.group == 0;
  const auto fits = [&](const Handle& handle) {
    return shared_ == nullptr || depth_ <= 1 || groupOf(handle) == group_;
  };
  const uint8_t choice = bytes_.next();
  const uint8_t which = bytes_.next();
  if (choice >= 0xf0) {
    if (frame.refusal == nullptr) frame.refusal = refusalOf(kind);
    return oddHandle();
  }
  if (choice >= 0xe8 && !dead_.empty() && fits(dead_[which % dead_.size()])) {
    if (frame.refusal == nullptr) frame.isUncertain = true;
    return dead_[which % dead_.size()].value;
  }
  if (choice >= 0xe0 && kind == Kind::kNode && !borrowed_.empty()) return borrowed_.back();
  // Another kind at times; what fits otherwise.
  std::vector<Handle> candidates;
  const bool foreign = choice >= 0xd8 && choice < 0xe0;
  const auto add = [&](const std::vector<Handle>& handles) {
    std::copy_if(handles.begin(), handles.end(), std::back_inserter(candidates), [&](const Handle& handle) {
      return (handle.kind == kind) != foreign && fits(handle) &&
             (shared_ == nullptr || isFirst || groupOf(handle) == frame.group);
    });
  };
  add(live_);
  if (shared_ != nullptr) add(shared_->handles);
  if (candidates.empty() || foreign) {
    if (frame.refusal == nullptr) frame.refusal = refusalOf(kind);
  }
  if (candidates.empty()) return nullptr;
  const Handle& chosen = candidates[which % candidates.size()];
  if (isFirst) frame.group = groupOf(chosen);
  if (depth_ == 1 && isFirst) group_ = frame.group;
  return chosen.value;
}

std::string Caller::rawText() {
  std::string text;
  for (uint8_t length = bytes_.next() % 64; length > 0 && !bytes_.empty(); --length)
    text += static_cast<char>(bytes_.next());
  return text.substr(0, text.find('\0'));
}

// p: a path, x: a description, s: settings; anything else: a name or a list of names.
std::string Caller::text(char kind) {
  const uint8_t choice = bytes_.next();
  if (kind != 'p' && choice == 0xff) return rawText();
  const std::vector<std::string>& words = kind == 'p'   ? World::files().paths()
                                          : kind == 'x' ? descriptions()
                                          : kind == 's' ? settings()
                                                        : names();
  // The first words, which are the most useful, come more often where there are few.
  if (words.size() < 20 && choice < 0x80) return words.front();
  return words[choice % words.size()];
}

const char* Caller::argument(Frame& frame, Wanted<const char*>) {
  const char kind = *frame.texts != '\0' ? *frame.texts++ : 'n';
  if (bytes_.next() == 0xff) return nullptr;
  return frame.narrow.emplace_back(text(kind)).c_str();
}

const wchar_t* Caller::argument(Frame& frame, Wanted<const wchar_t*>) {
  const char kind = *frame.texts != '\0' ? *frame.texts++ : 'n';
  const uint8_t flavour = bytes_.next();
  if (flavour == 0xff) return nullptr;
  std::wstring wide;
  for (const char c : text(kind)) wide += static_cast<unsigned char>(c);
  if (kind != 'p' && flavour >= 0xf0) wide += std::bit_cast<wchar_t>(static_cast<int32_t>(number()) | 1);
  return frame.wide.emplace_back(std::move(wide)).c_str();
}

// Buffers have exactly as many elements as they may be used for, so that a sanitizer sees one too many.
char* Caller::argument(Frame& frame, Wanted<char*>) {
  const uint8_t size = bytes_.next();
  frame.room = size % 80;
  if (size >= 0xe0) return nullptr;
  auto& buffer = frame.bytes.emplace_back(frame.room, uint8_t{0x5a});
  buffer.shrink_to_fit();
  static char none = 'n';
  return buffer.empty() ? &none : reinterpret_cast<char*>(buffer.data());
}

wchar_t* Caller::argument(Frame& frame, Wanted<wchar_t*>) {
  const uint8_t size = bytes_.next();
  frame.room = size % 80;
  if (size >= 0xe0) return nullptr;
  auto& buffer = frame.bytes.emplace_back(frame.room * sizeof(wchar_t), uint8_t{0x5a});
  static wchar_t none = L'n';
  return buffer.empty() ? &none : reinterpret_cast<wchar_t*>(buffer.data());
}

size_t& Caller::argument(Frame& frame, Wanted<size_t&>) { return frame.sizes.emplace_back(frame.room); }

size_t Caller::argument(Frame&, Wanted<size_t>) {
  const uint8_t choice = bytes_.next();
  return choice < 0xf0 ? choice % 4 : static_cast<size_t>(number());
}

int64_t Caller::number() {
  constexpr int64_t kEdges[] = {std::numeric_limits<int64_t>::min(),
                                std::numeric_limits<int64_t>::max(),
                                -1,
                                int64_t{1} << 31,
                                int64_t{1} << 32,
                                -(int64_t{1} << 31),
                                0xffffffff,
                                0x9001};
  const uint8_t choice = bytes_.next();
  if (choice < 0xc0) return choice & 0x7f;
  if (choice < 0xe0) return kEdges[choice % std::size(kEdges)];
  int64_t value = 0;
  for (int i = 0; i < 8; ++i) value = static_cast<int64_t>(static_cast<uint64_t>(value) << 8 | bytes_.next());
  return value;
}

double Caller::argument(Frame&, Wanted<double>) {
  const uint8_t choice = bytes_.next();
  if (choice < 0x80) return choice / 4.0;
  if (choice < 0xc0) return std::bit_cast<double>(number());
  constexpr double kEdges[] = {NAN, INFINITY, -INFINITY, 1e300, -1e300, 9223372036854775808.0, 1e-310, -0.0};
  return kEdges[choice % std::size(kEdges)];
}

void Caller::giveBack(size_t index) {
  const Handle handle = live_[index];
  live_.erase(live_.begin() + static_cast<std::ptrdiff_t>(index));
  dead_.push_back(handle);
  // A node, and a node map, may be owned twice, or be kept by something else: dead is what is tried at the end.
  if (OxIfaceContainerReleaseUseCounter(handle.value) < 0) broken("an own handle can be released", handle.value);
}

void Caller::keep(const Frame& frame) {
  const auto add = [&](OxHandle value, Kind kind, int group) {
    if (value == nullptr || value == untouched<OxHandle>()) return;
    if (group == 0) group = ++groups_;
    if (group < 0 && kind != Kind::kNode) group = Shared::kGroup;
    live_.push_back({value, kind, group});
    if (live_.size() > kMaxHandles) giveBack(0);
  };
  add(frame.nodeMap, Kind::kNodeMap, frame.group);
  add(frame.node, Kind::kNode, frame.group);
  add(frame.stream, Kind::kStream, frame.group);
  add(frame.updater, Kind::kUpdater, 0);
}

void Caller::step() {
  const bool isOutermost = depth_ == 0;
  if (isOutermost) {
    entered_ = 0;
    World::beginCall();
  }
  ++depth_;
  const uint8_t choice = bytes_.next();
  if (choice < 0xe0) {
    // Creating is what everything begins with; names of exports are spread over 16 bits, so that they keep their place.
    call(static_cast<size_t>(choice) << 8 | bytes_.next());
  } else if (choice < 0xf0) {
    // Its callbacks make calls of their own.
    std::shared_lock<std::shared_mutex> together;
    if (shared_ != nullptr && isOutermost) together = std::shared_lock(shared_->rule);
    if (!live_.empty()) giveBack(bytes_.next() % live_.size());
  } else if (choice < 0xf8) {
    const auto mood = static_cast<World::Mood>(bytes_.next() % static_cast<uint8_t>(World::Mood::kMoods));
    world_.setMood(mood, bytes_.next());
  } else if (choice < 0xfc) {
    enterRate_ = bytes_.next() % 32;
  } else if (!live_.empty() && live_.size() < kMaxHandles) {
    // A second reference.
    const Handle handle = live_[bytes_.next() % live_.size()];
    if (OxIfaceContainerCheckedAddUseCounter(handle.value) < 0) broken("an own handle is alive", handle.value);
    live_.push_back(handle);
  }
  --depth_;
}

void Caller::enter(bool mayThrow) {
  ++callbacks_;
  if (ending_ || depth_ >= kMaxDepth || bytes_.empty() || entered_ >= kMaxEntered) return;
  ++entered_;
  const uint8_t choice = mayThrow ? bytes_.next() : uint8_t{0};
  if (choice == 0xff) throw std::runtime_error("thrown by a callback");
  if (choice == 0xfe) throw 42;
  step();
}

void Caller::onAccess() {
  if (current == nullptr) return;
  ++current->callbacks_;
  if (current->enterRate_ != 0 && ++current->accesses_ % current->enterRate_ == 0) current->enter(true);
}

void Caller::onRelease(void*) {
  if (current != nullptr) current->enter(false);
}

void Caller::onUpdate(NODE node, void*) {
  if (current == nullptr) return;
  Caller& caller = *current;
  if (!IsNode(node)) broken("a callback is given a node", node);
  caller.borrowed_.push_back(node);
  struct Return {
    Caller& caller;
    ~Return() { caller.borrowed_.pop_back(); }
  } const atEnd{caller};
  caller.enter(true);
}

bool Caller::onSettings(NODE node, uint32_t code, void* user) {
  if (code == 0) broken("a problem has a code", node);
  if (node != nullptr)
    onUpdate(node, user);
  else if (current != nullptr)
    current->enter(true);
  return current == nullptr || current->bytes_.next() < 0xe0;
}

bool Caller::onReset(unsigned, unsigned, void*& newNodeMap, void*) {
  if (current == nullptr) return false;
  current->enter(true);
  Frame frame;
  newNodeMap = current->pick(frame, Kind::kNodeMap);
  return (current->bytes_.next() & 3) != 0;
}

}  // namespace calls
