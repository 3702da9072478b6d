#include <chrono>
#include <map>
#include <memory>
#include <thread>

#include "Changes.h"
#include "Commands.h"
#include "ShowValues.h"

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kDeliveryPause{10};

struct EventsOptions {
  std::vector<std::string> enable;
  std::vector<std::string> execute;
  double seconds = 1;
  std::string id;
  std::vector<std::string> payload;
};

void list(Session& session) {
  const NodeMap& map = session.map();
  std::map<std::string, std::vector<std::string>> events;
  for (const std::string& name : map.nodeNames()) {
    try {
      if (const std::string id = map.node(name).infoText(NI_EventID); !id.empty()) {
        events[id].push_back(name);
      }
    } catch (const Failure&) {
      continue;  // a node without a handle carries no event
    }
  }
  if (session.output().json()) {
    session.output().document(events);
    return;
  }
  for (const auto& [id, nodes] : events) {
    std::string names;
    for (const std::string& name : nodes) {
      names += (names.empty() ? "" : ", ") + name;
    }
    session.output().field(id, names);
  }
}

void deliver(Session& session, Changes& changes, const EventMessage& message) {
  changes.take();
  session.map().deliverEvent({message.id.c_str(), message.payload.data(), message.payload.size()});
  const Output& output = session.output();
  if (!output.json()) {
    output.line(output.name("event " + message.id));
  }
  const Json features = showValues(session, changes.take());
  if (output.json()) {
    output.record({{"event", message.id}, {"features", features}});
  }
}

void listen(Session& session, const EventsOptions& options) {
  const NodeMap& map = session.map();
  Changes changes(map, valueFeatures(map));
  for (const std::string& event : options.enable) {
    map.node("EventSelector").set(event);
    map.node("EventNotification").set("On");
  }
  for (const std::string& command : options.execute) {
    map.node(command).execute();
  }
  const auto end = Clock::now() + std::chrono::duration<double>(options.seconds);
  while (true) {
    // What came before the end is shown, however late this thread gets to it.
    const bool last = Clock::now() >= end;
    while (const std::optional<EventMessage> message = session.device().nextEvent()) {
      deliver(session, changes, *message);
    }
    if (last) {
      return;
    }
    std::this_thread::sleep_for(kDeliveryPause);
  }
}

void send(Session& session, const EventsOptions& options) {
  EventMessage message{options.id, {}};
  for (const std::byte byte : parseBytes(options.payload)) {
    message.payload.push_back(std::to_integer<uint8_t>(byte));
  }
  Changes changes(session.map(), valueFeatures(session.map()));
  deliver(session, changes, message);
}

}  // namespace

void addEvents(CLI::App& app, Action& chosen) {
  auto options = std::make_shared<EventsOptions>();
  CLI::App* events =
      app.add_subcommand("events", "Deliver the device's event messages and show the features they fill");
  events->require_subcommand(1);
  events->fallthrough();
  events->footer("Example:\n  oxgenapi events listen --enable Test --exec TestEventGenerate");
  events->add_subcommand("list", "Show which nodes carry which event ID")->callback([&chosen] { chosen = list; });
  CLI::App* live = events->add_subcommand("listen", "Deliver what the device sends");
  live->add_option("--enable", options->enable, "Events to switch on first, entries of EventSelector")->delimiter(',');
  live->add_option("--exec", options->execute, "Commands to execute then")->delimiter(',')->type_name("NAME");
  live->add_option("--seconds", options->seconds, "How long to listen")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  live->callback([&chosen, options] { chosen = [options](Session& session) { listen(session, *options); }; });
  CLI::App* one = events->add_subcommand("deliver", "Deliver a message given here");
  one->add_option("id", options->id, "Event ID, hexadecimal digits")->required()->type_name("ID");
  one->add_option("payload", options->payload, "Bytes, two hexadecimal digits each")->required()->type_name("BYTES");
  one->callback([&chosen, options] { chosen = [options](Session& session) { send(session, *options); }; });
}

}  // namespace tool
