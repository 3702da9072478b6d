#include "Commands.h"
#include "Completion.h"

namespace tool {

void addCompletion(CLI::App& app, Action& chosen) {
  auto shell = std::make_shared<std::string>();
  CLI::App* command = app.add_subcommand("completion", "Print the script that completes commands and feature names");
  command->add_option("shell", *shell, "bash, zsh or fish")
      ->required()
      ->type_name("SHELL")
      ->check(CLI::IsMember({"bash", "zsh", "fish"}));
  command->footer(
      "Example:\n"
      "  source <(oxgenapi completion bash)\n"
      "  oxgenapi completion zsh > \"${fpath[1]}/_oxgenapi\"\n"
      "  oxgenapi completion fish > ~/.config/fish/completions/oxgenapi.fish");
  command->callback([&chosen, shell] {
    chosen = [shell](Session& session) {
      const std::string script = completionScript(*shell);
      session.output().line(std::string_view(script).substr(0, script.size() - 1));
    };
  });
}

}  // namespace tool
