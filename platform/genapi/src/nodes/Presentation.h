// How a number is shown (Unit, Representation, DisplayNotation, DisplayPrecision), as far as the description alone
// says.
#pragma once
#include <optional>

#include "description/Description.h"

namespace GENAPI_NAMESPACE {

// The element that shows the node's value: its own, or the one that it inherits through pValue and the cells of its
// table; null for the default. Nothing when cells differ or a source is defective: then the index decides.
std::optional<const Property*> agreedPresentation(const Description& description, NodeIndex node, Element element);

}  // namespace GENAPI_NAMESPACE
