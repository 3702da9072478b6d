#include <algorithm>
#include <memory>

#include "Checks.h"
#include "Commands.h"
#include "Interrupt.h"
#include "Progress.h"
#include "Settings.h"

namespace tool {
namespace {

struct LoadOptions {
  std::string file;
  bool validate = false;
  bool stopOnError = false;
};

// Loads in growing chunks to show progress and problems early. Each chunk is padded with empty lines, so that line
// numbers in messages match the file.
class Loader {
 public:
  Loader(Session& session, const LoadOptions& options) : session_(session), options_(options) {}

  void run() {
    const std::string text = readFile(options_.file == "-" ? "/dev/stdin" : options_.file);
    if (text.find('\0') != text.npos)
      throw Failure(kFileFailed, "holds zero bytes, which settings do not have", options_.file);
    const auto lines = static_cast<size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
    Progress progress(session_.output(), "loading", lines, "lines");
    const Interrupt interrupt;
    size_t done = 0;
    size_t loadedTo = 0;
    for (size_t begin = 0; begin < text.size() && !stopped_;) {
      if (interrupt.requested())
        throw Failure(OXGENAPI_E_UNSPECIFIED, "stopped by the user before line " + std::to_string(done + 1));
      progress.reach(done);
      std::string part(done, '\n');
      const size_t count = std::max<size_t>(1, done / kPartOfDone);
      size_t end = begin;
      for (size_t line = 0; line < count && end < text.size(); ++line, ++done)
        end = std::min(text.find('\n', end), text.size() - 1) + 1;
      part.append(text, begin, end - begin);
      for (const Failure& problem : load(part)) {
        progress.clear();
        problems_.push_back(toJson(problem));
        session_.report(problem);
        stopped_ = options_.stopOnError;
      }
      begin = end;
      loadedTo = end;
    }
    progress.clear();
    summarise(parseSettings(text).size(), parseSettings(std::string_view(text).substr(0, loadedTo)).size());
  }

 private:
  // The problems of a part; where it shall stop, the first.
  oxgenapi::Problems load(const std::string& part) {
    if (!options_.stopOnError) return session_.map().loadSettingsText(part, options_.validate);
    try {
      return session_.map().loadSettingsText(part, options_.validate, oxgenapi::OnProblem::stop);
    } catch (const Failure& failure) {
      return {failure};
    }
  }

  // `tried`: the lines up to where the loading ended; each has one problem at most.
  void summarise(size_t lines, size_t tried) const {
    const size_t loaded = tried - std::min(tried, problems_.size());
    const Output& output = session_.output();
    if (output.json()) {
      output.document({{"file", options_.file},
                       {"lines", lines},
                       {"loaded", loaded},
                       {"stopped", stopped_},
                       {"problems", problems_}});
      return;
    }
    std::string text = options_.file + ": ";
    text += loaded == lines ? counted(lines, "line") + " loaded"
                            : std::to_string(loaded) + " of " + counted(lines, "line") + " loaded";
    if (!problems_.empty())
      text += stopped_ ? ", stopped at the first problem" : ", " + counted(problems_.size(), "problem");
    output.line(text);
  }

  static constexpr size_t kPartOfDone = 64;

  Session& session_;
  const LoadOptions& options_;
  bool stopped_ = false;
  Json problems_ = Json::array();
};

}  // namespace

void addLoad(const Command& program) {
  auto options = std::make_shared<LoadOptions>();
  const Command command = program.subcommand("load", "Write the values of a settings text to the device");
  command.option("file", options->file, "Settings file; -: standard input")
      .required()
      .type("FILE")
      .check(existingFileOrStream());
  command.flag("--validate", options->validate, "Read every value back and compare");
  command.flag("--stop-on-error", options->stopOnError, "Stop at the first line that fails");
  command.footer("Example:\n  oxgenapi load camera.settings --validate");
  command.runs([options](Session& session) { Loader(session, *options).run(); });
}

}  // namespace tool
