// The table of pixel formats.
#pragma once

#include <span>

#include "OxPixels/Format.h"

namespace ox::pixels {

/// All formats, in the order of their numbers.
std::span<const Format> formatTable() noexcept;

}  // namespace ox::pixels
