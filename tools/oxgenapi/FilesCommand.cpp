#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <thread>

#include "Checks.h"
#include "Commands.h"
#include "FileReplacement.h"
#include "Settings.h"
#include "Transfer.h"
#include "Value.h"

namespace tool {
namespace {

constexpr std::chrono::seconds kLongestDelete{120};

struct FilesOptions {
  std::string entry;
  std::string file;
};

void done(const Session& session, Json facts, const std::string& text) {
  if (session.output().json())
    session.output().document(facts);
  else
    session.output().line(text);
}

uint64_t sizeOfHostFile(const std::string& path) {
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  return error ? 0 : size;
}

// Selects the file and asks for its size in bytes; nothing where the device has no FileSize to tell it.
std::optional<uint64_t> sizeOf(const NodeMap& map, const std::string& entry) {
  try {
    return map.fileSize(entry);
  } catch (const Failure& failure) {
    if (failure.code() == OXGENAPI_E_UNSPECIFIED) return std::nullopt;
    throw;
  }
}

// What the file that is selected now can be opened for, as far as the device tells before it is tried.
int64_t accessOfSelected(const NodeMap& map) {
  bool reads = false;
  bool writes = false;
  for (const std::string& name : map.node("FileOpenMode").list(NL_EnumEntries)) {
    const Node mode = map.node(name);
    if (mode.readable()) {
      const std::string text = mode.text();
      reads |= text == "Read" || text == "ReadWrite";
      writes |= text == "Write" || text == "ReadWrite";
    }
  }
  return reads ? (writes ? AM_ReadWrite : AM_ReadOnly) : (writes ? AM_WriteOnly : AM_NotAvailable);
}

void listFiles(Session& session) {
  const NodeMap& map = session.map();
  const Node selector = map.node("FileSelector");
  const std::string selected = selector.text();
  Json files = Json::array();
  for (const std::string& name : selector.list(NL_EnumEntries)) {
    const Node entry = map.node(name);
    if (!entry.readable()) continue;
    Json file{{"name", entry.text()}};
    std::string text = "unknown";
    try {
      const std::optional<uint64_t> size = sizeOf(map, entry.text());
      file["size"] = size ? Json(*size) : Json();
      file["access"] = accessName(accessOfSelected(map));
      text = file["access"].get<std::string>() + "  " + (size ? std::to_string(*size) + " bytes" : "size unknown");
    } catch (const Failure& failure) {
      file["error"] = toJson(failure);
      session.report(failure);
    }
    if (!session.output().json()) session.output().field(entry.text(), text);
    files.push_back(file);
  }
  selector.set(selected);
  if (session.output().json()) session.output().document(files);
}

// For the bar alone: whether the device has the file shows when it is opened.
uint64_t expectedSize(const NodeMap& map, const std::string& entry) {
  try {
    return sizeOf(map, entry).value_or(0);
  } catch (const Failure&) {
    return 0;
  }
}

void getToOutput(Session& session, const FilesOptions& options) {
  if (session.output().json()) throw UsageError("files get: --json and the file '-' both want standard output");
  const NodeMap& map = session.map();
  std::vector<std::byte> bytes;
  {
    const Transfer transfer(session, options.entry, expectedSize(map, options.entry));
    bytes = map.download(options.entry);
  }
  session.output().data({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

void get(Session& session, const FilesOptions& options) {
  if (options.file == "-") {
    getToOutput(session, options);
    return;
  }
  const NodeMap& map = session.map();
  FileReplacement file(options.file);
  Transfer transfer(session, options.entry, expectedSize(map, options.entry));
  map.downloadFile(options.entry, file.path());
  const uint64_t bytes = sizeOfHostFile(file.path());
  file.commit();
  done(session, {{"file", options.entry}, {"done", "downloaded"}, {"bytes", bytes}},
       options.entry + " downloaded: " + transfer.summary(bytes));
}

void put(Session& session, const FilesOptions& options) {
  const bool isInput = options.file == "-";
  const std::string input = isInput ? readFile("/dev/stdin") : "";
  const uint64_t bytes = isInput ? input.size() : sizeOfHostFile(options.file);
  Transfer transfer(session, options.entry, bytes);
  if (input.empty())
    session.map().uploadFile(options.entry, isInput ? "/dev/null" : options.file);
  else
    session.map().upload(options.entry, input.data(), input.size());
  done(session, {{"file", options.entry}, {"done", "uploaded"}, {"bytes", bytes}},
       options.entry + " uploaded: " + transfer.summary(bytes));
}

void remove(Session& session, const FilesOptions& options) {
  const NodeMap& map = session.map();
  map.node("FileSelector").set(options.entry);
  map.node("FileOperationSelector").set("Delete");
  const Node execute = map.node("FileOperationExecute");
  execute.execute();
  const auto end = std::chrono::steady_clock::now() + kLongestDelete;
  while (execute.readable() && !execute.boolean()) {
    if (std::chrono::steady_clock::now() > end)
      throw Failure(OXGENAPI_E_UNSPECIFIED, "Deleting '" + options.entry + "' does not end", "FileOperationExecute");
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  const std::string status = map.node("FileOperationStatus").text();
  if (status != "Success") {
    throw Failure(OXGENAPI_E_UNSPECIFIED, "Deleting '" + options.entry + "' ended with " + status,
                  "FileOperationStatus");
  }
  done(session, {{"file", options.entry}, {"done", "deleted"}}, options.entry + " deleted");
}

}  // namespace

void addFiles(const Command& program) {
  auto options = std::make_shared<FilesOptions>();
  const Command files = program.subcommand("files", "List, copy and delete the files inside the device");
  files.needsSubcommand();
  const auto add = [&](const char* name, const char* help, const std::string& example,
                       void (*run)(Session&, const FilesOptions&)) {
    const Command command = files.subcommand(name, help);
    command.footer("Example:\n  oxgenapi files " + example);
    command.option("entry", options->entry, "Device file, an entry of FileSelector").required().type("DEVICEFILE");
    command.runs([options, run](Session& session) { run(session, *options); });
    return command;
  };
  const Command all = files.subcommand("list", "List the device's files, their sizes and what they can be opened for");
  all.runs(listFiles);
  all.footer("Example:\n  oxgenapi files list --json");
  add("get", "Copy a device file to a file here", "get UserFile1 settings.bin", get)
      .option("file", options->file, "File to write; -: standard output")
      .required()
      .type("FILE");
  add("put", "Copy a file to the device", "put UserFile1 settings.bin", put)
      .option("file", options->file, "File to read; -: standard input")
      .required()
      .type("FILE")
      .check(existingFileOrStream());
  add("rm", "Delete a device file", "rm UserFile1", remove);
  files.footer("Example:\n  oxgenapi files get UserFile1 settings.bin");
}

}  // namespace tool
