#include <algorithm>

#include "Commands.h"
#include "DependencyPicture.h"
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

void listNodes(Session& session) {
  const Output& output = session.output();
  const NodeMap& map = session.map();
  Json nodes = Json::array();
  for (const std::string& name : map.nodeNames()) {
    const std::string type = typeOf(map, name);
    if (output.json())
      nodes.push_back({{"name", name}, {"type", type}});
    else
      output.line(output.dim(type) + std::string(kTypeColumn - std::min(kTypeColumn - 1, type.size()), ' ') + name);
  }
  if (output.json()) output.document(nodes);
}

Json toJson(const DependencyPicture& picture) {
  Json nodes = Json::array();
  for (const auto& node : picture.nodes) nodes.push_back({{"name", node.name}, {"type", node.type}});
  Json edges = Json::array();
  for (const auto& edge : picture.edges)
    edges.push_back({{"from", edge.from}, {"to", edge.to}, {"elements", edge.label}, {"reads", edge.reads}});
  return {{"nodes", std::move(nodes)}, {"edges", std::move(edges)}};
}

void draw(Session& session, const std::string& feature) {
  const auto picture = dependencyPicture(session.device().description(), feature);
  if (!picture) {
    session.map().node(feature);  // the library says why there is none
    return;
  }
  if (session.output().json())
    session.output().document(toJson(*picture));
  else
    session.output().data(picture->dot() + '\n');
}

}  // namespace

void addNodes(const Command& program) {
  const Command command = program.subcommand("nodes", "List every node of the description with its type");
  auto feature = std::make_shared<std::string>();
  const Option graph =
      command.option("--graph", *feature, "Draw what a feature depends on, for Graphviz (default: Root)")
          .type("FEATURE")
          .valueOptional();
  command.footer(
      "Edges lead from a node to what it reads, named after the elements that make it so; dashed ones only "
      "invalidate.\n"
      "Example:\n  oxgenapi nodes --xml camera.xml\n  oxgenapi nodes --graph ExposureTime | dot -Tsvg -o exposure.svg");
  command.runs([feature, graph](Session& session) {
    if (graph.isGiven()) {
      draw(session, feature->empty() ? "Root" : *feature);
    } else {
      listNodes(session);
    }
  });
}

}  // namespace tool
