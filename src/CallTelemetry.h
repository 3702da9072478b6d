// Records of failures for the telemetry library, and the rendering of a call's arguments in them.
//
// Nothing here is rendered, and nothing allocated, unless the telemetry library wants the record. A record that cannot
// be built or sent is dropped; it never changes what the call reports.
#pragma once
#include <array>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <tuple>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <variant>

#include "OxGenApi/Types.h"
#include "OxTelemetry/OxTelemetry.h"

namespace Telemetry::_OxGenApi {

class AttributeMap : public std::map<std::string, std::variant<bool, int64_t, double, std::string>> {};

// One record; sent when it ends, if the telemetry library gave one for its level.
class Log : public AttributeMap {
 public:
  explicit Log(uint32_t level) noexcept;
  ~Log();
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

  std::string message;

 private:
  void storeAttributes();
  OxTLog handle_ = nullptr;
};

// Whether a record of this level would be taken.
bool admits(uint32_t level) noexcept;

// Sends what the function writes into the record.
template <class Fill>
void sendRecord(uint32_t level, Fill&& fill) noexcept {
  if (!admits(level)) return;
  try {
    Log record(level);
    fill(record);
  } catch (...) {  // no memory for the text: what there is of it is sent
  }
}

}  // namespace Telemetry::_OxGenApi

namespace orxGenApi {

// An argument of an export, as the record of its failure shows it.
struct Argument {
  const char* name;
  const void* value;
  void (*append)(std::string& text, const char* name, const void* value);
};

// A record passed by pointer: only its type is shown.
template <class Data>
struct RecordArgument {};
template <class Data>
RecordArgument<Data> record(const Data*) {
  return {};
}

namespace rendering {

void appendInteger(std::string& text, int64_t value);
void appendInteger(std::string& text, uint64_t value);
void appendHexadecimal(std::string& text, uint64_t value);
void appendReal(std::string& text, double value);
void appendText(std::string& text, const char* value);
void appendText(std::string& text, const wchar_t* value);
// A mangled type name; the mark of a type that is local to one shared object is left out.
void appendTypeName(std::string& text, const std::type_info& type);

template <class T>
inline constexpr bool isHandle = std::is_same_v<T, NODEMAP> || std::is_same_v<T, NODE> ||
                                 std::is_same_v<T, NODEMAPSTREAM> || std::is_same_v<T, FWUPDATER>;

template <class T>
void appendValue(std::string& text, const T& value) {
  if constexpr (std::is_same_v<T, bool>) {
    text += value ? "true" : "false";
  } else if constexpr (std::is_enum_v<T>) {
    appendValue(text, static_cast<std::underlying_type_t<T>>(value));
  } else if constexpr (std::is_floating_point_v<T>) {
    appendReal(text, value);
  } else if constexpr (std::is_unsigned_v<T>) {
    appendInteger(text, static_cast<uint64_t>(value));
  } else if constexpr (std::is_integral_v<T>) {
    appendInteger(text, static_cast<int64_t>(value));
  } else if (value == nullptr) {
    text += "<null>";
  } else if constexpr (std::is_same_v<T, const char*> || std::is_same_v<T, const wchar_t*>) {
    appendText(text, value);
  } else {
    text += isHandle<T> ? "@" : "0x";
    appendHexadecimal(text, reinterpret_cast<uintptr_t>(value));
  }
}

template <class T>
void appendArgument(std::string& text, const char* name, const void* value) {
  // What a handle points to is nobody's business but the base library's.
  constexpr bool isHandleOutput = isHandle<std::remove_pointer_t<T>>;
  appendTypeName(text, isHandle<T> ? typeid(void*) : isHandleOutput ? typeid(void**) : typeid(T));
  text.append(1, ' ').append(name).append(1, '=');
  appendValue(text, *static_cast<const T*>(value));
}

template <class T>
struct Appender {
  static constexpr auto kFunction = &appendArgument<T>;
};
template <class Data>
struct Appender<RecordArgument<Data>> {
  static void append(std::string& text, const char*, const void*) {
    appendTypeName(text, typeid(Data));
    text += " Data = <...>";
  }
  static constexpr auto kFunction = &append;
};

}  // namespace rendering

// The named arguments of one call, by reference: args("Node", Node, "Value", Value).
template <class... NamesAndValues>
class Arguments {
 public:
  static constexpr size_t kCount = sizeof...(NamesAndValues) / 2;
  static_assert(sizeof...(NamesAndValues) % 2 == 0, "every argument needs its name");

  explicit Arguments(const NamesAndValues&... all) noexcept : all_(all...) {}

  std::array<Argument, kCount> list() const noexcept { return list(std::make_index_sequence<kCount>()); }

 private:
  template <size_t... Index>
  std::array<Argument, kCount> list(std::index_sequence<Index...>) const noexcept {
    return {argument(std::get<2 * Index>(all_), std::get<2 * Index + 1>(all_))...};
  }
  template <class T>
  static Argument argument(const char* name, const T& value) noexcept {
    return {name, static_cast<const void*>(&value), rendering::Appender<T>::kFunction};
  }

  std::tuple<const NamesAndValues&...> all_;
};

template <class... NamesAndValues>
Arguments<NamesAndValues...> args(const NamesAndValues&... namesAndValues) noexcept {
  return Arguments<NamesAndValues...>(namesAndValues...);
}

// Appends "(<argument>,<argument>)".
void appendArguments(std::string& text, std::span<const Argument> arguments);

}  // namespace orxGenApi
