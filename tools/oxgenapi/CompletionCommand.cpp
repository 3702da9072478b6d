#include "Checks.h"
#include "Commands.h"
#include "Completion.h"

namespace tool {
namespace {

const std::vector<std::string> kShells{"bash", "zsh", "fish"};

}  // namespace

void addCompletion(CLI::App& app, Action& chosen) {
  auto shell = std::make_shared<std::string>();
  CLI::App* command = app.add_subcommand("completion", "Print the script that completes commands and feature names");
  command->add_option("shell", *shell, "bash, zsh or fish")
      ->required()
      ->type_name(alternatives(kShells))
      ->check(oneOf(kShells));
  command->footer(
      "Example:\n"
      "  source <(oxgenapi completion bash)\n"
      "  oxgenapi completion zsh > \"${fpath[1]}/_oxgenapi\"\n"
      "  oxgenapi completion fish > ~/.config/fish/completions/oxgenapi.fish");
  command->callback(
      [&chosen, shell] { chosen = [shell](Session& session) { session.output().data(completionScript(*shell)); }; });
}

}  // namespace tool
