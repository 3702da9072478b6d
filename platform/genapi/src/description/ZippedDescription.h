// Descriptions inside zip archives, as cameras keep them.
#pragma once
#include <string>
#include <string_view>

#include "GenApi/Types.h"

namespace GENAPI_NAMESPACE {

bool isZip(std::string_view bytes);

struct UnzippedDescription {
  std::string name;
  std::string text;
};

// The only member whose name ends in ".xml". Throws LoadFault if there is none or several, if it is encrypted or
// damaged or packed in a way other than stored and deflated, or if it grows past the limits.
UnzippedDescription readZippedDescription(std::string_view archive);

}  // namespace GENAPI_NAMESPACE
