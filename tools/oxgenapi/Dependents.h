// Which features change, or may change, when a node does, and which ones decide about a node.
#pragma once

#include <GenApi/INodeMap.h>

#include <string>
#include <unordered_map>
#include <vector>

namespace tool {

// The features whose value, limits or availability depend on the node or on what a write to it writes, directly or
// through others, in the order of the description. Categories, which only list features, are left out.
std::vector<std::string> dependentFeatures(GENAPI_NAMESPACE::INodeMap& description, const std::string& name);

// Finds the features that decide about nodes: those whose writes reach something that the nodes are made of.
class Deciders {
 public:
  explicit Deciders(GENAPI_NAMESPACE::INodeMap& description);
  // What the nodes that these links lead to read, directly or through others, is written by these features; in the
  // order of the description, without `about`.
  std::vector<std::string> of(const std::vector<std::string>& links, const std::string& about) const;

 private:
  GENAPI_NAMESPACE::INodeMap& description_;
  std::vector<std::string> features_;                                                // in that order
  std::unordered_map<const GENAPI_NAMESPACE::INode*, std::vector<size_t>> writers_;  // indices of features
};

}  // namespace tool
