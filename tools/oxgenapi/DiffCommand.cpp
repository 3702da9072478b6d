#include <algorithm>
#include <memory>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include "Checks.h"
#include "Commands.h"
#include "Settings.h"
#include "Snapshot.h"

namespace tool {
namespace {

struct DiffOptions {
  std::string left;
  std::string right;  // empty: the device
};

std::vector<std::string> featuresOf(const std::vector<Setting>& settings) {
  std::vector<std::string> features;
  std::unordered_set<std::string> known;
  for (const Setting& setting : settings)
    if (!setting.feature.empty() && known.insert(setting.feature).second) features.push_back(setting.feature);
  return features;
}

// Reading values over all selectors moves the selectors; this puts them back.
class Selectors {
 public:
  Selectors(const NodeMap& map, const std::vector<std::string>& features) : map_(map) {
    for (const std::string& feature : features) {
      try {
        for (const std::string& selector : map.node(feature).list(NL_SelectingFeatures)) remember(selector);
      } catch (const Failure&) {
        continue;  // no such feature, or one that has no selectors: the comparison tells about it
      }
    }
  }

  void putBack() const {
    for (const auto& [name, value] : values_) {
      const Node node = map_.node(name);
      if (node.writable() && node.text() != value) node.set(value);
    }
  }

 private:
  void remember(const std::string& name) {
    if (std::none_of(values_.begin(), values_.end(), [&](const auto& item) { return item.first == name; }))
      values_.emplace_back(name, map_.node(name).text());
  }

  const NodeMap& map_;
  std::vector<std::pair<std::string, std::string>> values_;
};

// What the device has for the features of `wanted`, without the selector combinations that `wanted` does not name.
std::vector<Setting> deviceSettings(Session& session, const std::vector<Setting>& wanted) {
  const NodeMap& map = session.map();
  const std::vector<std::string> features = featuresOf(wanted);
  if (features.empty()) return {};
  const Selectors selectors(map, features);
  oxgenapi::Problems problems;
  std::vector<Setting> settings = parseSettings(map.settings(features, &problems));
  selectors.putBack();
  for (const Failure& problem : problems) session.report(problem);
  std::unordered_set<std::string> keys;
  for (const Setting& setting : wanted) keys.insert(setting.key);
  std::erase_if(settings, [&](const Setting& setting) { return !keys.contains(setting.key); });
  return settings;
}

class Comparison {
 public:
  explicit Comparison(Session& session) : session_(session) {}

  void run(const std::vector<Setting>& left, const std::vector<Setting>& right) {
    std::unordered_map<std::string, std::string> values;
    for (const Setting& setting : right)
      values[setting.key] = setting.value;  // of several lines for one setting the last one holds
    std::unordered_map<std::string, std::string> last;
    for (const Setting& setting : left) last[setting.key] = setting.value;
    for (const Setting& setting : left) {
      const auto mine = last.find(setting.key);
      if (mine == last.end()) continue;
      const auto other = values.find(setting.key);
      if (other == values.end())
        add(setting.key, mine->second, std::nullopt);
      else if (other->second != mine->second)
        add(setting.key, mine->second, other->second);
      values.erase(setting.key);
      last.erase(mine);
    }
    for (const Setting& setting : right) {
      if (const auto other = values.find(setting.key); other != values.end()) {
        add(setting.key, std::nullopt, other->second);
        values.erase(other);
      }
    }
    if (session_.output().json()) session_.output().document(differences_);
  }

 private:
  void add(const std::string& key, const std::optional<std::string>& left, const std::optional<std::string>& right) {
    session_.fail();
    const Output& output = session_.output();
    if (output.json()) {
      differences_.push_back({{"setting", key},
                              {"left", left ? Json(*left) : Json(nullptr)},
                              {"right", right ? Json(*right) : Json(nullptr)}});
      return;
    }
    if (left) output.line(output.bad("- " + key + " = \"" + *left + "\""));
    if (right) output.line(output.good("+ " + key + " = \"" + *right + "\""));
  }

  Session& session_;
  Json differences_ = Json::array();
};

// What a file holds.
struct Recorded {
  explicit Recorded(const std::string& path) {
    const std::string text = readFile(path);
    isSnapshot = tool::isSnapshot(text);
    try {
      settings = isSnapshot ? parseSnapshot(text) : parseSettings(text);
    } catch (const Failure& failure) {
      throw Failure(failure.code(), failure.what(), path);
    }
  }
  bool isSnapshot;
  std::vector<Setting> settings;
};

// What the device has now for what is wanted, recorded in the same way.
std::vector<Setting> ofDevice(Session& session, const Recorded& wanted) {
  if (!wanted.isSnapshot) return deviceSettings(session, wanted.settings);
  return parseSnapshot(snapshotText(session.map(), featuresOf(wanted.settings),
                                    [&](const Failure& failure) { session.report(failure); }));
}

void run(Session& session, const DiffOptions& options) {
  const Recorded left(options.left);
  if (options.right.empty()) {
    Comparison(session).run(left.settings, ofDevice(session, left));
    return;
  }
  const Recorded right(options.right);
  if (left.isSnapshot != right.isSnapshot)
    throw UsageError("a snapshot and a settings text write values in two ways and cannot be compared");
  Comparison(session).run(left.settings, right.settings);
}

}  // namespace

void addDiff(const Command& program) {
  auto options = std::make_shared<DiffOptions>();
  const Command command = program.subcommand(
      "diff", "Compare two settings texts or two snapshots, or one with the device; exit status 1 if they differ");
  command.option("left", options->left, "Settings file or snapshot").required().type("FILE").check(existingFile());
  command.option("right", options->right, "The same, of the same kind (default: the device)")
      .type("FILE")
      .check(existingFile());
  command.footer("Example:\n  oxgenapi diff camera.settings");
  command.runs([options](Session& session) { run(session, *options); });
}

}  // namespace tool
