#include "ManPage.h"

#include <string_view>

#include "Help.h"

namespace tool {
namespace {

// Plain text in the markup: a backslash, a minus and a leading dot mean themselves.
std::string escaped(std::string_view text) {
  std::string result;
  for (const char character : text) {
    const bool startsLine = result.empty() || result.back() == '\n';
    if (startsLine && (character == '.' || character == '\'')) result += "\\&";
    result += character == '\\' ? "\\e" : character == '-' ? "\\-" : std::string(1, character);
  }
  return result;
}

std::string nameOf(const CLI::Option& option) {
  if (option.get_positional()) return "\\fI" + escaped(option.get_name()) + "\\fR";
  std::string text;
  for (const std::string& name : option.get_snames()) text += "\\fB\\-" + escaped(name) + "\\fR, ";
  for (const std::string& name : option.get_lnames()) text += "\\fB\\-\\-" + escaped(name) + "\\fR, ";
  text.resize(text.size() - 2);
  const std::string value = valueName(option);
  return value.empty() ? text : text + " \\fI" + escaped(value) + "\\fR";
}

std::string options(const CLI::App& app) {
  std::string text;
  for (const CLI::Option* option : app.get_options()) {
    // Every command has it; once is enough.
    if (option != app.get_help_ptr() || app.get_parent() == nullptr)
      text += ".TP\n" + nameOf(*option) + "\n" + escaped(descriptionOf(*option)) + "\n";
  }
  return text;
}

std::string footer(const CLI::App& app) {
  return app.get_footer().empty() ? "" : ".PP\n.nf\n" + escaped(app.get_footer()) + "\n.fi\n";
}

std::string environment() {
  constexpr std::pair<const char*, const char*> kVariables[] = {
      {"OXGENAPI_CAMERA", "What --camera says, for a whole shell; --camera, --xml and --state go before it"},
      {"OXGENAPI_INTERFACES", "Network interfaces to ask for cameras, separated by commas (default: all)"},
      {"OXGENAPI_ADDRESSES", "Addresses to ask besides, separated by commas: routers pass no searches on"},
      {"OXGENAPI_SIMULATED", "Simulated cameras to list, as Left,user=gate;Right,state=busy"},
      {"OXGENAPI_BYTE_ORDER", "A file that says which byte order cameras with contradicting descriptions have"},
      {"OXGENAPI_TRANSPORTS",
       "Folders, separated by colons, of the modules that reach cameras (default: oxgenapi beside the libraries)"},
      {"NO_COLOR", "Not empty: no colours, as with --color never"},
      {"OX_TELEMETRY_LEVEL", "Records of the library's failing calls, one JSON line each: 0 (most) to 3 (fewest)"},
      {"OX_TELEMETRY_FILE", "Where they go (default: standard error)"},
  };
  std::string text;
  for (const auto& [name, meaning] : kVariables)
    text += ".TP\n\\fB" + std::string(name) + "\\fR\n" + escaped(meaning) + "\n";
  return text;
}

void addCommands(std::string& text, CLI::App& app, const std::string& prefix) {
  for (CLI::App* command : app.get_subcommands([](const CLI::App* each) { return !each->get_group().empty(); })) {
    const std::string name = prefix + command->get_name();
    text += ".SS " + escaped(name) + "\n" + escaped(command->get_description()) + ".\n" + options(*command);
    text += footer(*command);
    addCommands(text, *command, name + " ");
  }
}

}  // namespace

std::string manPage(CLI::App& app, const std::string& version) {
  std::string text = ".TH OXGENAPI 1 \"\" \"OxGenApi " + version + "\" \"User commands\"\n";
  text += ".SH NAME\noxgenapi \\- " + escaped(app.get_description()) + "\n";
  text += ".SH SYNOPSIS\n\\fBoxgenapi\\fR [\\fIoptions\\fR] \\fIcommand\\fR [\\fIarguments\\fR]\n";
  text += ".SH OPTIONS\n" + options(app) + ".SH COMMANDS\n";
  addCommands(text, app, "");
  text += ".SH ENVIRONMENT\n" + environment();
  text += ".SH EXIT STATUS AND EXAMPLES\n.nf\n" + escaped(app.get_footer()) + "\n.fi\n";
  return text;
}

}  // namespace tool
