#include <algorithm>

#include "Commands.h"
#include "Value.h"

namespace tool {
namespace {

constexpr size_t kTypeColumn = 13;

// Only value and port nodes have a handle; a helper of the description (a table, a converter) is a plain node.
std::string typeOf(const NodeMap& map, const std::string& name) {
  try {
    return typeName(map.node(name).type());
  } catch (const Failure&) {
    return typeName(NT_Other);
  }
}

void run(Session& session) {
  const Output& output = session.output();
  const NodeMap& map = session.map();
  Json nodes = Json::array();
  for (const std::string& name : map.nodeNames()) {
    const std::string type = typeOf(map, name);
    if (output.json()) {
      nodes.push_back({{"name", name}, {"type", type}});
    } else {
      output.line(output.dim(type) + std::string(kTypeColumn - std::min(kTypeColumn - 1, type.size()), ' ') + name);
    }
  }
  if (output.json()) {
    output.document(nodes);
  }
}

}  // namespace

void addNodes(CLI::App& app, Action& chosen) {
  CLI::App* command = app.add_subcommand("nodes", "List every node of the description with its type");
  command->footer("Example:\n  oxgenapi nodes --xml camera.xml");
  command->callback([&chosen] { chosen = run; });
}

}  // namespace tool
