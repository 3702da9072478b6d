#include <chrono>
#include <memory>
#include <thread>

#include "Checks.h"
#include "Commands.h"
#include "Value.h"

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kDonePause{10};

struct ExecOptions {
  std::string name;
  double seconds = 5;
};

void run(Session& session, const ExecOptions& options) {
  const Node node = session.map().node(options.name);
  if (node.type() != NT_Command)
    throw Failure(OXGENAPI_E_NOT_SUPPORTED, "is not a command", options.name);  // a write of 1 would change a number
  node.execute();
  // A command that cannot be read is done as soon as it is written.
  bool done = !node.readable() || node.boolean();
  const auto end = Clock::now() + std::chrono::duration<double>(options.seconds);
  while (!done && Clock::now() < end) {
    std::this_thread::sleep_for(kDonePause);
    done = node.boolean();
  }
  if (session.output().json())
    session.output().document({{"name", options.name}, {"done", done}});
  else
    session.output().line(session.output().name(options.name) + (done ? " done" : " started, not done yet"));
}

}  // namespace

void addExec(const Command& program) {
  auto options = std::make_shared<ExecOptions>();
  const Command command = program.subcommand("exec", "Execute a command and wait until the device has done it");
  command.option("name", options->name, "Command").required().type("COMMAND");
  command.option("--wait", options->seconds, "Longest wait in seconds; 0: none").check(atLeast(0)).showDefault();
  command.footer("Example:\n  oxgenapi exec AcquisitionStart");
  command.runs([options](Session& session) { run(session, *options); });
}

}  // namespace tool
