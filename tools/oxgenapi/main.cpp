// oxgenapi: drives a GenICam device, simulated or described by a file, through the flat interface.
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>

#include "CacheCheck.h"
#include "Checks.h"
#include "Commands.h"
#include "Completion.h"
#include "Help.h"
#include "ManPage.h"
#include "Versions.h"
#include "WrongUsage.h"

namespace {

constexpr int kUsage = 2;

constexpr const char* kExitStatus =
    "Exit status: 0 success, 1 a feature or the device failed, 2 wrong usage, 3 no such camera.\n"
    "Example:\n"
    "  oxgenapi --state camera.state set Width=640 Height=480";

CLI::Option* checked(CLI::Option* option, const tool::Check& check) {
  tool::Option(option).check(check);
  return option;
}

void addFaults(CLI::App& app, tool::Faults& faults, CLI::Option* camera) {
  for (CLI::Option* option :
       {checked(app.add_option("--fail-access", faults.access, "Let the N-th access to the registers fail"),
                tool::atLeast(1)),
        checked(app.add_option("--fail-every", faults.every, "Let every N-th access fail"), tool::atLeast(1)),
        checked(app.add_option("--fail-code", faults.code, "With this result"), tool::failureCode())
            ->type_name("CODE")
            ->default_str(tool::codeText(faults.code)),
        app.add_option("--fail-text", faults.text, "And this reason")->type_name("TEXT")->capture_default_str()})
    option->group("A simulated device that fails")->excludes(camera);
}

void addOptions(CLI::App& app, tool::Options& options) {
  using Colour = tool::Output::Colour;
  auto* xml =
      checked(app.add_option("--xml", options.xml, "Description to load, instead of the simulated camera's own"),
              tool::existingFile())
          ->type_name("FILE");
  app.add_option("--memory", options.memory, "Register image behind --xml: what it lacks is zero; it is written back")
      ->type_name("FILE")
      ->needs(xml);
  auto* state = app.add_option("--state", options.state, "Where the simulated camera keeps its registers between runs")
                    ->type_name("FILE")
                    ->excludes(xml);
  auto* camera = app.add_option("--camera", options.camera,
                                "A camera: its ID (see the command cameras), address, serial number or user name; "
                                "'simulated'. Without it: the one that OXGENAPI_CAMERA names")
                     ->type_name("CAMERA")
                     ->excludes(xml)
                     ->excludes(state);
  addFaults(app, options.faults, camera);
  app.add_flag("--json", options.json, "Print JSON");
  app.add_flag_callback("--check-cache", tool::checkCache,
                        "Compare every answer from memory with the device, and print what it does not confirm");
  checked(app.add_option("--color", options.colour, "Colours: auto (on a terminal), always, never"),
          tool::numberFor({{"auto", static_cast<int>(Colour::automatic)},
                           {"always", static_cast<int>(Colour::always)},
                           {"never", static_cast<int>(Colour::never)}}))
      ->type_name("auto|always|never");
  app.set_version_flag(
      "-V,--version", [] { return "oxgenapi " + tool::libraryVersion(); }, "Print the version and exit");
}

// OXGENAPI_CAMERA names the camera for a whole shell, unless the command line says what to use.
tool::Options withCameraOfShell(tool::Options options) {
  const char* name = std::getenv("OXGENAPI_CAMERA");
  const bool chosen = !options.camera.empty() || !options.xml.empty() || !options.state.empty() ||
                      options.faults.access != 0 || options.faults.every != 0;
  if (name != nullptr && !chosen) options.camera = name;
  return options;
}

void addCommands(CLI::App& app, tool::Action& chosen) {
  const tool::Command program(app, chosen);
  using Add = void (*)(const tool::Command&);
  const std::pair<const char*, std::vector<Add>> groups[] = {
      {"Features",
       {tool::addInfo, tool::addTree, tool::addGet, tool::addSet, tool::addExec, tool::addDescribe, tool::addWatch}},
      {"Images", {tool::addGrab}},
      {"Settings", {tool::addSave, tool::addLoad, tool::addDiff, tool::addSnapshot}},
      {"What the device holds and sends",
       {tool::addFiles, tool::addFirmware, tool::addGuf, tool::addEvents, tool::addChunks}},
      {"Registers", {tool::addPeek, tool::addPoke, tool::addRegister}},
      {"Descriptions", {tool::addXml, tool::addNodes, tool::addLint, tool::addDoc, tool::addStubs}},
      {"Also", {tool::addCameras, tool::addNetwork, tool::addReport, tool::addCompletion, tool::addHelp}}};
  for (const auto& [title, commands] : groups) {
    for (const Add add : commands) {
      add(program);
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
    if (options.json) session.output().document({{"error", tool::toJson(failure)}});
  }
  session.reportHidden();
  try {
    session.keep();
  } catch (const tool::Failure& failure) {
    session.report(failure);
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
    session.report(tool::Failure(tool::kFileFailed, "standard output cannot be written"));
  return session.status();
}

void parse(CLI::App& app, const std::vector<std::string>& words) {
  app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
}

// Completes the words for a shell. They are not whole yet; the options before the gap choose the device.
int complete(CLI::App& app, const tool::Options& options, const std::vector<std::string>& words) {
  std::optional<tool::Session> session;
  const tool::DeviceWords device([&]() -> const tool::NodeMap& {
    if (!session) {
      try {
        parse(app, words);
      } catch (const CLI::ParseError&) {
      }
      session.emplace(withCameraOfShell(options));
      session->onlyRead();
    }
    return session->map();
  });
  const tool::Completions found = tool::completions(app, words, device);
  for (const tool::Candidate& candidate : found.candidates)
    std::cout << candidate.word << (candidate.description.empty() ? "" : "\t" + candidate.description) << '\n';
  return found.wantsFile ? tool::kWantsFile : 0;
}

// The exit status of what shells and the build ask. Nobody types it, so it is not among the commands.
std::optional<int> answer(CLI::App& app, const tool::Options& options, std::vector<std::string> words) {
  const std::string request = words.empty() ? "" : words.front();
  if (request == tool::kManPageRequest) {
    std::cout << tool::manPage(app, tool::libraryVersion());
    return 0;
  }
  if (request == tool::kCompletionRequest) {
    words.erase(words.begin());
    return complete(app, options, words);
  }
  return std::nullopt;
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
    std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    if (const std::optional<int> status = answer(app, options, words)) return *status;
    parse(app, words);
    if (app.got_subcommand("help"))
      parse(app, tool::helpRequest(app, app.get_subcommand("help")->get_option("command")->results()));
    return run(withCameraOfShell(options), chosen);
  } catch (const CLI::Success& wanted) {
    return app.exit(wanted);
  } catch (const CLI::ParseError& error) {
    std::cerr << "oxgenapi: " << tool::wrongUsage(app, error) << '\n';
    return kUsage;
  } catch (const tool::UsageError& error) {
    std::cerr << "oxgenapi: " << error.what() << '\n';
    return kUsage;
  } catch (const std::exception& error) {
    std::cerr << "oxgenapi: " << error.what() << '\n';
    return tool::kFailed;
  }
}
