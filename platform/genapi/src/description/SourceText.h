// The text of a description before it is parsed: which encoding it has, where the XML begins, how much there is of it.
#pragma once
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "description/BuildFindings.h"

namespace GENAPI_NAMESPACE {

// UTF-16 with a byte-order mark, and ISO-8859-1 when declared and needed, as UTF-8; empty for all that is UTF-8
// already.
std::string decodedCopy(std::string_view bytes);

struct SourceShape {
  size_t start;     // offset of the first '<'
  size_t tags;      // number of '<': never fewer than there are elements
  bool references;  // whether there is any '&'
};

// Finds the first tag and notes what is unusual: text before it, bytes that are not UTF-8, an unknown encoding. Fatal:
// no tag at all, too much text before it, more tags than any description needs.
SourceShape examineSource(std::string_view text, BuildFindings& findings);

// Offsets of the '&' that the parser leaves alone because they begin no reference it knows.
std::vector<size_t> unknownReferences(std::string_view text);

}  // namespace GENAPI_NAMESPACE
