#include "CallTelemetry.h"

#include <charconv>
#include <cstring>
#include <vector>

#include "Text.h"

namespace Telemetry::_OxGenApi {
namespace {

constexpr const char* kModuleName = "OxGenApi";
constexpr const char* kModuleVersion = "3.6.0";

// This library's registration; settled at the first failure.
struct Module {
  OxTModule handle = nullptr;
  OxTSettings settings{OXT_SETTINGS_REVISION, OXT_NOT_REGISTERED, 0};
  Module() noexcept { OxTGetModule(kModuleName, kModuleVersion, &handle, &settings); }
  bool enabled() const noexcept { return settings.Enabled == OXT_ENABLED; }
};

const Module& module() noexcept {
  static const Module instance;
  return instance;
}

}  // namespace

bool admits(uint32_t level) noexcept {
  return module().enabled() && module().settings.Level <= level && module().settings.Level < OXT_LEVEL_OFF;
}

Log::Log(uint32_t level) noexcept {
  if (module().enabled()) OxTCreateLog(module().handle, level, &handle_);
}

Log::~Log() {
  if (handle_ == nullptr) return;
  try {
    storeAttributes();
  } catch (...) {  // the record goes without them
  }
  try {
    OxTSendLog(handle_, message.c_str());
  } catch (...) {  // thrown by a telemetry library of the caller's; the failure being reported comes first
  }
}

void Log::storeAttributes() {
  std::vector<OxTAttribute> entries;
  entries.reserve(size());
  for (const auto& [name, value] : *this) {
    OxTAttribute entry{name.c_str(), 0, {}};
    if (const bool* boolean = std::get_if<bool>(&value)) {
      entry.Tag = OXT_TAG_BOOLEAN;
      entry.Value.Boolean = *boolean ? 1 : 0;
    } else if (const int64_t* integer = std::get_if<int64_t>(&value)) {
      entry.Tag = OXT_TAG_INTEGER;
      entry.Value.Integer = *integer;
    } else if (const double* real = std::get_if<double>(&value)) {
      entry.Tag = OXT_TAG_DOUBLE;
      entry.Value.Double = *real;
    } else {
      const std::string& text = std::get<std::string>(value);
      if (text.empty()) continue;
      entry.Tag = OXT_TAG_STRING;
      entry.Value.String = text.c_str();
    }
    entries.push_back(entry);
  }
  OxTAttributeMapStore(handle_, entries.data(), entries.size());
}

}  // namespace Telemetry::_OxGenApi

namespace orxGenApi {
namespace {

// Longest text argument that a record shows, in bytes: names and paths fit, descriptions do not.
constexpr size_t kMaxShownBytes = 256;

}  // namespace

namespace rendering {

namespace {
template <class... Value>
void appendNumber(std::string& text, Value... value) {
  char digits[32];
  text.append(digits, std::to_chars(digits, digits + sizeof digits, value...).ptr);
}
}  // namespace

void appendInteger(std::string& text, int64_t value) { appendNumber(text, value); }
void appendInteger(std::string& text, uint64_t value) { appendNumber(text, value); }
void appendHexadecimal(std::string& text, uint64_t value) { appendNumber(text, value, 16); }
void appendReal(std::string& text, double value) { appendNumber(text, value); }

void appendText(std::string& text, const char* value) {
  const size_t length = strnlen(value, kMaxShownBytes + 1);
  text.append(1, '"').append(value, length > kMaxShownBytes ? kMaxShownBytes : length);
  text.append(length > kMaxShownBytes ? "...\"" : "\"");
}

void appendText(std::string& text, const wchar_t* value) {
  const size_t length = wcsnlen(value, kMaxShownBytes + 1);
  appendText(text, toNarrow(value, length).c_str());
}

void appendTypeName(std::string& text, const std::type_info& type) {
  const char* name = type.name();
  text += *name == '*' ? name + 1 : name;
}

}  // namespace rendering

void appendArguments(std::string& text, std::span<const Argument> arguments) {
  text += '(';
  for (const Argument& argument : arguments) {
    if (&argument != arguments.data()) text += ',';
    argument.append(text, argument.name, argument.value);
  }
  text += ')';
}

}  // namespace orxGenApi
