#include "Commands.h"
#include "FileReplacement.h"

namespace tool {
namespace {

void writeDescription(Session& session, const std::string& path) {
  const std::string text = session.device().description();
  if (session.output().json()) {
    session.output().document({{"description", text}});
  } else if (path.empty()) {
    session.output().data(text + '\n');
  } else {
    FileReplacement file(path);
    file.write(text);
    file.commit();
  }
}

}  // namespace

void addXml(CLI::App& app, Action& chosen) {
  auto path = std::make_shared<std::string>();
  CLI::App* command = app.add_subcommand("xml", "Fetch the description that the device carries");
  command->add_option("-o,--output", *path, "Write it here instead of standard output")->type_name("FILE");
  command->footer("Example:\n  oxgenapi --camera 192.168.0.20 xml -o camera.xml");
  command->callback([&chosen, path] { chosen = [path](Session& session) { writeDescription(session, *path); }; });
}

}  // namespace tool
