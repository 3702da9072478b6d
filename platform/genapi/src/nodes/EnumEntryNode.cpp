#include "nodes/EnumEntryNode.h"

#include "nodes/EntryTable.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;

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

gcstring EnumEntryNode::GetSymbolic() const { return gcstring(entrySymbolic(description(), index())); }

gcstring EnumEntryNode::GetDisplayName() const {
  const Property* given = find(Element::DisplayName);
  return given ? gcstring(given->value()) : GetSymbolic();
}

std::string EnumEntryNode::readText(Reading) const {
  requireSound();
  return std::to_string(find(Element::Value)->integer);
}

void EnumEntryNode::FromString(const gcstring&, bool) {
  refuse<AccessException>("{}: not writable: an enumeration entry is a constant", name());
}

}  // namespace GENAPI_NAMESPACE
