#include <memory>

#include "Checks.h"
#include "Commands.h"

namespace tool {
namespace {

constexpr int64_t kLargestPeek = 16 * 1024 * 1024;  // bytes; a dump of more is a mistyped length

struct PeekOptions {
  int64_t address = 0;
  int64_t length = 0;
  std::string port = "Device";
};

void run(Session& session, const PeekOptions& options) {
  const std::vector<std::byte> bytes = session.map().node(options.port).memory(options.address, options.length);
  if (session.output().json())
    session.output().document({{"address", options.address}, {"bytes", hexText(bytes)}});
  else
    session.output().line(hexDump(options.address, bytes));
}

}  // namespace

void addPeek(const Command& program) {
  auto options = std::make_shared<PeekOptions>();
  const Command command = program.subcommand("peek", "Read bytes of the device's address space");
  command.option("address", options->address, "First address, decimal or 0x...").required().type("ADDRESS");
  command.option("length", options->length, "Number of bytes")
      .required()
      .type("LENGTH")
      .check(between(1, kLargestPeek));
  command.option("--port", options->port, "Port node to read through").type("NAME").showDefault();
  command.footer("Example:\n  oxgenapi peek 0x1c098 16");
  command.runs([options](Session& session) { run(session, *options); });
}

}  // namespace tool
