// What one node of a description depends on, as a graph.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

struct DependencyPicture {
  struct Node {
    std::string name;
    std::string type;  // "IntReg"
  };
  struct Edge {
    std::string from;
    std::string to;     // what `from` depends on
    std::string label;  // the elements that make it so: "pValue, pMax"
    bool reads;         // false: a change of `to` only drops what is remembered of `from`
  };

  std::vector<Node> nodes;  // the node asked for first
  std::vector<Edge> edges;

  // As a text in Graphviz' language (dot).
  std::string dot() const;
};

// Everything that the node takes its value and limits from, and what drops them, directly or through others. Nothing
// when the description has no node `name`. Throws GENICAM_NAMESPACE::GenericException for one that does not load.
std::optional<DependencyPicture> dependencyPicture(std::string_view description, const std::string& name);

}  // namespace tool
