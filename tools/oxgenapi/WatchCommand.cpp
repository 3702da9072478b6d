#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>

#include "Assignment.h"
#include "Changes.h"
#include "Commands.h"
#include "Interrupt.h"
#include "Value.h"

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr double kLongestWatch = 1e9;                   // seconds; about thirty years
constexpr std::chrono::milliseconds kLongestSleep{50};  // an interrupt waits no longer

struct WatchOptions {
  std::vector<std::string> names;
  std::vector<std::string> assignments;  // carried out once the first values are shown
  int pollMs = 100;
  double seconds = 0;  // 0: until interrupted
};

int64_t elapsedMs(Clock::time_point since) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - since).count();
}

void show(Session& session, const Node& node, int64_t timeMs) {
  const Output& output = session.output();
  try {
    // Features and entries come and go.
    const bool readable = node.readable();
    const std::string access = accessName(node.access());
    if (output.json()) {
      const Json value = readable ? valueJson(node) : Json();
      output.record({{"timeMs", timeMs}, {"name", node.name()}, {"access", access}, {"value", value}});
    } else {
      output.line(output.dim(std::to_string(timeMs) + " ms  ") + output.name(node.name()) +
                  (readable ? " = " + valueText(node) : " is not readable (" + access + ")"));
      std::fflush(stdout);
    }
  } catch (const Failure& failure) {
    if (output.json()) {
      output.record({{"timeMs", timeMs}, {"name", node.name()}, {"error", toJson(failure)}});
    }
    session.report(failure);
  }
}

// False: interrupted.
bool sleepUntil(Clock::time_point end, const Interrupt& interrupt) {
  while (!interrupt.requested() && Clock::now() < end) {
    std::this_thread::sleep_for(std::min<Clock::duration>(end - Clock::now(), kLongestSleep));
  }
  return !interrupt.requested();
}

void run(Session& session, const WatchOptions& options) {
  const std::vector<Assignment> assignments = parseAssignments(options.assignments);
  const NodeMap& map = session.map();
  Changes changes(map, options.names);
  const Interrupt interrupt;
  const auto start = Clock::now();
  auto polled = start;
  for (const std::string& name : options.names) {
    show(session, map.node(name), 0);
  }
  for (const auto& [name, value] : assignments) {
    map.node(name).set(value);
  }
  const auto end =
      options.seconds > 0
          ? start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(options.seconds))
          : Clock::time_point::max();
  while (true) {
    for (const Node* node : changes.take()) {
      show(session, *node, elapsedMs(start));
    }
    if (!sleepUntil(std::min(Clock::now() + std::chrono::milliseconds(options.pollMs), end), interrupt) ||
        Clock::now() >= end) {
      break;
    }
    const int64_t sinceMs = elapsedMs(polled);
    polled += std::chrono::milliseconds(sinceMs);
    map.poll(static_cast<int32_t>(std::min<int64_t>(sinceMs, INT32_MAX)));
  }
}

}  // namespace

void addWatch(CLI::App& app, Action& chosen) {
  auto options = std::make_shared<WatchOptions>();
  CLI::App* command = app.add_subcommand("watch", "Show features whenever they change, polling those that ask for it");
  command->add_option("names", options->names, "Features to watch")->required()->type_name("NAME");
  command->add_option("--poll", options->pollMs, "Milliseconds between polls")
      ->check(CLI::Range(1, 3'600'000))
      ->capture_default_str();
  command->add_option("--seconds", options->seconds, "Stop after this time; 0: on interrupt")
      ->check(CLI::Range(0.0, kLongestWatch))
      ->capture_default_str();
  command->add_option("--set", options->assignments, "Write this once the first values are shown; a command: 1")
      ->type_name("NAME=VALUE")
      ->allow_extra_args(false);
  command->footer("Example:\n  oxgenapi watch DeviceTemperature --poll 500 --seconds 10");
  command->callback([&chosen, options] { chosen = [options](Session& session) { run(session, *options); }; });
}

}  // namespace tool
