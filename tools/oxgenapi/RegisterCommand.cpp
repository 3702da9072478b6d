#include <memory>

#include "Commands.h"

namespace tool {
namespace {

void showRegister(Session& session, const std::string& name) {
  const Node node = session.map().node(name);
  const std::vector<std::byte> bytes = node.registerData();
  const int64_t address = node.infoInteger(NI_RegisterAddress);
  if (session.output().json()) {
    session.output().document(
        {{"name", name}, {"address", address}, {"length", bytes.size()}, {"bytes", hexText(bytes)}});
  } else {
    session.output().line(hexDump(address, bytes));
  }
}

}  // namespace

void addRegister(const Command& program) {
  auto name = std::make_shared<std::string>();
  const Command command = program.subcommand("register", "Read the bytes of a register node");
  command.option("name", *name, "Register node").required().type("NAME");
  command.footer("Example:\n  oxgenapi register LUTValueAll");
  command.runs([name](Session& session) { showRegister(session, *name); });
}

}  // namespace tool
