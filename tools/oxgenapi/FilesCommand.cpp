#include <memory>

#include "Commands.h"
#include "FileReplacement.h"
#include "Value.h"

namespace tool {
namespace {

struct FilesOptions {
  std::string entry;
  std::string file;
};

void done(const Session& session, const std::string& entry, const char* what) {
  if (session.output().json()) {
    session.output().document({{"file", entry}, {"done", what}});
  } else {
    session.output().line(entry + " " + what);
  }
}

// The device tells a file's size only while the file is selected.
int64_t sizeOf(const NodeMap& map, const std::string& entry) {
  size_t size = 0;
  check(NMDownloadFileMemory(map.handle(), entry.c_str(), nullptr, &size), entry);
  return static_cast<int64_t>(size);
}

void list(Session& session) {
  const NodeMap& map = session.map();
  const Node selector = map.node("FileSelector");
  const std::string selected = selector.text();
  Json files = Json::array();
  for (const std::string& name : selector.list(NL_EnumEntries)) {
    const Node entry = map.node(name);
    if (!entry.readable()) {
      continue;
    }
    Json file{{"name", entry.text()}};
    try {
      file["size"] = sizeOf(map, entry.text());
    } catch (const Failure& failure) {
      file["error"] = toJson(failure);
      session.report(failure);
    }
    if (!session.output().json()) {
      session.output().field(entry.text(), file.contains("size") ? file["size"].dump() + " bytes" : "unknown");
    }
    files.push_back(file);
  }
  selector.set(selected);
  if (session.output().json()) {
    session.output().document(files);
  }
}

void get(Session& session, const FilesOptions& options) {
  FileReplacement file(options.file);
  check(NMDownloadFile(session.map().handle(), options.entry.c_str(), file.path().c_str()), options.entry);
  file.commit();
  done(session, options.entry, "downloaded");
}

void put(Session& session, const FilesOptions& options) {
  check(NMUploadFile(session.map().handle(), options.entry.c_str(), options.file.c_str()), options.entry);
  done(session, options.entry, "uploaded");
}

void remove(Session& session, const FilesOptions& options) {
  const NodeMap& map = session.map();
  map.node("FileSelector").set(options.entry);
  map.node("FileOperationSelector").set("Delete");
  map.node("FileOperationExecute").execute();
  const std::string status = map.node("FileOperationStatus").text();
  if (status != "Success") {
    throw Failure(OXGENAPI_E_UNSPECIFIED, "Deleting '" + options.entry + "' ended with " + status,
                  "FileOperationStatus");
  }
  done(session, options.entry, "deleted");
}

}  // namespace

void addFiles(CLI::App& app, Action& chosen) {
  auto options = std::make_shared<FilesOptions>();
  const auto add = [&](CLI::App* files, const char* name, const char* help,
                       void (*run)(Session&, const FilesOptions&)) {
    CLI::App* command = files->add_subcommand(name, help);
    command->add_option("entry", options->entry, "Device file, an entry of FileSelector")->required();
    command->callback(
        [&chosen, options, run] { chosen = [options, run](Session& session) { run(session, *options); }; });
    return command;
  };
  CLI::App* files = app.add_subcommand("files", "List, copy and delete the files inside the device");
  files->require_subcommand(1);
  files->fallthrough();
  files->add_subcommand("list", "List the device's files and their sizes")->callback([&chosen] { chosen = list; });
  add(files, "get", "Copy a device file to a file here", get)
      ->add_option("file", options->file, "File to write")
      ->required()
      ->type_name("FILE");
  add(files, "put", "Copy a file to the device", put)
      ->add_option("file", options->file, "File to read")
      ->required()
      ->type_name("FILE")
      ->check(CLI::ExistingFile);
  add(files, "rm", "Delete a device file", remove);
  files->footer("Example:\n  oxgenapi files get UserSet1 userset.bin");
}

}  // namespace tool
