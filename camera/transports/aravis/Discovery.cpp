#include "Discovery.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <list>
#include <optional>

#include "Gvcp.h"
#include "GvcpChannel.h"

namespace ox::camera::gige {
namespace {

using Clock = std::chrono::steady_clock;

constexpr uint16_t kDiscoveryId = 1;       // of discovery requests; those for registers count from there
constexpr Milliseconds kSettle{100};       // after the camera that was wanted: one like it may answer, too
constexpr Milliseconds kRegisterTime{40};  // for what a camera may leave unanswered
constexpr size_t kMaxAnswerNotes = 20;

// A camera that has answered, and what it has been asked since.
struct Found {
  CameraFacts facts;
  Ipv4 address;
  size_t asked;  // index of the asker that reached it
  uint16_t firstId = 0;
  Clock::time_point time = {};
  uint32_t answers = 0;  // of the requests for registers

  bool complete() const;
};

// A socket on one interface, or to one address.
struct Asker {
  Socket socket;
  std::optional<NetworkInterface> interface;  // none: a single address
  Ipv4 to;                                    // who is asked
  std::string subject;                        // "eth0 (192.168.0.2/24)"
  bool failed = false;
};

class DiscoveryRun {
 public:
  explicit DiscoveryRun(const Search& search) : search_(search) {}

  Findings run() {
    open();
    const auto start = Clock::now(), end = start + search_.time;
    const Milliseconds pauses[] = {Milliseconds{0}, search_.time / 8, search_.time / 3};
    size_t sent = 0;
    while (Clock::now() < end && !isEnough()) {
      while (sent < std::size(pauses) && Clock::now() >= start + pauses[sent]) {
        askAll();
        ++sent;
      }
      receive(sent < std::size(pauses) ? std::min(end, start + pauses[sent]) : end);
    }
    return finish();
  }

 private:
  void open();
  void add(std::optional<NetworkInterface> interface, Ipv4 to, std::string subject);
  void askAll();
  void ask(Asker& asker);
  void receive(Clock::time_point until);
  void accept(size_t index, std::span<const uint8_t> packet, Ipv4 from, int interfaceIndex);
  void acceptCamera(size_t index, const Discovered& discovered, int interfaceIndex);
  void acceptRegister(Found& found, size_t which, uint32_t value);
  void askRegisters(Found& found);
  bool isEnough() const;
  Findings finish();
  void note(Note::Kind kind, std::string text) { findings_.notes.push_back({kind, std::move(text)}); }

