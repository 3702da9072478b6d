#include <memory>

#include "Commands.h"
#include "Settings.h"

namespace tool {
namespace {

struct LoadOptions {
  std::string file;
  bool validate = false;
  bool stopOnError = false;
};

void run(Session& session, const LoadOptions& options) {
  Json problems = Json::array();
  bool stopped = false;
  const ProblemHandler problem = [&](const Failure& failure, int64_t) {
    problems.push_back(toJson(failure));
    session.report(failure);
    stopped = options.stopOnError;
    return !stopped;
  };
  try {
    loadSettings(session.map(), options.file, options.validate, problem);
  } catch (const Failure&) {
    if (!stopped) {
      throw;
    }
    // The problem that stopped the load has been reported.
  }
  if (session.output().json()) {
    session.output().document({{"file", options.file}, {"stopped", stopped}, {"problems", problems}});
  } else if (problems.empty()) {
    session.output().line(options.file + " loaded");
  }
}

}  // namespace

void addLoad(CLI::App& app, Action& chosen) {
  auto options = std::make_shared<LoadOptions>();
  CLI::App* command = app.add_subcommand("load", "Write the values of a settings text to the device");
  command->add_option("file", options->file, "Settings file")->required()->type_name("FILE");
  command->add_flag("--validate", options->validate, "Read every value back and compare");
  command->add_flag("--stop-on-error", options->stopOnError, "Stop at the first line that fails");
  command->footer("Example:\n  oxgenapi load camera.settings --validate");
  command->callback([&chosen, options] { chosen = [options](Session& session) { run(session, *options); }; });
}

}  // namespace tool
