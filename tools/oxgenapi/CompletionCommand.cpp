#include "Checks.h"
#include "Commands.h"
#include "Completion.h"

namespace tool {
namespace {

const std::vector<std::string> kShells{"bash", "zsh", "fish"};

}  // namespace

void addCompletion(const Command& program) {
  auto shell = std::make_shared<std::string>();
  const Command command =
      program.subcommand("completion", "Print the script that completes commands and feature names");
  command.option("shell", *shell, "bash, zsh or fish").required().type(alternatives(kShells)).check(oneOf(kShells));
  command.footer(
      "Example:\n"
      "  source <(oxgenapi completion bash)\n"
      "  oxgenapi completion zsh > \"${fpath[1]}/_oxgenapi\"\n"
      "  oxgenapi completion fish > ~/.config/fish/completions/oxgenapi.fish");
  command.runs([shell](Session& session) { session.output().data(completionScript(*shell)); });
}

}  // namespace tool
