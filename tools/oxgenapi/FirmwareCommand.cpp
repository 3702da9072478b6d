#include <OxBase/OxBase.h>

#include <array>
#include <memory>

#include "Commands.h"
#include "Transfer.h"

namespace tool {
namespace {

struct FirmwareOptions {
  std::string file;
  size_t entry = 0;
};

class Updater {
 public:
  Updater(const std::string& path, bool verify) {
    check(CreateFirmwareUpdater(path.c_str(), verify ? 1 : 0, &handle_));
  }
  Updater(const Updater&) = delete;
  Updater& operator=(const Updater&) = delete;
  ~Updater() { OxIfaceContainerReleaseUseCounter(handle_); }

  FWUPDATER handle() const { return handle_; }

  size_t entryCount() const {
    size_t count = 0;
    check(FWUpdateFileCount(handle_, &count));
    return count;
  }

  size_t infoCount(size_t entry) const {
    size_t count = 0;
    check(FWUpdateFileInfoCount(handle_, entry, &count));
    return count;
  }

  std::string info(size_t entry, size_t index, TFirmwareUpdateInfo what) const {
    size_t size = 0;
    check(FWUpdateFileInfo(handle_, entry, index, what, nullptr, &size));
    std::string text(size, '\0');
    check(FWUpdateFileInfo(handle_, entry, index, what, text.data(), &size));
    text.resize(size - 1);
    return text;
  }

 private:
  FWUPDATER handle_ = nullptr;
};

void info(Session& session, const FirmwareOptions& options) {
  const Updater updater(options.file, false);
  const Output& output = session.output();
  Json entries = Json::array();
  for (size_t entry = 0; entry < updater.entryCount(); ++entry) {
    Json infos = Json::array();
    if (!output.json()) {
      output.line(output.name("Entry " + std::to_string(entry)));
    }
    for (size_t index = 0; index < updater.infoCount(entry); ++index) {
      const std::string key = updater.info(entry, index, FUI_Key);
      const std::string value = updater.info(entry, index, FUI_Value);
      const std::string language = updater.info(entry, index, FUI_LanguageCode);
      infos.push_back({{"key", key}, {"value", value}, {"language", language}});
      if (!output.json()) {
        output.field("  " + key, value + (language.empty() ? "" : " [" + language + "]"));
      }
    }
    entries.push_back(infos);
  }
  if (output.json()) {
    output.document(entries);
  }
}

void verify(Session& session, const FirmwareOptions& options) {
  const Updater updater(options.file, true);
  if (session.output().json()) {
    session.output().document({{"file", options.file}, {"valid", true}});
  } else {
    session.output().line(options.file + " is a valid update file");
  }
}

// The device starts anew and gets a node map of its own; the session keeps both until it ends.
bool reset(unsigned int, unsigned int, void*& newNodeMap, void* session) noexcept {
  try {
    newNodeMap = static_cast<Session*>(session)->restart().handle();
    return true;
  } catch (const Failure& failure) {
    OxSetLastError(failure.code(), failure.what());
    return false;
  }
}

void update(Session& session, const FirmwareOptions& options) {
  const Updater updater(options.file, true);
  if (options.entry >= updater.entryCount()) {
    throw UsageError("firmware update: the file has no entry " + std::to_string(options.entry));
  }
  Transfer transfer(session, options.file, 0);
  check(FWUpdate(updater.handle(), session.map().handle(), options.entry, reset, &session));
  if (session.output().json()) {
    session.output().document({{"file", options.file}, {"entry", options.entry}, {"updated", true}});
  } else {
    session.output().line("Entry " + std::to_string(options.entry) + " of " + options.file +
                          " applied: " + transfer.summary(transfer.bytes()));
  }
}

}  // namespace

void addFirmware(CLI::App& app, Action& chosen) {
  auto options = std::make_shared<FirmwareOptions>();
  CLI::App* firmware = app.add_subcommand("firmware", "Look into a firmware update file, verify it, apply it");
  firmware->require_subcommand(1);
  firmware->fallthrough();
  const auto add = [&](const char* name, const char* help, void (*run)(Session&, const FirmwareOptions&)) {
    CLI::App* command = firmware->add_subcommand(name, help);
    command->add_option("file", options->file, "Update file")->required()->type_name("FILE")->check(CLI::ExistingFile);
    command->callback(
        [&chosen, options, run] { chosen = [options, run](Session& session) { run(session, *options); }; });
    return command;
  };
  add("info", "Show what each entry of the file says about itself", info);
  add("verify", "Check that the file is whole", verify);
  add("update", "Apply one entry to the device", update)
      ->add_option("--select", options->entry, "Entry, counted from 0")
      ->capture_default_str();
  firmware->footer("Example:\n  oxgenapi --state camera.state firmware update camera.guf");
}

}  // namespace tool
