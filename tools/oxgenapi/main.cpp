// oxgenapi: drives a GenICam device, simulated or described by a file, through the flat interface.
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <limits>
#include <map>
#include <memory>
#include <optional>

#include "CacheCheck.h"
#include "Commands.h"
#include "Completion.h"
#include "Help.h"
#include "ManPage.h"
#include "NearNames.h"
#include "Versions.h"

namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;

constexpr const char* kExitStatus =
    "Exit status: 0 success, 1 a feature or the device failed, 2 wrong usage.\n"
    "Example:\n"
    "  oxgenapi --state camera.state set Width=640 Height=480";

void addFaults(CLI::App& app, tool::Faults& faults, CLI::Option* camera) {
  const CLI::Range positive(int64_t{1}, std::numeric_limits<int64_t>::max());
  const CLI::Range failure(uint32_t{0x80000000}, uint32_t{0xffffffff});
  for (CLI::Option* option :
       {app.add_option("--fail-access", faults.access, "Let the N-th access to the registers fail")->check(positive),
        app.add_option("--fail-every", faults.every, "Let every N-th access fail")->check(positive),
        app.add_option("--fail-code", faults.code, "With this result")->type_name("CODE")->check(failure),
        app.add_option("--fail-text", faults.text, "And this reason")->type_name("TEXT")}) {
    option->group("A simulated device that fails")->excludes(camera)->capture_default_str();
  }
}

void addOptions(CLI::App& app, tool::Options& options) {
  using Colour = tool::Output::Colour;
  auto* xml = app.add_option("--xml", options.xml, "Description to load, instead of the simulated camera's own")
                  ->type_name("FILE")
                  ->check(CLI::ExistingFile);
  app.add_option("--memory", options.memory, "Register image behind --xml: what it lacks is zero; it is written back")
      ->type_name("FILE")
      ->needs(xml);
  auto* state = app.add_option("--state", options.state, "Where the simulated camera keeps its registers between runs")
                    ->type_name("FILE")
                    ->excludes(xml);
  auto* camera = app.add_option("--camera", options.camera,
                                "A real camera: its ID (see the command cameras), address or serial number")
                     ->type_name("ID")
                     ->excludes(xml)
                     ->excludes(state);
  addFaults(app, options.faults, camera);
  app.add_flag("--json", options.json, "Print JSON");
  app.add_flag_callback("--check-cache", tool::checkCache,
                        "Compare every answer from memory with the device, and print what it does not confirm");
  app.add_option("--color", options.colour, "Colours: auto (on a terminal), always, never")
      ->type_name("WHEN")
      ->transform(CLI::CheckedTransformer(std::map<std::string, Colour>{
          {"auto", Colour::automatic}, {"always", Colour::always}, {"never", Colour::never}}));
  app.set_version_flag(
      "--version", [] { return "oxgenapi " + tool::libraryVersion(); }, "Print the version and exit");
}

void addCommands(CLI::App& app, tool::Action& chosen) {
  using Add = void (*)(CLI::App&, tool::Action&);
  const std::pair<const char*, std::vector<Add>> groups[] = {
      {"Features",
       {tool::addInfo, tool::addTree, tool::addGet, tool::addSet, tool::addExec, tool::addDescribe, tool::addWatch}},
      {"Settings", {tool::addSave, tool::addLoad, tool::addDiff, tool::addSnapshot}},
      {"What the device holds and sends",
       {tool::addFiles, tool::addFirmware, tool::addGuf, tool::addEvents, tool::addChunks}},
      {"Registers", {tool::addPeek, tool::addPoke, tool::addRegister}},
      {"Descriptions", {tool::addXml, tool::addNodes, tool::addLint, tool::addDoc}},
      {"Also", {tool::addCameras, tool::addReport, tool::addCompletion}}};
  for (const auto& [title, commands] : groups) {
    for (const Add add : commands) {
      add(app, chosen);
      app.get_subcommands([](const CLI::App*) { return true; }).back()->group(title);
    }
  }
}

// The device keeps what was written before a failure, so its registers are kept in every case.
int run(const tool::Options& options, const tool::Action& command) {
  tool::Session session(options);
  try {
    command(session);
  } catch (const tool::Failure& failure) {
    session.report(failure);
    if (options.json) {
      session.output().document({{"error", tool::toJson(failure)}});
    }
  }
  session.reportHidden();
  try {
    session.keep();
  } catch (const tool::Failure& failure) {
    session.report(failure);
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    session.report(tool::Failure(tool::kFileFailed, "standard output cannot be written"));
  }
  return session.failed() ? kFailed : 0;
}

// What shells and the build ask; nobody types it, so it is no command.
bool answer(CLI::App& app, const tool::Options& options, std::vector<std::string> words) {
  if (words.empty()) {
    return false;
  }
  const std::string request = words.front();
  words.erase(words.begin());
  if (request == tool::kManPageRequest) {
    std::cout << tool::manPage(app, tool::libraryVersion());
    return true;
  }
  if (request != tool::kCompletionRequest) {
    return false;
  }
  std::optional<tool::Session> session;
  const auto names = [&](bool all) {
    if (!session) {
      try {
        app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
      } catch (const CLI::ParseError&) {  // it is not whole yet; the options before the gap have been read
      }
      session.emplace(options);
    }
    std::vector<std::string> found = session->map().nodeNames();
    std::erase_if(found, [&](const std::string& name) {
      const auto node = session->map().tryNode(name);
      return !all && !(node && node->infoBoolean(NI_IsFeature));
    });
    return found;
  };
  for (const tool::Candidate& candidate : tool::completions(app, words, names)) {
    std::cout << candidate.word << (candidate.description.empty() ? "" : "\t" + candidate.description) << '\n';
  }
  return true;
}

// A word that is no command is told as such; for the parser it is one too many behind a command that is missing.
int report(const CLI::App& app, const CLI::ParseError& error) {
  const std::vector<std::string> left = app.remaining();
  if (dynamic_cast<const CLI::RequiredError*>(&error) == nullptr || left.empty() || !app.get_subcommands().empty()) {
    return app.exit(error) == 0 ? 0 : kUsage;
  }
  std::vector<std::string> commands;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    commands.push_back(command->get_name());
  }
  std::cerr << "oxgenapi: there is no command '" << left.front() << "'\n";
  const std::vector<std::string> near = tool::nearNames(left.front(), commands);
  std::cerr << (near.empty() ? "Run with --help for all commands." : "  Did you mean " + near.front() + "?") << '\n';
  return kUsage;
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGXFSZ, SIG_IGN);  // a file that would grow past its limit fails to be written, and is told
  CLI::App app("Reads, writes and explores the features of a GenICam device", "oxgenapi");
  tool::Options options;
  tool::Action chosen;
  try {
    app.require_subcommand(1);
    app.fallthrough();
    app.formatter(std::make_shared<tool::HelpFormatter>());
    addOptions(app, options);
    addCommands(app, chosen);
    app.footer(kExitStatus);  // of the program alone: set last, it is not handed down
    if (answer(app, options, {argv + std::min(argc, 1), argv + argc})) {
      return 0;
    }
    app.parse(argc, argv);
    return run(options, chosen);
  } catch (const CLI::ParseError& error) {
    return report(app, error);
  } catch (const tool::UsageError& error) {
    std::cerr << "oxgenapi: " << error.what() << '\n';
    return kUsage;
  } catch (const std::exception& error) {
    std::cerr << "oxgenapi: " << error.what() << '\n';
    return kFailed;
  }
}
