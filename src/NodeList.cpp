// The nodes that a node is related to.
#include <memory>

#include "Node.h"
#include "NodeText.h"

namespace orxGenApi {
namespace {

[[noreturn]] void refuseKind(const char* text) { throw orx_error(OXGENAPI_E_INVALID_HANDLE, text); }

}  // namespace

Node::Related Node::findRelated(TNodeList list, const char* unknown) const {
  GENAPI_NAMESPACE::NodeList_t nodes;
  GENAPI_NAMESPACE::FeatureList_t features;
  switch (list) {
    case NL_Children:
      if (typed_.type == NT_Category)
        typed_.category->GetFeatures(features);
      else
        typed_.node->GetChildren(nodes, GENAPI_NAMESPACE::ctReadingChildren);
      break;
    case NL_SelectedFeatures: {
      const auto* selector = dynamic_cast<GENAPI_NAMESPACE::ISelector*>(typed_.node);
      if (selector == nullptr || !selector->IsSelector()) refuseKind("This is not a selected node");
      selector->GetSelectedFeatures(features);
      break;
    }
    case NL_EnumEntries:
      if (typed_.type != NT_Enumeration) refuseKind("This is not an IEnum node");
      typed_.enumeration->GetEntries(nodes);
      break;
    case NL_SelectingFeatures: {
      const auto* selector = dynamic_cast<GENAPI_NAMESPACE::ISelector*>(typed_.node);
      if (selector == nullptr) refuseKind("This is not an ISelector node");
      selector->GetSelectingFeatures(features);
      break;
    }
    default: throw orx_error(OXGENAPI_E_NOT_SUPPORTED, unknown);
  }
  Related related(nodes.begin(), nodes.end());
  related.reserve(nodes.size() + features.size());
  for (GENAPI_NAMESPACE::IValue* feature : features) related.push_back(feature->GetNode());
  return related;
}

const Node::Related& Node::related(TNodeList list, const char* unknown) const {
  const auto place = static_cast<size_t>(list);
  const Related* known = place < related_.size() ? related_[place].load(std::memory_order_acquire) : nullptr;
  if (known != nullptr) return *known;
  auto found = std::make_unique<const Related>(findRelated(list, unknown));
  // Another thread may have been faster.
  if (related_[place].compare_exchange_strong(known, found.get(), std::memory_order_acq_rel)) known = found.release();
  return *known;
}

GENAPI_NAMESPACE::INode& Node::relatedAt(TNodeList list, int64_t index) const {
  const Related& nodes = related(list, "Unknown list type");
  if (index < 0 || static_cast<uint64_t>(index) >= nodes.size()) throwIndexOutOfRange(index, nodes.size());
  return *nodes[static_cast<size_t>(index)];
}

GENICAM_NAMESPACE::gcstring Node::listEntryName(TNodeList list, int64_t index) const {
  return relatedAt(list, index).GetName(true);
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
