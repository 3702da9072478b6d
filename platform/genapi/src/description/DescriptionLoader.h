// From bytes to a Description, through the process-wide cache of descriptions in use.
#pragma once
#include <memory>
#include <string>
#include <string_view>

#include "GenApi/Types.h"

namespace GENAPI_NAMESPACE {

class Description;

struct LoadedDescription {
  std::shared_ptr<const Description> description;
  std::string sourceName;  // printed before line numbers: a file, "archive.zip(cam.xml)", or "<description>"
};

// Both throw RuntimeException "<source>:<line>: <NodeType> '<Name>': <Element>: <what is wrong>" on a fatal fault and
// BadAllocException when memory ran out; nothing leaks then.
LoadedDescription loadDescriptionFile(const std::string& fileName, EContentType contentType);
LoadedDescription loadDescriptionText(std::string_view bytes, EContentType contentType);

// Forgets descriptions that nobody uses (those in use are only known weakly anyway).
void clearDescriptionCache();

}  // namespace GENAPI_NAMESPACE
