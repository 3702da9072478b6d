#include "Checks.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <filesystem>
#include <limits>

namespace tool {
namespace {

std::string inQuotes(const std::string& text) { return "'" + text + "'"; }

std::string listed(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) {
    text += text.empty() ? "" : &word == &words.back() ? " or " : ", ";
    text += word;
  }
  return text;
}

std::string missingFile(const std::string& path) {
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) return inQuotes(path) + " is a folder, a file is wanted";
  return std::filesystem::exists(path, ignored) ? "" : "there is no file " + inQuotes(path);
}

std::string outOfRange(const std::string& text, int64_t least, int64_t most) {
  double number = 0;
  if (!CLI::detail::lexical_cast(text, number)) return inQuotes(text) + " is not a number";
  if (number >= static_cast<double>(least) && number <= static_cast<double>(most)) return "";
  return most == std::numeric_limits<int64_t>::max()
             ? text + " is too small: " + std::to_string(least) + " or more is wanted"
             : text + " is out of range: " + std::to_string(least) + " to " + std::to_string(most) + " is wanted";
}

}  // namespace

Check existingFile() {
  return [](std::string& path) { return missingFile(path); };
}

Check existingFileOrStream() {
  return [](std::string& path) { return path == "-" ? "" : missingFile(path); };
}

Check between(int64_t least, int64_t most) {
  return [=](std::string& text) { return outOfRange(text, least, most); };
}

Check atLeast(int64_t least) { return between(least, std::numeric_limits<int64_t>::max()); }

Check failureCode() {
  return [](std::string& text) {
    return outOfRange(text, 0x80000000, 0xffffffff).empty() ? "" : inQuotes(text) + " is not 0x80000000 to 0xffffffff";
  };
}

Check oneOf(std::vector<std::string> words) {
  return [words = std::move(words)](std::string& text) {
    const bool found = std::find(words.begin(), words.end(), text) != words.end();
    return found ? "" : inQuotes(text) + " is not " + listed(words);
  };
}

Check numberFor(std::vector<std::pair<std::string, int>> words) {
  return [words = std::move(words)](std::string& text) -> std::string {
    std::vector<std::string> names;
    for (const auto& [word, number] : words) {
      if (CLI::detail::to_lower(text) == word) {
        text = std::to_string(number);
        return "";
      }
      names.push_back(word);
    }
    return inQuotes(text) + " is not " + listed(names);
  };
}

std::string alternatives(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : "|") + word;
  return text;
}

std::vector<std::string> wordsOf(const std::string& alternatives) {
  return alternatives.find('|') == std::string::npos ? std::vector<std::string>()
                                                     : CLI::detail::split(alternatives, '|');
}

}  // namespace tool
