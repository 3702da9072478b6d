#include <memory>

#include "Changes.h"
#include "Commands.h"
#include "FileReplacement.h"
#include "Snapshot.h"

namespace tool {
namespace {

struct SnapshotOptions {
  std::vector<std::string> names;
  std::string file;
};

// A record has no type for a register's bytes.
std::vector<std::string> recordableFeatures(const NodeMap& map) {
  std::vector<std::string> names = valueFeatures(map);
  std::erase_if(names, [&](const std::string& name) { return map.node(name).type() == NT_Register; });
  return names;
}

void run(Session& session, const SnapshotOptions& options) {
  const NodeMap& map = session.map();
  const std::string text = snapshotText(map, options.names.empty() ? recordableFeatures(map) : options.names,
                                        [&](const Failure& failure) { session.report(failure); });
  if (options.file.empty()) {
    session.output().data(text + '\n');
    return;
  }
  FileReplacement file(options.file);
  file.write(text + "\n");
  file.commit();
}

}  // namespace

void addSnapshot(const Command& program) {
  auto options = std::make_shared<SnapshotOptions>();
  const Command command = program.subcommand("snapshot", "Record names, types and values of features as a JSON array");
  command.option("features", options->names, "Features to record, in this order (default: all)").type("NAME");
  command.option("-o,--output", options->file, "File to write (default: standard output)").type("FILE");
  command.footer("Example:\n  oxgenapi snapshot ExposureTime Gain -o now.json");
  command.runs([options](Session& session) { run(session, *options); });
}

}  // namespace tool
