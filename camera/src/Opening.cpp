#include "Opening.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <set>
#include <thread>

#include "DeviceText.h"
#include "Failure.h"
#include "Modules.h"

namespace ox::camera {
namespace {

using Clock = std::chrono::steady_clock;

constexpr Milliseconds kPause{200};

// A name as the caller gave it, taken apart.
struct Target {
  std::vector<Transport*> transports;  // those to ask
  std::string interface;               // the only one to use; empty: any
  std::string name;                    // empty: the only camera
};

Target targetOf(const std::string& text, const LoadedTransports& loaded) {
  for (Transport* transport : loaded.transports) {
    const std::string name = transport->name();
    if (text == name) return {{transport}, {}, {}};
    if (text.starts_with(name + ":")) return {{transport}, {}, text.substr(name.size() + 1)};
  }
  return {loaded.transports, {}, text};
}

std::string quoted(const std::string& text) { return "'" + shown(text) + "'"; }

// What was tried, on one line.
std::string tried(const std::vector<Note>& notes) {
  std::string text;
  for (const Note& note : notes)
    if (note.kind != Note::Kind::module) text += (text.empty() ? "" : "; ") + note.text;
  return text.empty() ? "no transport is installed" : text;
}

bool isOn(const Way& way, const std::string& interface) {
  const std::string& address = way.facts.interfaceAddress;
  return interface == way.facts.interface || interface == address.substr(0, address.find('/'));
}

// Leaves the cameras that the target's name means; one whose ID it is decides.
std::vector<ListedCamera> fitting(const CameraList& list, const std::string& name) {
  std::vector<ListedCamera> fits;
  for (const ListedCamera& camera : list.cameras()) {
    if (camera.id == name) return {camera};
    const bool named = name.empty() || std::any_of(camera.ways.begin(), camera.ways.end(),
                                                   [&](const Way& way) { return isNamed(way.facts, name); });
    if (named) fits.push_back(camera);
  }
  return fits;
}

[[noreturn]] void refuseAmbiguous(const std::string& text, const std::vector<ListedCamera>& fits) {
  std::string ids;
  for (const ListedCamera& camera : fits) ids += (ids.empty() ? "" : ", ") + camera.id;
  throw CameraError(OXCAMERA_E_AMBIGUOUS,
                    (text.empty() ? "There are several cameras" : quoted(text) + " fits several cameras") + ": " + ids +
                        ". Name one of them");
}

// The camera at an address, asked without a search; nothing if no transport takes the name for an address.
std::optional<ListedCamera> askAddress(const Target& target, const std::string& text, const OpenOptions& options) {
  Discovery discovery;
  bool asked = false;
  for (Transport* transport : target.transports) {
    const std::string address = target.name.empty() ? transport->name() : target.name;
    if (!transport->isAddress(address)) continue;
    asked = true;
    Findings found = transport->search({options.answer, address});
    for (CameraFacts& facts : found.cameras) discovery.ways.push_back({transport, std::move(facts)});
    for (Note& note : found.notes) discovery.notes.push_back(std::move(note));
  }
  if (!asked) return std::nullopt;
  const CameraList list(std::move(discovery));
  if (list.cameras().size() > 1) refuseAmbiguous(text, list.cameras());
  if (!list.cameras().empty()) return list.cameras().front();
  throw CameraError(OXCAMERA_E_NOT_FOUND, "No camera answers at " + quoted(text) + " within " +
                                              std::to_string(options.answer.count()) + " ms" +
                                              (list.notes().empty() ? "" : ": " + tried(list.notes())));
}

ListedCamera find(const std::string& text, const OpenOptions& options) {
  const LoadedTransports loaded = loadTransports();
  const Target target = targetOf(text, loaded);
  if (!target.name.empty()) {
    if (std::optional<ListedCamera> camera = askAddress(target, text, options)) return *std::move(camera);
  }

  // A word before a colon may be an interface; which ones there are shows only in the answers.
  const size_t colon = target.name.find(':');
  const std::string prefix = colon == std::string::npos ? "" : target.name.substr(0, colon);
  const std::string rest = colon == std::string::npos ? "" : target.name.substr(colon + 1);
  Search search{options.search};
  if (!target.name.empty()) {
    search.wanted = [name = target.name, rest](const CameraFacts& facts) {
      return isNamed(facts, name) || isNamed(facts, rest) ||
             CameraList({{{nullptr, facts}}, {}}).cameras()[0].id == name;
    };
  }
  Discovery discovery = searchAll(target.transports, search);
  discovery.notes.insert(discovery.notes.begin(), loaded.notes.begin(), loaded.notes.end());
  const CameraList list(discovery);
  std::vector<ListedCamera> fits = fitting(list, target.name);
  if (fits.empty() && !prefix.empty()) {
    std::erase_if(discovery.ways, [&](const Way& way) { return !isOn(way, prefix); });
    fits = fitting(CameraList(std::move(discovery)), rest);
  }
  if (fits.size() > 1) refuseAmbiguous(text, fits);
  if (fits.size() == 1) return fits.front();
  if (target.name.empty() && !text.empty()) {  // a transport that lists no camera may have one for itself
    if (std::optional<ListedCamera> camera = askAddress(target, text, options)) return *std::move(camera);
  }
  std::string others;
  for (const ListedCamera& camera : list.cameras()) others += (others.empty() ? "" : ", ") + camera.id;
  throw CameraError(OXCAMERA_E_NOT_FOUND,
                    (text.empty() ? "No camera was found" : "There is no camera " + quoted(text)) +
                        (others.empty() ? ": " + tried(list.notes()) : "; there are: " + others));
}

OpenedCamera openFound(ListedCamera camera, const OpenOptions& options, const Caller& caller) {
  const Way& way = camera.ways.front();
  const CameraFacts& facts = way.facts;
  const bool hopeless = facts.reach == Reach::wrongSubnet || facts.reach == Reach::noPermission ||
                        (facts.reach == Reach::busy && options.control);
  std::unique_ptr<Reservation> reservation;
  if (options.control) {
    reservation = std::make_unique<Reservation>(
        way.transport->name() + ":" + (facts.identity.empty() ? facts.place : facts.identity + "@" + facts.address));
  }
  if (hopeless) {
    const uint32_t code = facts.reach == Reach::wrongSubnet    ? OXCAMERA_E_UNREACHABLE
                          : facts.reach == Reach::noPermission ? OXCAMERA_E_NO_PERMISSION
                                                               : OXCAMERA_E_IN_USE;
    throw CameraError(code, camera.id + ": " + shown(facts.obstacle));
  }
  OpenRequest request{facts.place, options.control, options.answer, caller.onLost};
  std::unique_ptr<Device> device = way.transport->open(request);
  return {std::move(camera), std::move(reservation), std::move(device)};
}

bool mayPass(uint32_t code) {
  return code == OXCAMERA_E_NOT_FOUND || code == OXCAMERA_E_IN_USE || code == OXCAMERA_E_TIMEOUT ||
         code == OXCAMERA_E_LOST || code == OXCAMERA_E_FAILED || code == OXCAMERA_E_OUTCOME_UNKNOWN;
}

template <class Attempt>
OpenedCamera repeat(const OpenOptions& options, const Caller& caller, Attempt attempt) {
  const auto end = Clock::now() + options.retry;
  const auto isOver = [&] { return Clock::now() + kPause > end || caller.gaveUp(); };
  while (true) {
    try {
      return attempt();
    } catch (const CameraError& error) {
      if (!mayPass(error.code()) || isOver()) throw;
    } catch (const TransportError& error) {
      if (!mayPass(codeOf(error.reason())) || isOver()) throw;
    }
    std::this_thread::sleep_for(kPause);
  }
}

std::mutex& reservationMutex() {
  static std::mutex& mutex = *new std::mutex;
  return mutex;
}

std::set<std::string>& reservations() {
  static auto& keys = *new std::set<std::string>;
  return keys;
}

}  // namespace

OpenOptions readOptions(const TCameraOptions* options) {
  OpenOptions result;
  if (options == nullptr) return result;
  if (options->StructSize != sizeof(TCameraOptions))
    throw CameraError(OXGENAPI_E_INVALID_ARGUMENT, "StructSize must be sizeof(TCameraOptions)");
  if (options->Access > OX_READ_ONLY || options->ByteOrder > BO_Register)
    throw CameraError(OXGENAPI_E_INVALID_ARGUMENT, "Access or ByteOrder is none of the known values");
  const auto set = [](Milliseconds& to, uint32_t value) {
    if (value != 0) to = Milliseconds{value};
  };
  set(result.search, options->SearchMs);
  set(result.answer, options->AnswerMs);
  set(result.retry, options->RetryMs);
  set(result.heartbeat, options->HeartbeatMs);
  result.control = options->Access == OX_CONTROL;
  result.byteOrder = options->ByteOrder;
  result.description = options->Description == nullptr ? "" : options->Description;
  result.registers = options->Registers == nullptr ? "" : options->Registers;
  return result;
}

Reservation::Reservation(std::string key) : key_(std::move(key)) {
  const std::lock_guard lock(reservationMutex());
  if (!reservations().insert(key_).second)
    throw CameraError(OXCAMERA_E_IN_USE, "The camera is open in this program already");
}

Reservation::~Reservation() {
  const std::lock_guard lock(reservationMutex());
  reservations().erase(key_);
}

OpenedCamera openCamera(const std::string& name, const OpenOptions& options, const Caller& caller) {
  const std::string text = options.registers.empty() ? name : "simulated:image=" + options.registers;
  return repeat(options, caller, [&] { return openFound(find(text, options), options, caller); });
}

OpenedCamera openAgain(const ListedCamera& camera, const OpenOptions& options, const Caller& caller) {
  const Way former = camera.ways.front();
  const std::string& identity = former.facts.identity;
  const auto isIt = [&](const CameraFacts& facts) {
    return identity.empty() ? facts.place == former.facts.place : sameIgnoringCase(facts.identity, identity);
  };
  return repeat(options, caller, [&] {
    Search search{options.search};
    if (former.transport->isAddress(former.facts.address)) search = {options.answer, former.facts.address};
    Findings found = former.transport->search(search);
    auto answer = std::find_if(found.cameras.begin(), found.cameras.end(), isIt);
    if (answer == found.cameras.end() && !search.address.empty()) {
      found = former.transport->search({options.search, {}, isIt});
      answer = std::find_if(found.cameras.begin(), found.cameras.end(), isIt);
    }
    if (answer == found.cameras.end()) {
      throw CameraError(OXCAMERA_E_NOT_FOUND,
                        camera.id + " does not answer, neither at " + shown(former.facts.address) + " nor elsewhere");
    }
    return openFound({camera.id, {{former.transport, std::move(*answer)}}}, options, caller);
  });
}

}  // namespace ox::camera
