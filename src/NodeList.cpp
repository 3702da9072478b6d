// The nodes that a node is related to.
#include "Node.h"
#include "NodeText.h"

namespace orxGenApi {
namespace {

using GENAPI_NAMESPACE::FeatureList_t;
using GENAPI_NAMESPACE::NodeList_t;

NodeList_t nodesOf(const FeatureList_t& features) {
  NodeList_t nodes;
  nodes.reserve(features.size());
  for (GENAPI_NAMESPACE::IValue* feature : features) nodes.push_back(feature->GetNode());
  return nodes;
}

[[noreturn]] void refuseKind(const char* text) {
  throw orx_error(OXGENAPI_E_INVALID_HANDLE, text);
}

}  // namespace

NodeList_t Node::list(TNodeList list, const char* unknown) const {
  NodeList_t nodes;
  FeatureList_t features;
  switch (list) {
    case NL_Children:
      if (typed_.type == NT_Category) {
        typed_.category->GetFeatures(features);
        return nodesOf(features);
      }
      typed_.node->GetChildren(nodes, GENAPI_NAMESPACE::ctReadingChildren);
      return nodes;
    case NL_SelectedFeatures: {
      const auto* selector = dynamic_cast<GENAPI_NAMESPACE::ISelector*>(typed_.node);
      if (selector == nullptr || !selector->IsSelector()) refuseKind("This is not a selected node");
      selector->GetSelectedFeatures(features);
      return nodesOf(features);
    }
    case NL_EnumEntries:
      if (typed_.type != NT_Enumeration) refuseKind("This is not an IEnum node");
      typed_.enumeration->GetEntries(nodes);
      return nodes;
    case NL_SelectingFeatures: {
      const auto* selector = dynamic_cast<GENAPI_NAMESPACE::ISelector*>(typed_.node);
      if (selector == nullptr) refuseKind("This is not an ISelector node");
      selector->GetSelectingFeatures(features);
      return nodesOf(features);
    }
  }
  throw orx_error(OXGENAPI_E_NOT_SUPPORTED, unknown);
}

std::string Node::listEntryName(TNodeList which, int64_t index) const {
  const NodeList_t nodes = list(which, "Unknown list type");
  if (index < 0 || static_cast<uint64_t>(index) >= nodes.size()) throwIndexOutOfRange(index, nodes.size());
  return nodes[static_cast<size_t>(index)]->GetName(true).c_str();
}

uint32_t Node::GetListCount(TNodeList which, int64_t* count) noexcept {
  return guarded(operation("::ListCount", kReading),
                 [&] { *count = static_cast<int64_t>(list(which, "Given list type is unknown").size()); });
}

uint32_t Node::GetList(TNodeList which, int64_t index, char* entry, size_t& size) noexcept {
  return guardedText(operation("::List", kReading), entry, size, [&] { return listEntryName(which, index); });
}

uint32_t Node::GetListW(TNodeList which, int64_t index, wchar_t* entry, size_t& size) noexcept {
  return guardedText(operation("::List", kReading), entry, size, [&] { return listEntryName(which, index); });
}

}  // namespace orxGenApi
