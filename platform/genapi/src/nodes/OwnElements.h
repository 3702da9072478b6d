// How nodes without a source to inherit from show their value: by their own elements, or by the defaults.
#pragma once
#include <string_view>

#include "nodes/NodeBase.h"

namespace GENAPI_NAMESPACE {

inline std::string_view ownUnit(const NodeBase& node) {
  const Property* given = node.find(Element::Unit);
  return given ? given->value() : std::string_view();
}

inline ERepresentation ownRepresentation(const NodeBase& node) {
  const Property* given = node.find(Element::Representation);
  return given ? static_cast<ERepresentation>(given->word) : PureNumber;
}

inline EDisplayNotation ownDisplayNotation(const NodeBase& node) {
  const Property* given = node.find(Element::DisplayNotation);
  return given ? static_cast<EDisplayNotation>(given->word) : fnAutomatic;
}

inline int64_t ownDisplayPrecision(const NodeBase& node) {
  const Property* given = node.find(Element::DisplayPrecision);
  return given ? given->integer : 6;
}

}  // namespace GENAPI_NAMESPACE
