#include "Completion.h"

#include <algorithm>

namespace tool {
namespace {

bool wantsFeature(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  return type == "NAME" || type == "NAME=VALUE" || type == "FEATURE" || type == "A,B";
}

const CLI::Option* findOption(const CLI::App& app, const std::string& word) {
  const std::string name = word.substr(0, word.find('='));
  for (const CLI::App* level = &app; level != nullptr; level = level->get_parent()) {
    if (const CLI::Option* option = level->get_option_no_throw(name)) {
      return option;
    }
  }
  return nullptr;
}

bool takesValue(const CLI::Option& option) {
  return option.get_items_expected_max() > 0;
}

std::vector<CLI::App*> commandsOf(CLI::App& app) {
  return app.get_subcommands([](const CLI::App* each) { return !each->get_group().empty(); });
}

CLI::App* commandOf(CLI::App& app, const std::string& name) {
  const std::vector<CLI::App*> commands = commandsOf(app);
  const auto found = std::find_if(commands.begin(), commands.end(), [&](auto* each) { return each->check_name(name); });
  return found == commands.end() ? nullptr : *found;
}

void addOptions(std::vector<Candidate>& found, const CLI::App& app) {
  for (const CLI::App* level = &app; level != nullptr; level = level->get_parent()) {
    for (const CLI::Option* option : level->get_options()) {
      for (const std::string& name : option->get_lnames()) {
        found.push_back({"--" + name, option->get_description()});
      }
    }
  }
}

// The part before the last comma of a list, and before nothing else: only the last element is completed.
std::string settledPart(const CLI::Option& option, const std::string& word) {
  const size_t comma = option.get_type_name() == "A,B" ? word.rfind(',') : word.npos;
  return comma == word.npos ? "" : word.substr(0, comma + 1);
}

}  // namespace

std::vector<Candidate> completions(CLI::App& app, const std::vector<std::string>& words,
                                   const std::function<std::vector<std::string>(bool all)>& names) {
  const std::string last = words.empty() ? "" : words.back();
  CLI::App* command = &app;
  const CLI::Option* valueOf = nullptr;  // the option whose value comes next
  for (size_t index = 0; index + 1 < words.size(); ++index) {
    const std::string& word = words[index];
    if (valueOf != nullptr) {
      valueOf = nullptr;
    } else if (word.starts_with("-")) {
      const CLI::Option* option = findOption(*command, word);
      valueOf = option != nullptr && takesValue(*option) && word.find('=') == word.npos ? option : nullptr;
    } else if (CLI::App* sub = commandOf(*command, word)) {
      command = sub;
    }
  }

  std::vector<Candidate> found;
  const auto addFeatures = [&](const CLI::Option& option) {
    const std::string settled = settledPart(option, last);
    for (const bool all : {false, true}) {
      for (const std::string& name : names(all)) {
        if ((settled + name).starts_with(last)) {
          found.push_back({settled + name + (option.get_type_name() == "NAME=VALUE" ? "=" : ""), {}});
        }
      }
      if (!found.empty()) {
        break;
      }
    }
  };
  if (valueOf != nullptr) {
    if (wantsFeature(*valueOf)) {
      addFeatures(*valueOf);
    }
  } else if (last.starts_with("-")) {
    addOptions(found, *command);
  } else if (const std::vector<CLI::App*> commands = commandsOf(*command); !commands.empty()) {
    for (const CLI::App* each : commands) {
      found.push_back({each->get_name(), each->get_description()});
    }
  } else {
    for (const CLI::Option* option : command->get_options()) {
      if (option->get_positional() && wantsFeature(*option)) {
        addFeatures(*option);
        break;
      }
    }
  }
  std::erase_if(found, [&](const Candidate& candidate) { return !candidate.word.starts_with(last); });
  return found;
}

std::string completionScript(const std::string& shell) {
  const std::string request = kCompletionRequest;
  if (shell == "bash") {
    return "_oxgenapi() {\n"
           "  local line cur=${COMP_WORDS[COMP_CWORD]} words=(\"${COMP_WORDS[@]:1:COMP_CWORD}\")\n"
           "  COMPREPLY=()\n"
           "  while IFS=$'\\t' read -r line _; do COMPREPLY+=(\"$line\"); done \\\n"
           "    < <(\"${COMP_WORDS[0]}\" " +
           request +
           " \"${words[@]}\" 2>/dev/null)\n"
           "  [[ ${#COMPREPLY[@]} -eq 1 && ${COMPREPLY[0]} == *= ]] && compopt -o nospace\n"
           "}\n"
           "complete -o default -F _oxgenapi oxgenapi\n";
  }
  if (shell == "zsh") {
    return "#compdef oxgenapi\n"
           "_oxgenapi() {\n"
           "  local line word\n"
           "  local -a plain equals shown\n"
           "  for line in ${(f)\"$(${words[1]} " +
           request +
           " \"${(@)words[2,CURRENT]}\" 2>/dev/null)\"}; do\n"
           "    word=${line%%$'\\t'*}\n"
           "    if [[ $word == *= ]]; then equals+=(\"$word\"); else plain+=(\"$word\"); "
           "shown+=(\"${line/$'\\t'/  -- }\"); fi\n"
           "  done\n"
           "  (( $#equals )) && compadd -S '' -a equals\n"
           "  (( $#plain )) && compadd -l -d shown -a plain\n"
           "  (( $#equals + $#plain )) || _files\n"
           "}\n"
           "compdef _oxgenapi oxgenapi\n";
  }
  return "function __oxgenapi_complete\n"
         "  set -l words (commandline -opc) (commandline -ct)\n"
         "  set -l found ($words[1] " +
         request +
         " $words[2..-1] 2>/dev/null)\n"
         "  if test (count $found) -gt 0\n"
         "    printf '%s\\n' $found\n"
         "  else\n"
         "    __fish_complete_path (commandline -ct)\n"
         "  end\n"
         "end\n"
         "complete -c oxgenapi -f -a '(__oxgenapi_complete)'\n";
}

}  // namespace tool
