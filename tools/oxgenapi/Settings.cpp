#include "Settings.h"

#include <algorithm>
#include <fstream>
#include <iterator>

#include "Failure.h"

namespace tool {
namespace {

bool isBlank(char character) { return character == ' ' || (character >= '\t' && character <= '\r'); }

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

// Sorted, because the order in which a text names selectors says nothing about the setting.
std::string selectorKey(std::string_view list) {
  std::vector<std::string> selectors(1);
  for (const char character : list)
    if (character == ',')
      selectors.emplace_back();
    else if (!isBlank(character))
      selectors.back() += character;
  std::sort(selectors.begin(), selectors.end());
  std::string key;
  for (const std::string& selector : selectors) key += key.empty() ? selector : "," + selector;
  return "[" + key + "]";
}

Setting parseLine(std::string_view line) {
  const size_t equals = line.find('=');
  if (equals == std::string_view::npos || equals == 0) return {"", std::string(line), ""};
  const std::string_view name = trimmed(line.substr(0, equals));
  std::string_view value = trimmed(line.substr(equals + 1));
  if (value.size() >= 2 && value.front() == '"' && value.back() == '"') value = value.substr(1, value.size() - 2);
  const size_t open = name.find('[');
  const std::string feature(trimmed(name.substr(0, open)));
  std::string key = feature;
  if (open != std::string_view::npos) {
    const size_t close = name.rfind(']');
    const size_t end = close == std::string_view::npos || close < open ? name.size() : close;
    key += selectorKey(name.substr(open + 1, end - open - 1));
  }
  return {feature, key, std::string(value)};
}

// Escapes of the kinds that saving writes, and nothing that loading would take for something else.
bool comesBack(std::string_view value) {
  for (size_t at = 0; at < value.size(); ++at) {
    if (value[at] == '"') return false;
    if (value[at] == '\\') {
      ++at;
      if (at == value.size() || std::string_view("0abx").find(value[at]) == std::string_view::npos ||
          value.substr(at).starts_with("xFFFFFF"))
        return false;
    }
  }
  return true;
}

}  // namespace

bool comesBack(std::string_view feature, std::string_view text) {
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    const size_t open = line.find(" = \"");
    if (!line.starts_with(feature) || open == std::string_view::npos || line.size() < open + 5 || line.back() != '"' ||
        !comesBack(line.substr(open + 4, line.size() - open - 5)))
      return false;  // a line that begins otherwise is the rest of a value with a line feed
  }
  return true;
}

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(file), {}};
  if (!file.good() && !file.eof()) throw Failure(kFileFailed, "'" + path + "' cannot be read");
  return text;
}

std::vector<Setting> parseSettings(std::string_view text) {
  std::vector<Setting> settings;
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = trimmed(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    if (!line.empty() && line.front() != ';') settings.push_back(parseLine(line));
  }
  return settings;
}

}  // namespace tool
