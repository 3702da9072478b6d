// The root element: is it a description, of which schema, and what it says about the device.
#pragma once
#include <pugixml.hpp>

#include "description/DescriptionBuilder.h"

namespace GENAPI_NAMESPACE {

struct DocumentKind {
  std::string_view prefix;  // of the element names, with its colon; "" mostly
  bool schema10;
};

// Fills the device texts. Fatal for a root that is no description and for schema versions other than 1.0 and 1.1.
DocumentKind readDocumentAttributes(pugi::xml_node root, DescriptionParts& parts);

}  // namespace GENAPI_NAMESPACE
