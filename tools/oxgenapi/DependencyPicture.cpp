#include "DependencyPicture.h"

#include <algorithm>
#include <map>
#include <unordered_set>

#include "Description.h"

namespace tool {
namespace {

using namespace GENAPI_NAMESPACE;

std::string dotQuoted(std::string_view text) {
  std::string word = "\"";
  for (const char character : text) {
    if (character == '"' || character == '\\') word += '\\';
    word += character;
  }
  return word + '"';
}

std::string nameOf(const INode& node) { return std::string(node.GetName().view()); }

}  // namespace

std::string DependencyPicture::dot() const {
  std::string text =
      "digraph " + dotQuoted(nodes.empty() ? "" : nodes.front().name) + " {\n  rankdir=LR;\n  node [shape=box];\n";
  for (const Node& node : nodes) {
    // The line break stands outside the quoting: "\n" is the language's own.
    const std::string name = dotQuoted(node.name);
    const std::string type = dotQuoted(node.type);
    text += "  " + name + " [label=" + name.substr(0, name.size() - 1) + "\\n" + type.substr(1);
    text += &node == &nodes.front() ? ", style=bold];\n" : "];\n";
  }
  for (const Edge& edge : edges) {
    text += "  " + dotQuoted(edge.from) + " -> " + dotQuoted(edge.to) + " [label=" + dotQuoted(edge.label);
    text += edge.reads ? "];\n" : ", style=dashed];\n";
  }
  return text + "}";
}

std::optional<DependencyPicture> dependencyPicture(std::string_view description, const std::string& name) {
  const Description map = loadDescriptionBytes(description);
  INode* start = map->GetNode(name.c_str());
  if (start == nullptr) return std::nullopt;
  DependencyPicture picture;
  std::unordered_set<const INode*> seen{start};
  std::vector<INode*> order{start};
  for (size_t next = 0; next < order.size(); ++next) {
    INode* node = order[next];
    picture.nodes.push_back({nameOf(*node), propertyText(*node, "NodeType")});
    NodeList_t reading;
    node->GetChildren(reading, ctReadingChildren);
    const std::unordered_set<const INode*> read(reading.begin(), reading.end());
    NodeList_t children;
    node->GetChildren(children, ctInvalidatingChildren);  // reading ones included
    std::map<std::string, std::string> labels;
    for (const Link& link : linksOf(*node)) {
      std::string& label = labels[link.target];
      label += (label.empty() ? "" : ", ") + link.element;
    }
    for (INode* child : children) {
      const std::string to = nameOf(*child);
      picture.edges.push_back({picture.nodes.back().name, to, labels[to], read.contains(child)});
      if (seen.insert(child).second) order.push_back(child);
    }
  }
  return picture;
}

}  // namespace tool
