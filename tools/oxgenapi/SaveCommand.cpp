#include <unistd.h>

#include <cstdio>
#include <memory>

#include "Commands.h"
#include "FileReplacement.h"
#include "Settings.h"

namespace tool {
namespace {

struct SaveOptions {
  std::string file;
  std::vector<std::string> features;
  bool progress = false;
};

class Saver {
 public:
  Saver(Session& session, const SaveOptions& options) : session_(session), options_(options) {}

  void run() {
    FileReplacement file(options_.file == "-" ? "/dev/stdout" : options_.file);
    if (options_.progress) {
      file.write(stepByStep());
    } else {
      saveSettings(session_.map(), file.path(), options_.features, problem());
    }
    file.commit();
    if (session_.output().json() && options_.file != "-") {
      session_.output().document({{"file", options_.file}, {"notAvailable", notAvailable_}, {"failed", failed_}});
    } else if (options_.file != "-" && notAvailable_ > 0) {
      session_.output().line(std::to_string(notAvailable_) + " features are not available now and were left out");
    }
  }

 private:
  // Where nobody named the feature, one that the device does not offer now is left out without a failure.
  ProblemHandler problem() {
    return [this](const Failure& failure, int64_t access) {
      if (options_.features.empty() && (access == 0 || access == AM_NotAvailable)) {
        ++notAvailable_;
      } else {
        ++failed_;
        session_.report(failure);
      }
      return true;
    };
  }

  std::string stepByStep() {
    const NodeMap& map = session_.map();
    const std::vector<std::string> names = options_.features.empty() ? streamableFeatures(map) : options_.features;
    const bool terminal = isatty(STDERR_FILENO) == 1;
    std::string text;
    for (size_t index = 0; index < names.size(); ++index) {
      const std::string step = "[" + std::to_string(index + 1) + "/" + std::to_string(names.size()) + "] ";
      std::fputs((terminal ? "\r\x1b[K" + step + names[index] : step + names[index] + "\n").c_str(), stderr);
      text += settingsText(map, {names[index]}, problem());
    }
    std::fputs(terminal ? "\r\x1b[K" : "", stderr);
    return text;
  }

  Session& session_;
  const SaveOptions& options_;
  int notAvailable_ = 0;
  int failed_ = 0;
};

}  // namespace

void addSave(CLI::App& app, Action& chosen) {
  auto options = std::make_shared<SaveOptions>();
  CLI::App* command = app.add_subcommand("save", "Save feature values, over all selectors, as a settings text");
  command->add_option("file", options->file, "Settings file; -: standard output")->required()->type_name("FILE");
  command->add_option("--features", options->features, "Features to save, in this order (default: all streamable)")
      ->delimiter(',')
      ->type_name("A,B");
  command->add_flag("--progress", options->progress, "Tell on standard error which feature is being saved");
  command->footer("Example:\n  oxgenapi save camera.settings --features ExposureTime,Gain");
  command->callback([&chosen, options] { chosen = [options](Session& session) { Saver(session, *options).run(); }; });
}

}  // namespace tool
