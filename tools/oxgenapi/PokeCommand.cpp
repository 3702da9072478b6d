#include <memory>

#include "Commands.h"

namespace tool {
namespace {

struct PokeOptions {
  int64_t address = 0;
  std::vector<std::string> bytes;
  std::string port = "Device";
};

void run(Session& session, const PokeOptions& options) {
  const std::vector<std::byte> bytes = parseBytes(options.bytes);
  session.map().node(options.port).setMemory(options.address, bytes.data(), bytes.size());
  if (session.output().json())
    session.output().document({{"address", options.address}, {"written", bytes.size()}});
  else
    session.output().line(std::to_string(bytes.size()) + " bytes written");
}

}  // namespace

void addPoke(const Command& program) {
  auto options = std::make_shared<PokeOptions>();
  const Command command = program.subcommand("poke", "Write bytes to the device's address space");
  command.option("address", options->address, "First address, decimal or 0x...").required().type("ADDRESS");
  command.option("bytes", options->bytes, "Bytes, two hexadecimal digits each").required().type("BYTES");
  command.option("--port", options->port, "Port node to write through").type("NAME").showDefault();
  command.footer("Example:\n  oxgenapi poke 0x1c098 00 00 04 d2");
  command.runs([options](Session& session) { run(session, *options); });
}

}  // namespace tool
