#include <memory>
#include <optional>

#include "Commands.h"
#include "FileReplacement.h"
#include "Progress.h"
#include "Settings.h"

namespace tool {
namespace {

struct SaveOptions {
  std::string file;
  std::vector<std::string> features;
};

class Saver {
 public:
  Saver(Session& session, const SaveOptions& options) : session_(session), options_(options) {}

  void run() {
    FileReplacement file(options_.file == "-" ? "/dev/stdout" : options_.file);
    file.write(stepByStep());
    const std::optional<size_t> lines = settingsIn(file.path());
    file.commit();
    if (options_.file != "-") {
      summarise(lines);
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
        if (progress_) {
          progress_->clear();
        }
        session_.report(failure);
      }
      return true;
    };
  }

  std::string stepByStep() {
    const NodeMap& map = session_.map();
    const std::vector<std::string> names = options_.features.empty() ? streamableFeatures(map) : options_.features;
    progress_.emplace(session_.output(), "saving", names.size(), "features");
    std::string text;
    for (size_t done = 0; done < names.size(); ++done) {
      progress_->reach(done);
      text += settingsText(map, {names[done]}, problem());
    }
    progress_.reset();
    return text;
  }

  void summarise(std::optional<size_t> lines) {
    const Output& output = session_.output();
    if (output.json()) {
      Json json{{"file", options_.file}, {"notAvailable", notAvailable_}, {"failed", failed_}};
      if (lines) {
        json["lines"] = *lines;
      }
      output.document(json);
      return;
    }
    std::string text = options_.file + ": " + (lines ? std::to_string(*lines) + " lines saved" : "saved");
    if (notAvailable_ > 0) {
      text += ", " + std::to_string(notAvailable_) + " features not available now";
    }
    if (failed_ > 0) {
      text += ", " + std::to_string(failed_) + " failed";
    }
    output.line(text);
  }

  Session& session_;
  const SaveOptions& options_;
  std::optional<Progress> progress_;
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
  command->footer("Example:\n  oxgenapi save camera.settings --features ExposureTime,Gain");
  command->callback([&chosen, options] { chosen = [options](Session& session) { Saver(session, *options).run(); }; });
}

}  // namespace tool