  const Search& search_;
  std::vector<Asker> askers_;
  std::vector<NetworkInterface> interfaces_;
  std::list<Found> found_;
  Findings findings_;
  size_t strangers_ = 0;
  uint16_t nextId_ = kDiscoveryId + 1;
};

// What is read of each camera that can be reached, in this order.
constexpr Register kAskedRegisters[] = {kControlPrivilege, kLinkSpeed, kControllerAddress};

bool Found::complete() const {
  return firstId == 0 || answers >= std::size(kAskedRegisters) || Clock::now() - time > kRegisterTime;
}

void DiscoveryRun::open() {
  if (!search_.address.empty()) {
    if (const auto address = parseIpv4(search_.address)) add(std::nullopt, *address, search_.address);
    return;
  }
  std::vector<std::string> missing;
  interfaces_ = networkInterfaces(&missing);
  for (const std::string& name : missing)
    note(Note::Kind::interfaceFailed, name + " of OXGENAPI_INTERFACES is no interface of this machine");
  for (const NetworkInterface& interface : interfaces_) {
    add(interface, interface.loopback ? interface.address : INADDR_BROADCAST,
        interface.name + " (" + interface.text() + ")");
  }
  const char* addresses = std::getenv("OXGENAPI_ADDRESSES");
  for (const std::string& text : splitList(addresses == nullptr ? "" : addresses))
    if (const auto address = parseIpv4(text))
      add(std::nullopt, *address, text);
    else
      note(Note::Kind::interfaceFailed, text + " of OXGENAPI_ADDRESSES is no IPv4 address");
}

// Bound to no address: a camera of another subnet can answer by broadcast only.
void DiscoveryRun::add(std::optional<NetworkInterface> interface, Ipv4 to, std::string subject) {
  try {
    Socket socket = openSocket(INADDR_ANY);
    const int on = 1;
    setsockopt(socket.get(), SOL_SOCKET, SO_BROADCAST, &on, sizeof on);
    setsockopt(socket.get(), IPPROTO_IP, IP_PKTINFO, &on, sizeof on);
    setsockopt(socket.get(), IPPROTO_IP, IP_RECVERR, &on, sizeof on);
    askers_.push_back({std::move(socket), std::move(interface), to, std::move(subject)});
  } catch (const TransportError& error) {
    note(Note::Kind::interfaceFailed, subject + ": " + error.what());
  }
}

void DiscoveryRun::askAll() {
  for (Asker& asker : askers_)
    if (!asker.failed) ask(asker);
}

void DiscoveryRun::ask(Asker& asker) {
  std::vector<uint8_t> packet = request(kWantsAnswer | kBroadcastAnswer, kDiscovery, kDiscoveryId);
  sockaddr_in to{};
  to.sin_family = AF_INET;
  to.sin_port = htons(kGvcpPort);
  to.sin_addr.s_addr = htonl(asker.to);
  iovec data{packet.data(), packet.size()};
  alignas(cmsghdr) std::array<uint8_t, CMSG_SPACE(sizeof(in_pktinfo))> control{};
  msghdr message{};
  message.msg_name = &to;
  message.msg_namelen = sizeof to;
  message.msg_iov = &data;
  message.msg_iovlen = 1;
  if (asker.interface) {
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = IPPROTO_IP;
    header->cmsg_type = IP_PKTINFO;
    header->cmsg_len = CMSG_LEN(sizeof(in_pktinfo));
    in_pktinfo info{};
    info.ipi_ifindex = asker.interface->index;
    info.ipi_spec_dst.s_addr = htonl(asker.interface->address);
    std::memcpy(CMSG_DATA(header), &info, sizeof info);
  }
  if (sendmsg(asker.socket.get(), &message, 0) < 0 && errno != EAGAIN && errno != ECONNREFUSED) {
    asker.failed = true;
    note(Note::Kind::interfaceFailed, asker.subject + " cannot be asked: " + strerror(errno));
  }
}

void DiscoveryRun::receive(Clock::time_point until) {
  std::vector<pollfd> ready;
  for (const Asker& asker : askers_) ready.push_back({asker.socket.get(), POLLIN, 0});
  const auto left = std::chrono::ceil<Milliseconds>(until - Clock::now());
  const int wait =
      static_cast<int>(std::clamp<int64_t>(left.count(), 0, 10));  // a camera may become complete meanwhile
  if (poll(ready.data(), ready.size(), wait) <= 0) return;
  for (size_t i = 0; i < ready.size(); ++i) {
    if (ready[i].revents == 0) continue;
    while (true) {
      std::array<uint8_t, kMaxPacket> room;
      alignas(cmsghdr) std::array<uint8_t, 256> control{};
      sockaddr_in from{};
      iovec data{room.data(), room.size()};
      msghdr message{};
      message.msg_name = &from;
      message.msg_namelen = sizeof from;
      message.msg_iov = &data;
      message.msg_iovlen = 1;
      message.msg_control = control.data();
      message.msg_controllen = control.size();
      const ssize_t size = recvmsg(askers_[i].socket.get(), &message, 0);
      if (size < 0) {
        const int error = errno;
        // What the network says about a packet of ours is waiting, too.
        (void)recvmsg(askers_[i].socket.get(), &message, MSG_ERRQUEUE);
        const bool single = !askers_[i].interface && !askers_[i].failed && error != EAGAIN;
        if (single) {
          askers_[i].failed = true;
          note(Note::Kind::interfaceFailed,
               askers_[i].subject + (error == ECONNREFUSED ? " is there, but no camera listens on it"
                                                           : std::string(" cannot be reached: ") + strerror(error)));
        }
        break;
      }
      int index = 0;
      for (cmsghdr* header = CMSG_FIRSTHDR(&message); header != nullptr; header = CMSG_NXTHDR(&message, header)) {
        if (header->cmsg_level != IPPROTO_IP || header->cmsg_type != IP_PKTINFO) continue;
        in_pktinfo info{};
        std::memcpy(&info, CMSG_DATA(header), sizeof info);
        index = info.ipi_ifindex;
      }
      accept(i, {room.data(), static_cast<size_t>(size)}, ntohl(from.sin_addr.s_addr), index);
    }
  }
}

void DiscoveryRun::accept(size_t index, std::span<const uint8_t> packet, Ipv4 from, int interfaceIndex) {
  const auto answer = parseAnswer(packet);
  if (answer && answer->id != kDiscoveryId) {
    for (Found& found : found_) {
      const bool own =
          found.firstId != 0 && answer->id >= found.firstId && answer->id < found.firstId + std::size(kAskedRegisters);
      if (own && found.asked == index) {
        const bool read = answer->command == kReadRegister + 1 && answer->status == 0 && answer->payload.size() >= 4;
        acceptRegister(found, answer->id - found.firstId, read ? numberAt(answer->payload, 0) : 0);
      }
    }
    return;
  }
  const auto discovered = answer && answer->command == kDiscovery + 1 ? parseDiscovery(answer->payload) : std::nullopt;
  if (discovered) {
    acceptCamera(index, *discovered, interfaceIndex);
  } else if (strangers_++ < kMaxAnswerNotes) {
    note(Note::Kind::answer, askers_[index].subject + ": " + std::to_string(packet.size()) + " bytes from " +
                                 ipv4Text(from) + " are no answer of a camera");
  }
}

void DiscoveryRun::acceptCamera(size_t index, const Discovered& discovered, int interfaceIndex) {
  const Asker& asker = askers_[index];
  Found found{discovered.facts, asker.interface ? discovered.address : asker.to, index};
  CameraFacts& facts = found.facts;
  facts.address = ipv4Text(found.address);
  for (const Found& known : found_) {
    const bool again = known.asked == index && known.address == found.address && known.facts.identity == facts.identity;
    if (again) return;
  }
  const std::vector<NetworkInterface> all = interfaces_.empty() ? networkInterfaces() : interfaces_;
  const NetworkInterface* arrival = asker.interface ? &*asker.interface : nullptr;
  for (const NetworkInterface& interface : all) {
    const bool betterThanAsked = arrival == nullptr || arrival->index != interfaceIndex;
    if (interface.index == interfaceIndex && betterThanAsked) arrival = &interface;
  }
  if (arrival != nullptr) {
    facts.interface = arrival->name;
    facts.interfaceAddress = arrival->text();
    facts.linkSpeed = arrival->speed();
  }
  const std::optional<NetworkInterface> route = interfaceTo(found.address);
  const std::string there = arrival == nullptr ? "" : arrival->name + " (" + arrival->text() + ")";
  if (asker.interface && !arrival->contains(found.address)) {
    facts.reach = Reach::wrongSubnet;
    facts.obstacle = "its address " + facts.address + " (mask " + ipv4Text(discovered.mask) +
                     ") is not in the network of " + there +
                     ", on which it answered; give it another with 'oxgenapi network'";
  } else if (!route) {
    facts.reach = Reach::wrongSubnet;
    facts.obstacle = "this machine has no route to " + facts.address;
  } else if (arrival != nullptr && route->index != arrival->index) {
    facts.reach = Reach::wrongSubnet;
    facts.obstacle = "it answered on " + there + ", but what is sent to " + facts.address + " leaves by " +
                     route->name + " (" + route->text() + "); take one of the two out of that network";
  }
  const Ipv4 own = asker.interface ? asker.interface->address : route ? route->address : INADDR_ANY;
  facts.place = placeText({found.address, own});
  found.time = Clock::now();
  if (facts.reach == Reach::unknown) {
    facts.reach = Reach::free;
    askRegisters(found);
  }
  found_.push_back(std::move(found));
}

void DiscoveryRun::askRegisters(Found& found) {
  found.firstId = nextId_;
  nextId_ = static_cast<uint16_t>(nextId_ > 0xff00 ? kDiscoveryId + 1 : nextId_ + std::size(kAskedRegisters));
  sockaddr_in to{};
  to.sin_family = AF_INET;
  to.sin_port = htons(kGvcpPort);
  to.sin_addr.s_addr = htonl(found.address);
  for (size_t i = 0; i < std::size(kAskedRegisters); ++i) {
    std::vector<uint8_t> payload;
    append(payload, kAskedRegisters[i]);
    const auto packet = request(kWantsAnswer, kReadRegister, static_cast<uint16_t>(found.firstId + i), payload);
    sendto(askers_[found.asked].socket.get(), packet.data(), packet.size(), 0, reinterpret_cast<const sockaddr*>(&to),
           sizeof to);
  }
}

void DiscoveryRun::acceptRegister(Found& found, size_t which, uint32_t value) {
  ++found.answers;
  CameraFacts& facts = found.facts;
  switch (kAskedRegisters[which]) {
    case kControlPrivilege:
      if ((value & (kControl | kExclusive)) != 0) {
        facts.reach = Reach::busy;
        facts.obstacle =
            "another program has control; after a crash the camera frees itself when the heartbeat of that "
            "program has run out, in a few seconds";
      }
      break;
    case kLinkSpeed:
      if (value > 0 && value <= 1'000'000) facts.linkSpeed = uint64_t{value} * 1'000'000;
      break;
    case kControllerAddress:
      if (value != 0 && facts.reach == Reach::busy)
        facts.obstacle.replace(0, strlen("another program"), "a program at " + ipv4Text(value));
      break;
    default: break;
  }
}

bool DiscoveryRun::isEnough() const {
  const bool complete = std::all_of(found_.begin(), found_.end(), [](const Found& found) { return found.complete(); });
  if (!search_.address.empty()) return (!found_.empty() && complete) || askers_.empty() || askers_.front().failed;
  if (!search_.wanted) return false;
  return complete && std::any_of(found_.begin(), found_.end(), [this](const Found& found) {
           return Clock::now() - found.time > kSettle && search_.wanted(found.facts);
         });
}

Findings DiscoveryRun::finish() {
  for (size_t i = 0; i < askers_.size(); ++i) {
    const auto count =
        std::count_if(found_.begin(), found_.end(), [i](const Found& found) { return found.asked == i; });
    if (!askers_[i].failed) {
      note(Note::Kind::interface, askers_[i].subject + " was asked, " + std::to_string(count) +
                                      (count == 1 ? " camera answered" : " cameras answered"));
    }
  }
  if (askers_.empty() && search_.address.empty())
    note(Note::Kind::interfaceFailed, "no network interface with an IPv4 address is up");
  for (Found& found : found_) findings_.cameras.push_back(std::move(found.facts));
  if (found_.empty()) {
    note(Note::Kind::advice,
         "GigE Vision: check power and cable, that no firewall drops UDP port 3956, and that "
         "reverse path filtering lets answers of other subnets in (net.ipv4.conf.*.rp_filter)");
  }
  return std::move(findings_);
}

}  // namespace

std::string placeText(Place place) { return ipv4Text(place.camera) + " " + ipv4Text(place.own); }

Place parsePlace(const std::string& text) {
  const size_t blank = text.find(' ');
  const auto camera = parseIpv4(text.substr(0, blank));
  const auto own = blank == std::string::npos ? std::nullopt : parseIpv4(text.substr(blank + 1));
  if (!camera || !own) throw TransportError(Reason::notFound, "There is no camera at '" + text + "'");
  return {*camera, *own};
}

Findings discover(const Search& search) { return DiscoveryRun(search).run(); }

}  // namespace ox::camera::gige
