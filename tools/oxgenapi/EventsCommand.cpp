#include <algorithm>
#include <chrono>
#include <map>
#include <memory>
#include <thread>

#include "Commands.h"
#include "Dependents.h"
#include "Value.h"

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPause{10};

struct EventsOptions {
  std::vector<std::string> enable;
  std::vector<std::string> execute;
  double seconds = 1;
  std::string id;
  std::vector<std::string> payload;
};

// The features that an event message fills or announces, by the event's ID without leading zeros.
class EventFeatures {
 public:
  explicit EventFeatures(const NodeMap& map) {
    const Dependents dependents(map);
    for (const std::string& name : map.nodeNames()) {
      try {
        const Node node = map.node(name);
        const std::string id = node.infoText(NI_EventID);
        if (id.empty()) {
          continue;
        }
        std::vector<std::string>& features = features_[normalized(id)];
        if (node.infoBoolean(NI_IsFeature)) {
          add(features, name);
        }
        for (const std::string& feature : dependents.of(name)) {
          add(features, feature);
        }
      } catch (const Failure&) {
        continue;  // a node without a handle carries no event
      }
    }
  }

  const std::map<std::string, std::vector<std::string>>& all() const { return features_; }

  std::vector<std::string> of(const std::string& id) const {
    const auto found = features_.find(normalized(id));
    return found == features_.end() ? std::vector<std::string>{} : found->second;
  }

 private:
  static std::string normalized(const std::string& id) {
    std::string digits = id.substr(std::min(id.find_first_not_of('0'), id.size()));
    for (char& digit : digits) {
      digit = digit >= 'a' && digit <= 'f' ? static_cast<char>(digit - 'a' + 'A') : digit;
    }
    return digits.empty() ? "0" : digits;
  }

  static void add(std::vector<std::string>& features, const std::string& name) {
    if (std::find(features.begin(), features.end(), name) == features.end()) {
      features.push_back(name);
    }
  }

  std::map<std::string, std::vector<std::string>> features_;
};

void list(Session& session) {
  const EventFeatures events(session.map());
  Json json = Json::object();
  for (const auto& [id, features] : events.all()) {
    json[id] = features;
    if (!session.output().json()) {
      std::string names;
      for (const std::string& feature : features) {
        names += (names.empty() ? "" : ", ") + feature;
      }
      session.output().field(id, names);
    }
  }
  if (session.output().json()) {
    session.output().document(json);
  }
}

void deliver(Session& session, const EventFeatures& events, const EventMessage& message) {
  const NodeMap& map = session.map();
  const TEventDataEx data{message.id.c_str(), message.payload.data(), message.payload.size()};
  check(NMDeliverEventEx(map.handle(), &data), "event " + message.id);
  const Output& output = session.output();
  Json values = Json::object();
  if (!output.json()) {
    output.line(output.name("event " + message.id));
  }
  for (const std::string& feature : events.of(message.id)) {
    try {
      const Node node = map.node(feature);
      if (!hasValue(node.type())) {
        continue;
      }
      values[feature] = valueJson(node);
      if (!output.json()) {
        output.line("  " + feature + " = " + valueText(node));
      }
    } catch (const Failure& failure) {
      values[feature] = Json{{"error", toJson(failure)}};
      session.report(failure);
    }
  }
  if (output.json()) {
    output.record({{"event", message.id}, {"features", values}});
  }
}

void listen(Session& session, const EventsOptions& options) {
  const NodeMap& map = session.map();
  const EventFeatures events(map);
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
      deliver(session, events, *message);
    }
    if (last) {
      return;
    }
    std::this_thread::sleep_for(kPause);
  }
}

void send(Session& session, const EventsOptions& options) {
  EventMessage message{options.id, {}};
  for (const std::byte byte : parseBytes(options.payload)) {
    message.payload.push_back(std::to_integer<uint8_t>(byte));
  }
  deliver(session, EventFeatures(session.map()), message);
}

}  // namespace

void addEvents(CLI::App& app, Action& chosen) {
  auto options = std::make_shared<EventsOptions>();
  CLI::App* events =
      app.add_subcommand("events", "Deliver the device's event messages and show the features they fill");
  events->require_subcommand(1);
  events->fallthrough();
  events->footer("Example:\n  oxgenapi events listen --enable Test --exec TestEventGenerate");
  events->add_subcommand("list", "Show which features belong to which event ID")->callback([&chosen] {
    chosen = list;
  });
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
