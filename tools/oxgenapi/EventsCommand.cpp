#include <chrono>
#include <cstdio>
#include <map>
#include <memory>
#include <thread>

#include "BorrowedFeatures.h"
#include "Changes.h"
#include "Checks.h"
#include "Commands.h"
#include "EventIndex.h"
#include "Interrupt.h"
#include "Progress.h"
#include "ShowValues.h"

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

void listEvents(Session& session) {
  const auto events = eventIndex(session);
  if (session.output().json()) {
    Json document = Json::object();
    for (const auto& [id, facts] : events) document[id] = {{"name", facts.name}, {"features", facts.features}};
    session.output().document(document);
    return;
  }
  for (const auto& [id, facts] : events) {
    std::string names;
    for (const std::string& name : facts.features) names += (names.empty() ? "" : ", ") + name;
    session.output().field(facts.name.empty() ? id : id + " " + facts.name, names);
  }
}

class Deliverer {
 public:
  explicit Deliverer(Session& session)
      : session_(session), events_(eventIndex(session)), changes_(session.map(), valueFeatures(session.map())) {}

  void deliver(const EventMessage& message) {
    changes_.take();
    session_.map().deliverEvent({message.id.c_str(), message.payload.data(), message.payload.size()});
    const auto found = events_.find(message.id);
    const std::string name = found == events_.end() ? "" : found->second.name;
    const Output& output = session_.output();
    if (output.json()) {
      output.record({{"event", message.id}, {"name", name}, {"features", valuesJson(session_, changes_.take())}});
    } else {
      output.line(output.name("event " + message.id + (name.empty() ? "" : " " + name)));
      showValues(session_, changes_.take());
      std::fflush(stdout);
    }
  }

 private:
  Session& session_;
  std::map<std::string, EventFacts> events_;
  Changes changes_;
};

void listen(Session& session, const EventsOptions& options) {
  const NodeMap& map = session.map();
  const Interrupt interrupt;
  Deliverer deliverer(session);
  BorrowedFeatures borrowed(map);
  borrowed.switchOn({"EventSelector", "EventNotification", "On", "Off"}, options.enable);
  if (options.enable.empty() && options.execute.empty())
    borrowed.execute("AcquisitionStart", "AcquisitionStop");  // most events come with images
  for (const std::string& command : options.execute) map.node(command).execute();
  const auto start = Clock::now();
  Progress progress(session.output(), "events", 0, "events");
  uint64_t delivered = 0;
  while (true) {
    const double passed = std::chrono::duration<double>(Clock::now() - start).count();
    // What came before the end is shown, however late this thread gets to it.
    const bool last = (options.seconds > 0 && passed >= options.seconds) || interrupt.requested();
    while (const std::optional<EventMessage> message = session.device().nextEvent()) {
      progress.clear();
      deliverer.deliver(*message);
      ++delivered;
    }
    if (last) break;
    progress.reach(delivered, options.seconds > 0 ? passed / options.seconds : 0);
    std::this_thread::sleep_for(kDeliveryPause);
  }
  borrowed.putBack();
  if (delivered == 0 && !session.output().json())
    session.output().hint("No event came. --enable switches events on, entries of EventSelector.");
}

void send(Session& session, const EventsOptions& options) {
  EventMessage message{options.id, {}};
  for (const std::byte byte : parseBytes(options.payload)) message.payload.push_back(std::to_integer<uint8_t>(byte));
  Deliverer(session).deliver(message);
}

}  // namespace

void addEvents(const Command& program) {
  auto options = std::make_shared<EventsOptions>();
  const Command events =
      program.subcommand("events", "Deliver the event messages that the device sends and show the features they fill");
  events.footer(
      "Example:\n"
      "  oxgenapi events --seconds 2\n"
      "  oxgenapi events --enable Test --exec TestEventGenerate --seconds 2");
  events
      .option("--enable", options->enable,
              "The events to be sent meanwhile, entries of EventSelector (default: those that are on, or all)")
      .separator(',')
      .type("EVENT,...");
  events
      .option("--exec", options->execute,
              "Commands to execute then (default, if --enable is missing too: images are taken)")
      .separator(',')
      .type("COMMAND,...");
  events.option("--seconds", options->seconds, "How long to listen; 0: until Ctrl-C").check(atLeast(0)).showDefault();
  events.runsAlone([options](Session& session) { listen(session, *options); });
  const Command all = events.subcommand("list", "Show each event's ID and name, and the features that it fills");
  all.footer("Example:\n  oxgenapi events list");
  all.runs(listEvents);
  const Command one = events.subcommand("deliver", "Deliver a message given here");
  one.option("id", options->id, "Event ID, hexadecimal digits").required().type("ID");
  one.option("payload", options->payload, "Bytes, two hexadecimal digits each").required().type("BYTES");
  one.footer("Example:\n  oxgenapi events deliver 9040 00 00 00 00 00 00 04 d2");
  one.runs([options](Session& session) { send(session, *options); });
  // The command without a word does the same.
  events.hiddenSubcommand("listen", "Deliver what the device sends").runs([options](Session& session) {
    listen(session, *options);
  });
}

}  // namespace tool
