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

void addXml(const Command& program) {
  auto path = std::make_shared<std::string>();
  const Command command = program.subcommand("xml", "Fetch the description that the device carries");
  command.option("-o,--output", *path, "Write it here instead of standard output").type("FILE");
  command.footer("Example:\n  oxgenapi --camera 192.168.0.20 xml -o camera.xml");
  command.runs([path](Session& session) { writeDescription(session, *path); });
}

}  // namespace tool
