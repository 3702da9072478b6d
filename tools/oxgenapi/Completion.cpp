#include "Completion.h"

#include <algorithm>

#include "Checks.h"

namespace tool {
namespace {

using Words = std::vector<std::string>;

const CLI::Option* findOption(const CLI::App& app, const std::string& word) {
  const std::string name = word.substr(0, word.find('='));
  for (const CLI::App* level = &app; level != nullptr; level = level->get_parent())
    if (const CLI::Option* option = level->get_option_no_throw(name)) return option;
  return nullptr;
}

bool takesValue(const CLI::Option& option) { return option.get_items_expected_max() > 0; }

std::vector<CLI::App*> commandsOf(CLI::App& app) {
  return app.get_subcommands([](const CLI::App* each) { return !each->get_group().empty(); });
}

CLI::App* commandOf(CLI::App& app, const std::string& name) {
  const std::vector<CLI::App*> commands = commandsOf(app);
  const auto found = std::find_if(commands.begin(), commands.end(), [&](auto* each) { return each->check_name(name); });
  return found == commands.end() ? nullptr : *found;
}

// The option without a name that the next word would go to, after so many of them.
const CLI::Option* positional(const CLI::App& app, int count) {
  for (const CLI::Option* option : app.get_options())
    if (option->get_positional() && (count -= option->get_items_expected_max()) < 0) return option;
  return nullptr;
}

// The words of a command line, and what its last one is.
struct Place {
  CLI::App* command;
  const CLI::Option* option = nullptr;  // whose value the last word is
};

Place placeOf(CLI::App& app, const Words& words) {
  Place place{&app};
  int positionals = 0;
  for (size_t index = 0; index + 1 < words.size(); ++index) {
    const std::string& word = words[index];
    if (place.option != nullptr) {
      place.option = nullptr;
    } else if (word.starts_with("-")) {
      const CLI::Option* option = findOption(*place.command, word);
      place.option = option != nullptr && takesValue(*option) && word.find('=') == word.npos ? option : nullptr;
    } else if (CLI::App* below = commandOf(*place.command, word)) {
      place.command = below;
    } else {
      ++positionals;
    }
  }
  if (place.option == nullptr && (words.empty() || !words.back().starts_with("-")))
    place.option = positional(*place.command, positionals);
  return place;
}

class Values {
 public:
  Values(const DeviceWords& device, CLI::App& app) : device_(device), app_(app) {}

  // What fits an option's value, as the name of its type says. `last`: what has been typed of it.
  Words of(const CLI::Option& option, const std::string& last) const {
    std::string type = option.get_type_name();
    if (Words words = wordsOf(type); !words.empty()) return words;
    const size_t listMark = type.find(",...");
    if (listMark == type.npos) return single(type, last);
    // Of a list only the last element is completed.
    const size_t comma = last.rfind(',');
    const std::string settled = comma == last.npos ? "" : last.substr(0, comma + 1);
    Words words = single(type.substr(0, listMark), last.substr(settled.size()));
    for (std::string& word : words) word.insert(0, settled);
    return words;
  }

 private:
  Words single(const std::string& type, const std::string& last) const {
    if (type == "NAME" || type == "FEATURE") return names(last);
    if (type == "NAME=VALUE") {
      const size_t equals = last.find('=');
      Words words = equals == last.npos ? names(last) : device_.valuesOf(last.substr(0, equals));
      for (std::string& word : words) equals == last.npos ? word.append("=") : word.insert(0, last, 0, equals + 1);
      return words;
    }
    if (type == "TOPIC") {
      Words words;
      for (const CLI::App* command : commandsOf(app_)) words.push_back(command->get_name());
      return words;
    }
    return type == "COMMAND"      ? device_.features(NT_Command)
           : type == "CATEGORY"   ? device_.features(NT_Category)
           : type == "EVENT"      ? device_.valuesOf("EventSelector")
           : type == "CHUNK"      ? device_.valuesOf("ChunkSelector")
           : type == "CAMERA"     ? DeviceWords::cameras()
           : type == "DEVICEFILE" ? device_.valuesOf("FileSelector")
                                  : Words();
  }

  // Features, or any node where no feature fits.
  Words names(const std::string& last) const {
    Words words = device_.features();
    std::erase_if(words, [&](const std::string& name) { return !name.starts_with(last); });
    return words.empty() ? device_.nodes() : words;
  }

  const DeviceWords& device_;
  CLI::App& app_;
};

void addOptions(std::vector<Candidate>& found, const CLI::App& app) {
  for (const CLI::App* level = &app; level != nullptr; level = level->get_parent()) {
    for (const CLI::Option* option : level->get_options())
      for (const std::string& name : option->get_lnames()) found.push_back({"--" + name, option->get_description()});
  }
}

}  // namespace

Completions completions(CLI::App& app, const Words& words, const DeviceWords& device) {
  const std::string last = words.empty() ? "" : words.back();
  const auto [command, option] = placeOf(app, words);
  Completions result;
  const bool beginsOption = last.starts_with("-") && (option == nullptr || option->get_positional());
  if (beginsOption) {
    addOptions(result.candidates, *command);
  } else if (option != nullptr) {
    const std::string type = option->get_type_name();
    result.wantsFile = type == "FILE" || type == "MEMBER=FILE";
    for (std::string& word : Values(device, app).of(*option, last)) result.candidates.push_back({std::move(word), {}});
  } else {
    for (const CLI::App* each : commandsOf(*command))
      result.candidates.push_back({each->get_name(), each->get_description()});
  }
  std::erase_if(result.candidates, [&](const Candidate& candidate) { return !candidate.word.starts_with(last); });
  return result;
}

}  // namespace tool
