// Settings texts as the tool compares and counts them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tool {

// One line of a settings text. Two settings are about the same thing if their keys are equal: the key has no blanks
// and its selectors are sorted.
struct Setting {
  std::string feature;
  std::string key;    // "Gain[GainSelector(All)]"
  std::string value;  // as it stands in the text, without quotes, escapes unresolved
};

// Comments and empty lines are left out; a line without "=" (the rest of a value with a line feed) is a key of its own.
std::vector<Setting> parseSettings(std::string_view text);

// Whether the settings text of one feature, as the library has saved it, brings the feature's own text back when it is
// loaded: the format has no way to write characters beyond ASCII, quotes, backslashes and line feeds.
bool comesBack(std::string_view feature, std::string_view text);

// The bytes of a file. Throws Failure.
std::string readFile(const std::string& path);

}  // namespace tool
