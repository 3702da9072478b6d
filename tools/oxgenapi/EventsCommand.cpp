#include <chrono>
#include <cstdio>
#include <map>
#include <memory>
#include <thread>

#include "Changes.h"
#include "Commands.h"
#include "Dependents.h"
#include "Interrupt.h"
#include "Progress.h"
#include "ShowValues.h"
#include "SwitchOn.h"

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kDeliveryPause{10};

struct EventsOptions {
  std::vector<std::string> enable;
  std::vector<std::string> execute;
  double seconds = 5;
  std::string id;
  std::vector<std::string> payload;
};

void list(Session& session) {
  const NodeMap& map = session.map();
  const std::string description = session.device().description();
  std::map<std::string, std::vector<std::string>> events;
  for (const std::string& name : map.nodeNames()) {
    try {
      if (const std::string id = map.node(name).infoText(NI_EventID); !id.empty()) {
        // Mostly a port, through which features read the message.
        const std::vector<std::string> features = dependentFeatures(description, name);
        events[id].insert(events[id].end(), features.begin(), features.end());
        if (features.empty()) {
          events[id].push_back(name);
        }
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
  if (output.json()) {
    output.record({{"event", message.id}, {"features", valuesJson(session, changes.take())}});
  } else {
    output.line(output.name("event " + message.id));
    showValues(session, changes.take());
    std::fflush(stdout);
  }
}

void listen(Session& session, const EventsOptions& options) {
  const NodeMap& map = session.map();
  const Interrupt interrupt;
  Changes changes(map, valueFeatures(map));
  switchOn(map, {"EventSelector", "EventNotification", "On"}, options.enable);
  // Most events come with images.
  const bool acquires = options.enable.empty() && options.execute.empty();
  for (const std::string& command : acquires ? std::vector<std::string>{"AcquisitionStart"} : options.execute) {
    map.node(command).execute();
  }
  const auto start = Clock::now();
  Progress progress(session.output(), "events", 0, "events");
  uint64_t delivered = 0;
  while (true) {
    const double passed = std::chrono::duration<double>(Clock::now() - start).count();
    // What came before the end is shown, however late this thread gets to it.
    const bool last = passed >= options.seconds || interrupt.requested();
    while (const std::optional<EventMessage> message = session.device().nextEvent()) {
      progress.clear();
      deliver(session, changes, *message);
      ++delivered;
    }
    if (last) {
      break;
    }
    progress.reach(delivered, passed / options.seconds);
    std::this_thread::sleep_for(kDeliveryPause);
  }
  if (acquires) {
    map.node("AcquisitionStop").execute();
  }
  if (delivered == 0 && !session.output().json()) {
    session.output().hint("No event came. --enable switches events on, entries of EventSelector.");
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
      app.add_subcommand("events", "Deliver the event messages that the device sends and show the features they fill");
  events->require_subcommand(0, 1);
  events->fallthrough();
  events->footer(
      "Example:\n"
      "  oxgenapi events --seconds 2\n"
      "  oxgenapi events --enable Test --exec TestEventGenerate --seconds 2");
  events
      ->add_option("--enable", options->enable,
                   "Events to switch on first, entries of EventSelector; without it all, unless one is on")
      ->delimiter(',')
      ->type_name("EVENT");
  events->add_option("--exec", options->execute, "Commands to execute then; without both images are taken meanwhile")
      ->delimiter(',')
      ->type_name("A,B");
  events->add_option("--seconds", options->seconds, "How long to listen")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  events->callback([&chosen, options, events] {
    if (events->get_subcommands().empty()) {
      chosen = [options](Session& session) { listen(session, *options); };
    }
  });
  events->add_subcommand("list", "Show which features each event fills, by event ID")->callback([&chosen] {
    chosen = list;
  });
  CLI::App* one = events->add_subcommand("deliver", "Deliver a message given here");
  one->add_option("id", options->id, "Event ID, hexadecimal digits")->required()->type_name("ID");
  one->add_option("payload", options->payload, "Bytes, two hexadecimal digits each")->required()->type_name("BYTES");
  one->footer("Example:\n  oxgenapi events deliver 9040 00 00 00 00 00 00 04 d2");
  one->callback([&chosen, options] { chosen = [options](Session& session) { send(session, *options); }; });
  // The command without a word does the same.
  events->add_subcommand("listen", "Deliver what the device sends")->group("")->callback([&chosen, options] {
    chosen = [options](Session& session) { listen(session, *options); };
  });
}

}  // namespace tool
