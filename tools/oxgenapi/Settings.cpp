#include "Settings.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace tool {
namespace {

constexpr size_t kFirstBuffer = 64 * 1024;  // bytes; a larger text is saved once more, into a buffer of its own size

struct Run {
  const ProblemHandler& handler;
};

// Takes the feature's name off the front of the problem's text, where the library puts it.
Failure problemOf(NODE handle, uint32_t code, int64_t& access) {
  const Failure failure = oxgenapi::lastError(code);
  if (handle == nullptr) {
    return failure;
  }
  std::array<char, 256> name{};
  size_t size = name.size();
  NInfoAsString(handle, NI_Name, name.data(), size);
  NInfoAsInteger(handle, NI_AccessMode, &access);
  std::string text = failure.what();
  const std::string prefix = std::string(name.data()) + ": ";
  if (text.starts_with(prefix)) {
    text.erase(0, prefix.size());
  }
  return {code, text, name.data()};
}

bool onProblem(NODE handle, uint32_t code, void* run) noexcept {
  try {
    int64_t access = -1;
    const Failure failure = problemOf(handle, code, access);
    return static_cast<Run*>(run)->handler(failure, access);
  } catch (...) {
    return false;  // nothing can be told any more
  }
}

std::string joined(const std::vector<std::string>& features) {
  std::string names;
  for (const std::string& feature : features) {
    names += names.empty() ? feature : "|" + feature;
  }
  return names;
}

bool isBlank(char character) {
  return character == ' ' || (character >= '\t' && character <= '\r');
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) {
    text.remove_prefix(1);
  }
  while (!text.empty() && isBlank(text.back())) {
    text.remove_suffix(1);
  }
  return text;
}

// Sorted, because the order in which a text names selectors says nothing about the setting.
std::string selectorKey(std::string_view list) {
  std::vector<std::string> selectors(1);
  for (const char character : list) {
    if (character == ',') {
      selectors.emplace_back();
    } else if (!isBlank(character)) {
      selectors.back() += character;
    }
  }
  std::sort(selectors.begin(), selectors.end());
  std::string key;
  for (const std::string& selector : selectors) {
    key += key.empty() ? selector : "," + selector;
  }
  return "[" + key + "]";
}

Setting parseLine(std::string_view line) {
  const size_t equals = line.find('=');
  if (equals == std::string_view::npos || equals == 0) {
    return {"", std::string(line), ""};
  }
  const std::string_view name = trimmed(line.substr(0, equals));
  std::string_view value = trimmed(line.substr(equals + 1));
  if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
    value = value.substr(1, value.size() - 2);
  }
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

}  // namespace

std::string settingsText(const NodeMap& map, const std::vector<std::string>& features, const ProblemHandler& problem) {
  Run run{problem};
  const ProblemHandler silent = [](const Failure&, int64_t) { return true; };
  Run again{silent};
  const std::string names = joined(features);
  const auto save = [&](char* text, size_t& size, Run& reporting) {
    check(features.empty() ? NMSaveSetString(map.handle(), text, &size, onProblem, &reporting)
                           : NMSaveSetStringEx(map.handle(), text, &size, names.c_str(), onProblem, &reporting));
  };
  std::string text(kFirstBuffer, '\0');
  size_t size = text.size();
  save(text.data(), size, run);
  // A text that fills the buffer has been cut: learn its size and save once more, its problems being known already.
  while (size >= text.size()) {
    save(nullptr, size, again);
    text.assign(size + 1, '\0');
    size = text.size();
    save(text.data(), size, again);
  }
  text.resize(size > 0 ? size - 1 : 0);
  return text;
}

void loadSettings(const NodeMap& map, const std::string& path, bool validate, const ProblemHandler& problem) {
  Run run{problem};
  check(NMLoadSetEx(map.handle(), path.c_str(), validate, onProblem, &run));
}

std::vector<std::string> streamableFeatures(const NodeMap& map) {
  std::vector<std::string> names;
  for (const std::string& name : map.nodeNames()) {
    try {
      if (map.node(name).infoBoolean(NI_IsStreamable)) {
        names.push_back(name);
      }
    } catch (const Failure&) {
      continue;  // a node without a handle has no value to save
    }
  }
  return names;
}

std::vector<Setting> parseSettings(std::string_view text) {
  std::vector<Setting> settings;
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = trimmed(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    if (!line.empty() && line.front() != ';') {
      settings.push_back(parseLine(line));
    }
  }
  return settings;
}

std::optional<size_t> settingsIn(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) {
    return std::nullopt;
  }
  std::ifstream file(path, std::ios::binary);
  return parseSettings(std::string(std::istreambuf_iterator<char>(file), {})).size();
}

}  // namespace tool
