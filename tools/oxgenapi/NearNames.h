// The names that someone may have meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tool {

// At most three of `names` that differ from `wanted` by a few letters, upper and lower case alike, the nearest first;
// if no name is that close, names that begin with it or contain it.
std::vector<std::string> nearNames(std::string_view wanted, const std::vector<std::string>& names);

// "Did you mean A, B or C?"; empty without names.
std::string question(const std::vector<std::string>& names);

}  // namespace tool
