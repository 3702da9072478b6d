#include <memory>

#include "Changes.h"
#include "Commands.h"
#include "FileReplacement.h"
#include "Progress.h"
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
    if (options_.file == "-") {
      session_.output().data(settings());
      warn();
      return;
    }
    FileReplacement file(options_.file);  // whether it can be written shows before the device is asked
    const std::string text = settings();
    file.write(text);
    file.commit();
    warn();
    summarise(parseSettings(text).size());
  }

 private:
  std::vector<std::string> features() {
    if (!options_.features.empty()) return options_.features;
    const NodeMap& map = session_.map();
    std::vector<std::string> names = map.nodeNames();
    std::erase_if(names, [&](const std::string& name) {
      try {
        return !map.node(name).infoBoolean(NI_IsStreamable);
      } catch (const Failure&) {
        return true;  // a node without a handle has no value to save
      }
    });
    if (names.empty()) {
      throw Failure(
          OXGENAPI_E_NOT_SUPPORTED,
          "The description marks no feature as part of the settings. Name what to save: --features " + examples());
    }
    return names;
  }

  // Some features that could be saved, as --features wants them.
  std::string examples() {
    constexpr size_t kSome = 3;
    std::string list;
    size_t count = 0;
    for (const std::string& name : valueFeatures(session_.map())) {
      if (count < kSome && session_.map().node(name).access() == AM_ReadWrite) {
        list += (list.empty() ? "" : ",") + name;
        ++count;
      }
    }
    return list.empty() ? "A,B" : list;
  }

  // Feature by feature, so that problems show when they occur.
  std::string settings() {
    const std::vector<std::string> names = features();
    Progress progress(session_.output(), "saving", names.size(), "features");
    std::string text;
    for (size_t done = 0; done < names.size(); ++done) {
      if (options_.progress)
        progress.show(done);
      else
        progress.reach(done);
      oxgenapi::Problems problems;
      try {
        const std::string lines = session_.map().settings({names[done]}, &problems);
        if (!comesBack(names[done], lines)) altered_.push_back(names[done]);
        text += lines;
      } catch (const Failure& failure) {
        problems.push_back(failure);
      }
      for (const Failure& problem : problems) {
        progress.clear();
        note(Failure(problem.code(), problem.what(), names[done]));
      }
    }
    return text;
  }

  // Text that loading will not bring back is not noticed by anybody later, not even when it is read back.
  void warn() const {
    if (altered_.empty() || session_.output().json()) return;
    std::string names;
    for (const std::string& name : altered_) names += (names.empty() ? "" : ", ") + name;
    session_.output().note("loading will not bring back the text of " + names +
                           ": settings hold only ASCII without quotes, backslashes and line feeds");
  }

  void note(const Failure& problem) {
    if (isExpected(problem.feature())) {
      ++notAvailable_;
      return;
    }
    problems_.push_back(toJson(problem));
    session_.report(problem);
  }

  // Where nobody named the feature, one that the device does not offer now is left out without a failure.
  bool isExpected(const std::string& name) {
    if (!options_.features.empty()) return false;
    const int64_t access = session_.map().node(name).access();
    return access == 0 || access == AM_NotAvailable;
  }

  void summarise(size_t lines) const {
    const Output& output = session_.output();
    if (output.json()) {
      output.document({{"file", options_.file},
                       {"lines", lines},
                       {"notAvailable", notAvailable_},
                       {"altered", altered_},
                       {"problems", problems_}});
      return;
    }
    std::string text = options_.file + ": " + counted(lines, "line") + " saved";
    if (notAvailable_ > 0) text += ", " + counted(notAvailable_, "feature") + " not available now";
    if (!problems_.empty()) text += ", " + counted(problems_.size(), "problem");
    output.line(text);
  }

  Session& session_;
  const SaveOptions& options_;
  size_t notAvailable_ = 0;
  std::vector<std::string> altered_;  // features whose text does not come back
  Json problems_ = Json::array();
};

}  // namespace

void addSave(const Command& program) {
  auto options = std::make_shared<SaveOptions>();
  const Command command = program.subcommand("save", "Save feature values, over all selectors, as a settings text");
  command.option("file", options->file, "Settings file; -: standard output").required().type("FILE");
  command.option("--features", options->features, "Features to save, in this order (default: all streamable)")
      .separator(',')
      .type("NAME,...");
  command.flag("--progress", options->progress, "Show each step on standard error, also where it takes no time");
  command.footer("Example:\n  oxgenapi save camera.settings --features ExposureTime,Gain");
  command.runs([options](Session& session) { Saver(session, *options).run(); });
}

}  // namespace tool
