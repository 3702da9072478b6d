#include <algorithm>
#include <chrono>
#include <csignal>
#include <memory>
#include <thread>

#include "Changes.h"
#include "Commands.h"
#include "Value.h"

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

volatile std::sig_atomic_t interrupted = 0;

struct WatchOptions {
  std::vector<std::string> names;
  int pollMs = 100;
  double seconds = 0;  // 0: until interrupted
};

int64_t elapsedMs(Clock::time_point since) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - since).count();
}

void show(Session& session, const Node& node, int64_t timeMs) {
  const Output& output = session.output();
  try {
    if (output.json()) {
      output.record({{"timeMs", timeMs}, {"name", node.name()}, {"value", valueJson(node)}});
    } else {
      output.line(output.dim(std::to_string(timeMs) + " ms  ") + output.name(node.name()) + " = " + valueText(node));
      std::fflush(stdout);
    }
  } catch (const Failure& failure) {
    if (output.json()) {
      output.record({{"timeMs", timeMs}, {"name", node.name()}, {"error", toJson(failure)}});
    }
    session.report(failure);
  }
}

void run(Session& session, const WatchOptions& options) {
  const NodeMap& map = session.map();
  Changes changes(map, options.names);
  interrupted = 0;
  const auto previous = std::signal(SIGINT, [](int) { interrupted = 1; });
  const auto start = Clock::now();
  auto polled = start;
  for (const std::string& name : options.names) {
    show(session, map.node(name), 0);
  }
  while (true) {
    for (const Node* node : changes.take()) {
      show(session, *node, elapsedMs(start));
    }
    const double left = options.seconds - std::chrono::duration<double>(Clock::now() - start).count();
    if (interrupted != 0 || (options.seconds > 0 && left <= 0)) {
      break;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(options.pollMs));
    const int64_t sinceMs = elapsedMs(polled);
    polled += std::chrono::milliseconds(sinceMs);
    map.poll(static_cast<int32_t>(std::min<int64_t>(sinceMs, INT32_MAX)));
  }
  std::signal(SIGINT, previous);
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
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  command->footer("Example:\n  oxgenapi watch DeviceTemperature --poll 500 --seconds 10");
  command->callback([&chosen, options] { chosen = [options](Session& session) { run(session, *options); }; });
}

}  // namespace tool
