// Settings texts: saved from a node map, loaded into it, compared with each other.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Failure.h"
#include "NodeMap.h"

namespace tool {

// Called for each problem, with the access mode of the feature concerned (-1: none is known); true: go on.
using ProblemHandler = std::function<bool(const Failure&, int64_t access)>;

// The named features, or all streamable ones where `features` is empty. Throw Failure when stopped or when nothing can
// be saved or loaded at all.
std::string settingsText(const NodeMap& map, const std::vector<std::string>& features, const ProblemHandler& problem);
void loadSettings(const NodeMap& map, const std::string& path, bool validate, const ProblemHandler& problem);

// Names of all streamable features, in the order in which they are saved.
std::vector<std::string> streamableFeatures(const NodeMap& map);

// One line of a settings text. Two settings are about the same thing if their keys are equal: the key has no blanks
// and its selectors are sorted.
struct Setting {
  std::string feature;
  std::string key;    // "Gain[GainSelector(All)]"
  std::string value;  // as it stands in the text, without quotes, escapes unresolved
};

// Comments and empty lines are left out; a line without "=" (the rest of a value with a line feed) is a key of its own.
std::vector<Setting> parseSettings(std::string_view text);

// How many settings the text in a file has; nothing for a pipe or terminal, which can be read only once.
std::optional<size_t> settingsIn(const std::string& path);

}  // namespace tool
