#include <filesystem>
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

class Loader {
 public:
  Loader(Session& session, const LoadOptions& options) : session_(session), options_(options) {}

  void run() {
    const std::optional<size_t> lines = linesOf(options_.file);
    const uint32_t code =
        NMLoadSetEx(session_.map().handle(), options_.file.c_str(), options_.validate, &onProblem, this);
    if (!stopped_) {  // else the problem that stopped it has been reported
      check(code, options_.file);
    }
    summarise(lines);
  }

 private:
  // Nothing for a pipe or terminal, which can be read only once.
  static std::optional<size_t> linesOf(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
      return std::nullopt;
    }
    return parseSettings(readFile(path)).size();
  }

  static bool onProblem(NODE handle, uint32_t code, void* self) noexcept {
    try {
      const Failure failure = oxgenapi::lastError(code);
      const std::string feature = handle == nullptr ? "" : Node(oxgenapi::Handle<NODE>::share(handle)).name();
      return static_cast<Loader*>(self)->goOn({code, failure.what(), feature});
    } catch (...) {
      return false;  // nothing can be told any more
    }
  }

  bool goOn(const Failure& problem) {
    problems_.push_back(toJson(problem));
    session_.report(problem);
    stopped_ = options_.stopOnError;
    return !stopped_;
  }

  void summarise(std::optional<size_t> lines) const {
    const Output& output = session_.output();
    if (output.json()) {
      Json json{{"file", options_.file}, {"stopped", stopped_}, {"problems", problems_}};
      if (lines) {
        json["lines"] = *lines;
      }
      output.document(json);
      return;
    }
    std::string text = options_.file + ": " + (lines ? counted(*lines, "line") : "settings");
    text += stopped_ ? ", stopped at the first problem" : " loaded";
    if (!stopped_ && !problems_.empty()) {
      text += ", " + counted(problems_.size(), "problem");
    }
    output.line(text);
  }

  Session& session_;
  const LoadOptions& options_;
  bool stopped_ = false;
  Json problems_ = Json::array();
};

}  // namespace

void addLoad(CLI::App& app, Action& chosen) {
  auto options = std::make_shared<LoadOptions>();
  CLI::App* command = app.add_subcommand("load", "Write the values of a settings text to the device");
  command->add_option("file", options->file, "Settings file")->required()->type_name("FILE");
  command->add_flag("--validate", options->validate, "Read every value back and compare");
  command->add_flag("--stop-on-error", options->stopOnError, "Stop at the first line that fails");
  command->footer("Example:\n  oxgenapi load camera.settings --validate");
  command->callback([&chosen, options] { chosen = [options](Session& session) { Loader(session, *options).run(); }; });
}

}  // namespace tool
