#include <memory>
#include <optional>

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
  const std::optional<size_t> lines = settingsIn(options.file);
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
  const Output& output = session.output();
  if (output.json()) {
    Json json{{"file", options.file}, {"stopped", stopped}, {"problems", problems}};
    if (lines) {
      json["lines"] = *lines;
    }
    output.document(json);
    return;
  }
  std::string text = options.file + ": " + (lines ? std::to_string(*lines) + " lines" : "settings");
  text += stopped ? ", stopped at the first problem" : " loaded";
  if (!stopped && !problems.empty()) {
    text += ", " + std::to_string(problems.size()) + " problems";
  }
  output.line(text);
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
