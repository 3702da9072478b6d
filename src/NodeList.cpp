// The nodes that a node is related to.
#include "Node.h"
#include "NodeText.h"

namespace orxGenApi {
namespace {

[[noreturn]] void refuseKind(const char* text) {
  throw orx_error(OXGENAPI_E_INVALID_HANDLE, text);
}

}  // namespace

// What the engine answers: nodes, or values; the other list is empty.
struct Node::Related {
  GENAPI_NAMESPACE::NodeList_t nodes;
  GENAPI_NAMESPACE::FeatureList_t features;

  size_t size() const noexcept { return nodes.size() + features.size(); }
  GENAPI_NAMESPACE::INode& at(size_t index) const {
    return nodes.empty() ? *features[index]->GetNode() : *nodes[index];
  }
};

Node::Related Node::related(TNodeList list, const char* unknown) const {
  Related related;
  switch (list) {
    case NL_Children:
      if (typed_.type == NT_Category) {
        typed_.category->GetFeatures(related.features);
      } else {
        typed_.node->GetChildren(related.nodes, GENAPI_NAMESPACE::ctReadingChildren);
      }
      return related;
    case NL_SelectedFeatures: {
      const auto* selector = dynamic_cast<GENAPI_NAMESPACE::ISelector*>(typed_.node);
      if (selector == nullptr || !selector->IsSelector()) refuseKind("This is not a selected node");
      selector->GetSelectedFeatures(related.features);
      return related;
    }
    case NL_EnumEntries:
      if (typed_.type != NT_Enumeration) refuseKind("This is not an IEnum node");
      typed_.enumeration->GetEntries(related.nodes);
      return related;
    case NL_SelectingFeatures: {
      const auto* selector = dynamic_cast<GENAPI_NAMESPACE::ISelector*>(typed_.node);
      if (selector == nullptr) refuseKind("This is not an ISelector node");
      selector->GetSelectingFeatures(related.features);
      return related;
    }
  }
  throw orx_error(OXGENAPI_E_NOT_SUPPORTED, unknown);
}

GENICAM_NAMESPACE::gcstring Node::listEntryName(TNodeList list, int64_t index) const {
  const Related nodes = related(list, "Unknown list type");
  if (index < 0 || static_cast<uint64_t>(index) >= nodes.size()) throwIndexOutOfRange(index, nodes.size());
  return nodes.at(static_cast<size_t>(index)).GetName(true);
}

uint32_t Node::GetListCount(TNodeList list, int64_t* count) noexcept {
  return guarded(operation("::ListCount", kReading),
                 [&] { *count = static_cast<int64_t>(related(list, "Given list type is unknown").size()); });
}

uint32_t Node::GetList(TNodeList list, int64_t index, char* entry, size_t& size) noexcept {
  return guardedText(operation("::List", kReading), entry, size, [&] { return listEntryName(list, index); });
}

uint32_t Node::GetListW(TNodeList list, int64_t index, wchar_t* entry, size_t& size) noexcept {
  return guardedText(operation("::List", kReading), entry, size, [&] { return listEntryName(list, index); });
}

}  // namespace orxGenApi
