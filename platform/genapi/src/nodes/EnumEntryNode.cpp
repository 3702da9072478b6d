#include "nodes/EnumEntryNode.h"

#include "Base/GCException.h"
#include "nodes/EntryTable.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;

EnumEntryNode::EnumEntryNode(NodeMap& map, NodeIndex index) : NodeBase(map, index) {}

int64_t EnumEntryNode::GetValue() {
  requireSound();
  return find(Element::Value)->integer;
}

double EnumEntryNode::GetNumericValue() {
  const Property* given = find(Element::NumericValue);
  return given ? given->real : static_cast<double>(GetValue());
}

bool EnumEntryNode::IsSelfClearing() {
  const Property* given = find(Element::IsSelfClearing);
  return given && given->word == Yes;
}

gcstring EnumEntryNode::GetSymbolic() const {
  return gcstring(entrySymbolic(map().description(), index()));
}

gcstring EnumEntryNode::GetDisplayName() const {
  const Property* given = find(Element::DisplayName);
  return given ? gcstring(given->value()) : GetSymbolic();
}

gcstring EnumEntryNode::ToString(bool, bool) {
  return reading([&] { return gcstring(std::string_view(std::to_string(GetValue()))); });
}

void EnumEntryNode::FromString(const gcstring&, bool) {
  throw ACCESS_EXCEPTION("%s: not writable: an enumeration entry is a constant", zeroTerminated(name()).c_str());
}

}  // namespace GENAPI_NAMESPACE
