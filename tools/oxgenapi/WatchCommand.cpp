#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <thread>
#include <unordered_set>

#include "Assignment.h"
#include "Checks.h"
#include "Commands.h"
#include "Interrupt.h"
#include "Value.h"

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int64_t kLongestWatch = 1'000'000'000;        // seconds; about thirty years
constexpr std::chrono::milliseconds kLongestSleep{50};  // an interrupt waits no longer

struct WatchOptions {
  std::vector<std::string> names;
  std::vector<std::string> assignments;  // carried out once the first values are shown
  int pollMs = 100;
  double seconds = 0;  // 0: until interrupted
};

// The features and all that they are made of, at any depth: what has to be read again for a fresh look.
std::vector<Node> sourcesOf(const NodeMap& map, const std::vector<std::string>& features) {
  std::vector<Node> sources;
  std::vector<std::string> names = features;
  std::unordered_set<std::string> known(names.begin(), names.end());
  for (size_t next = 0; next < names.size(); ++next) {
    const auto node = map.tryNode(names[next]);
    if (!node) continue;  // a helper of the description without a handle
    sources.push_back(*node);
    for (const std::string& child : node->list(NL_Children))
      if (known.insert(child).second) names.push_back(child);
  }
  return sources;
}

// Reads features from the device, whatever the library remembers, and shows what differs from the last look.
class Watcher final : public PortWatcher {
 public:
  Watcher(Session& session, const std::vector<std::string>& names)
      : session_(session), sources_(sourcesOf(session.map(), names)) {
    for (const std::string& name : names) features_.push_back({session.map().node(name), {}, {}});
    session_.port().watch(this);
  }
  Watcher(const Watcher&) = delete;
  Watcher& operator=(const Watcher&) = delete;
  ~Watcher() override { session_.port().watch(nullptr); }

  bool mayAccess() override { return true; }
  void accessed(int64_t, int64_t) override { ++answers_; }

  // Throws Failure when the device answers no access any more.
  void look(int64_t timeMs) {
    answers_ = 0;
    std::vector<std::pair<Feature*, Failure>> failures;
    for (const Node& source : sources_) source.invalidate();
    for (Feature& feature : features_) {
      try {
        show(feature, timeMs);
      } catch (const Failure& failure) {
        failures.emplace_back(&feature, failure);
      }
    }
    if (!failures.empty() && answers_ == 0 && session_.port().failure()) {
      const Failure& first = failures.front().second;
      throw Failure(first.code(), "The device does not answer any more: " + std::string(first.what()));
    }
    for (const auto& [feature, failure] : failures) showFailure(*feature, failure, timeMs);
  }

 private:
  struct Feature {
    Node node;
    std::string access;
    std::optional<std::string> shown;  // the last value or failure
  };

  // Features and entries come and go: one that is not readable has no value.
  void show(Feature& feature, int64_t timeMs) {
    const Output& output = session_.output();
    const bool readable = feature.node.readable();
    const std::string access = accessName(feature.node.access());
    const Json json = readable && output.json() ? valueJson(feature.node) : Json();
    const std::string text = output.json() ? json.dump(-1, ' ', false, Json::error_handler_t::replace)
                             : readable    ? valueText(feature.node)
                                           : "";
    if (feature.shown == text && feature.access == access) return;
    feature.shown = text;
    feature.access = access;
    if (output.json()) {
      output.record({{"timeMs", timeMs}, {"name", feature.node.name()}, {"access", access}, {"value", json}});
    } else {
      output.line(output.dim(std::to_string(timeMs) + " ms  ") + output.name(feature.node.name()) +
                  (readable ? " = " + text : " is not readable (" + access + ")"));
      std::fflush(stdout);
    }
  }

  void showFailure(Feature& feature, const Failure& failure, int64_t timeMs) {
    if (feature.access.empty() && feature.shown == failure.what()) return;
    feature.shown = failure.what();
    feature.access.clear();
    if (session_.output().json())
      session_.output().record({{"timeMs", timeMs}, {"name", feature.node.name()}, {"error", toJson(failure)}});
    session_.report(failure);
  }

  Session& session_;
  std::vector<Node> sources_;
  std::vector<Feature> features_;
  uint64_t answers_ = 0;
};

// False: interrupted.
bool sleepUntil(Clock::time_point end, const Interrupt& interrupt) {
  while (!interrupt.requested() && Clock::now() < end)
    std::this_thread::sleep_for(std::min<Clock::duration>(end - Clock::now(), kLongestSleep));
  return !interrupt.requested();
}

void run(Session& session, const WatchOptions& options) {
  const std::vector<Assignment> assignments = parseAssignments(options.assignments);
  if (assignments.empty()) session.onlyRead();
  const NodeMap& map = session.map();
  Watcher watcher(session, options.names);
  const Interrupt interrupt;
  const auto start = Clock::now();
  const auto end =
      options.seconds > 0
          ? start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(options.seconds))
          : Clock::time_point::max();
  watcher.look(0);
  for (const auto& [name, value] : assignments) map.node(name).set(value);
  session.keep();  // another run may want to change the camera while this one watches
  auto next = assignments.empty() ? start + std::chrono::milliseconds(options.pollMs) : start;
  while (sleepUntil(std::min(next, end), interrupt) && Clock::now() < end) {
    const auto looked = Clock::now();
    watcher.look(std::chrono::duration_cast<std::chrono::milliseconds>(looked - start).count());
    next = looked + std::chrono::milliseconds(options.pollMs);
  }
}

}  // namespace

void addWatch(const Command& program) {
  auto options = std::make_shared<WatchOptions>();
  const Command command = program.subcommand("watch", "Read features again and again and show each change");
  command.option("names", options->names, "Features to watch").required().type("NAME");
  command.option("--poll", options->pollMs, "Milliseconds between two looks at the device")
      .check(between(1, 3'600'000))
      .showDefault();
  command.option("--seconds", options->seconds, "Stop after this time; 0: on Ctrl-C")
      .check(between(0, kLongestWatch))
      .showDefault();
  command.option("--set", options->assignments, "Write this once the first values are shown; NAME=1 executes a command")
      .type("NAME=VALUE")
      .oneValueEach();
  command.footer("Example:\n  oxgenapi watch DeviceTemperature --poll 500 --seconds 10");
  command.runs([options](Session& session) { run(session, *options); });
}

}  // namespace tool
