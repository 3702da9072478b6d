#include "Dependents.h"

#include <GenApi/INode.h>

#include <algorithm>
#include <set>
#include <unordered_set>

namespace tool {

using namespace GENAPI_NAMESPACE;

namespace {

// The nodes and all that is reached from them through children of a kind.
std::vector<const INode*> reached(std::vector<const INode*> nodes, ELinkType kind) {
  std::unordered_set<const INode*> known(nodes.begin(), nodes.end());
  for (size_t next = 0; next < nodes.size(); ++next) {
    NodeList_t children;
    nodes[next]->GetChildren(children, kind);
    for (const INode* child : children)
      if (known.insert(child).second) nodes.push_back(child);
  }
  return nodes;
}

bool isValueFeature(const INode& node) {
  const EInterfaceType type = node.GetPrincipalInterfaceType();
  return node.IsFeature() && type != intfICategory && type != intfICommand && type != intfIEnumEntry;
}

}  // namespace

std::vector<std::string> dependentFeatures(INodeMap& description, const std::string& name) {
  const INode* const node = description.GetNode(name.c_str());
  if (node == nullptr) return {};
  std::unordered_set<const INode*> depending;
  for (const INode* each : reached({node}, ctWritingChildren)) {
    NodeList_t nodes;
    each->GetChildren(nodes, ctDependingNodes);
    depending.insert(nodes.begin(), nodes.end());
  }
  depending.erase(node);
  std::vector<std::string> features;
  NodeList_t all;
  description.GetNodes(all);  // in the order of the description
  for (const INode* each : all)
    if (depending.contains(each) && each->IsFeature() && each->GetPrincipalInterfaceType() != intfICategory)
      features.emplace_back(each->GetName().view());
  return features;
}

Deciders::Deciders(INodeMap& description) : description_(description) {
  NodeList_t all;
  description.GetNodes(all);
  for (const INode* node : all) {
    if (!isValueFeature(*node)) continue;
    for (const INode* each : reached({node}, ctWritingChildren))
      if (each->GetPrincipalInterfaceType() != intfIPort) writers_[each].push_back(features_.size());
    features_.emplace_back(node->GetName().view());
  }
}

std::vector<std::string> Deciders::of(const std::vector<std::string>& links, const std::string& about) const {
  std::vector<const INode*> start;
  for (const std::string& link : links)
    if (const INode* node = description_.GetNode(link.c_str())) start.push_back(node);
  std::set<size_t> found;
  for (const INode* node : reached(std::move(start), ctReadingChildren))
    if (const auto writers = writers_.find(node); writers != writers_.end())
      found.insert(writers->second.begin(), writers->second.end());
  std::vector<std::string> names;
  for (const size_t feature : found)
    if (features_[feature] != about) names.push_back(features_[feature]);
  return names;
}

}  // namespace tool
