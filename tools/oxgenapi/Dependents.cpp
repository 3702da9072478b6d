#include "Dependents.h"

#include <GenApi/INode.h>

#include <algorithm>
#include <unordered_set>

namespace tool {

using namespace GENAPI_NAMESPACE;

namespace {

// The node and all that a write to it writes.
std::vector<const INode*> written(const INode* node) {
  std::vector<const INode*> nodes{node};
  for (size_t next = 0; next < nodes.size(); ++next) {
    NodeList_t children;
    nodes[next]->GetChildren(children, ctWritingChildren);
    for (const INode* child : children) {
      if (std::find(nodes.begin(), nodes.end(), child) == nodes.end()) {
        nodes.push_back(child);
      }
    }
  }
  return nodes;
}

}  // namespace

std::vector<std::string> dependentFeatures(INodeMap& description, const std::string& name) {
  const INode* const node = description.GetNode(name.c_str());
  if (node == nullptr) {
    return {};
  }
  std::unordered_set<const INode*> depending;
  for (const INode* each : written(node)) {
    NodeList_t nodes;
    each->GetChildren(nodes, ctDependingNodes);
    depending.insert(nodes.begin(), nodes.end());
  }
  depending.erase(node);
  std::vector<std::string> features;
  NodeList_t all;
  description.GetNodes(all);  // in the order of the description
  for (const INode* each : all) {
    if (depending.contains(each) && each->IsFeature() && each->GetPrincipalInterfaceType() != intfICategory) {
      features.emplace_back(each->GetName().view());
    }
  }
  return features;
}

}  // namespace tool
