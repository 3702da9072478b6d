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
  if (session.output().json()) {
    session.output().document({{"address", options.address}, {"written", bytes.size()}});
  } else {
    session.output().line(std::to_string(bytes.size()) + " bytes written");
  }
}

}  // namespace

void addPoke(CLI::App& app, Action& chosen) {
  auto options = std::make_shared<PokeOptions>();
  CLI::App* command = app.add_subcommand("poke", "Write bytes to the device's address space");
  command->add_option("address", options->address, "First address, decimal or 0x...")->required()->type_name("ADDRESS");
  command->add_option("bytes", options->bytes, "Bytes, two hexadecimal digits each")->required()->type_name("BYTES");
  command->add_option("--port", options->port, "Port node to write through")->type_name("NAME")->capture_default_str();
  command->footer("Example:\n  oxgenapi poke 0x1c098 00 00 04 d2");
  command->callback([&chosen, options] { chosen = [options](Session& session) { run(session, *options); }; });
}

}  // namespace tool
