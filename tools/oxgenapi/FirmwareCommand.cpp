#include <chrono>
#include <filesystem>
#include <memory>

#include "Checks.h"
#include "Commands.h"
#include "Transfer.h"
#include "UpdatePackage.h"

namespace tool {
namespace {

using oxgenapi::FirmwareUpdater;

struct FirmwareOptions {
  std::string file;
  size_t entry = 0;
};

void info(Session& session, const FirmwareOptions& options) {
  const FirmwareUpdater updater(options.file, false);
  const Output& output = session.output();
  Json entries = Json::array();
  for (size_t entry = 0; entry < updater.entryCount(); ++entry) {
    Json infos = Json::array();
    if (!output.json()) output.line(output.name("Entry " + std::to_string(entry)));
    for (const auto& [key, value, language] : updater.info(entry)) {
      infos.push_back({{"key", key}, {"value", value}, {"language", language}});
      if (!output.json()) {
        const std::string shown = language.empty() ? "" : " [" + language + "]";
        output.field("  " + key, value + shown);
      }
    }
    entries.push_back(infos);
  }
  if (output.json()) output.document(entries);
}

void verify(Session& session, const FirmwareOptions& options) {
  const FirmwareUpdater updater(options.file);
  if (session.output().json())
    session.output().document({{"file", options.file}, {"valid", true}});
  else
    session.output().line(options.file + " is a valid update file");
}

void update(Session& session, const FirmwareOptions& options) {
  const FirmwareUpdater updater(options.file);
  if (options.entry >= updater.entryCount())
    throw UsageError("firmware update: the file has no entry " + std::to_string(options.entry));
  const NodeMap map = session.map();  // restarting replaces the session's
  // Of several entries nobody knows which data files belong to this one.
  Transfer transfer(session, std::filesystem::path(options.file).filename().string(),
                    updater.entryCount() == 1 ? dataBytesIn(options.file) : 0);
  updater.update(map, options.entry, [&](unsigned durationMs, unsigned delayMs) {
    Progress waiting(session.output(), "waiting for the device to come back", 0, "");
    waiting.begin();
    return session.restart(std::chrono::milliseconds(delayMs), std::chrono::milliseconds(durationMs));
  });
  const std::string summary = transfer.summary(transfer.bytes());
  if (session.output().json())
    session.output().document({{"file", options.file}, {"entry", options.entry}, {"updated", true}});
  else
    session.output().line("Entry " + std::to_string(options.entry) + " of " + options.file + " applied: " + summary);
}

}  // namespace

void addFirmware(const Command& program) {
  auto options = std::make_shared<FirmwareOptions>();
  const Command firmware = program.subcommand("firmware", "Look into a firmware update file, verify it, apply it");
  firmware.needsSubcommand();
  const auto add = [&](const char* name, const char* help, void (*run)(Session&, const FirmwareOptions&)) {
    const Command command = firmware.subcommand(name, help);
    command.footer(std::string("Example:\n  oxgenapi firmware ") + name + " camera.guf");
    command.option("file", options->file, "Update file").required().type("FILE").check(existingFile());
    command.runs([options, run](Session& session) { run(session, *options); });
    return command;
  };
  add("info", "Show what each entry of the file says about itself", info);
  add("verify", "Check that the file is whole", verify);
  add("update", "Apply one entry to the device", update)
      .option("--select", options->entry, "Entry, counted from 0")
      .showDefault();
  firmware.footer("Example:\n  oxgenapi --state camera.state firmware update camera.guf");
}

}  // namespace tool
