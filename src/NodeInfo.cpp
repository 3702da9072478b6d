// Information queries of a node, and of the entries of an enumeration.
#include "Node.h"
#include "NodeInformation.h"
#include "NodeText.h"

namespace orxGenApi {

uint32_t Node::GetInfoAsBoolean(TNodeInfo info, bool* value) noexcept {
  return guarded(operation("::GetNodeInfoAsBoolean", kReading), [&] { *value = infoAsBoolean(typed_, info); });
}

uint32_t Node::GetInfoAsInteger(TNodeInfo info, int64_t* value) noexcept {
  return guarded(operation("::GetNodeInfoAsInteger", kReading), [&] { *value = infoAsInteger(typed_, info); });
}

uint32_t Node::GetInfoAsFloat(TNodeInfo info, double* value) noexcept {
  return guarded(operation("::GetNodeInfoAsFloat", kReading), [&] { *value = infoAsFloat(typed_, info); });
}

uint32_t Node::GetInfoAsString(TNodeInfo info, char* value, size_t& size) noexcept {
  return guardedText(operation("::GetNodeInfoAsString", kReading), value, size,
                     [&] { return infoAsText(typed_, info); });
}

uint32_t Node::GetInfoAsStringW(TNodeInfo info, wchar_t* value, size_t& size) noexcept {
  return guardedText(operation("::GetNodeInfoAsString", kReading), value, size,
                     [&] { return infoAsText(typed_, info); });
}

std::string Node::entryInfo(TNodeInfo info, int64_t index, int64_t* integer) const {
  const TypedNode entry(&relatedAt(NL_EnumEntries, index));
  // An item that has only one of the two forms is answered in that one.
  const int64_t number = isTextInfo(info) ? 0 : infoAsInteger(entry, info);
  std::string text = hasTextForm(info) ? infoAsText(entry, info) : std::string();
  if (integer != nullptr) *integer = number;
  return text;
}

uint32_t Node::GetInfoEnum(TNodeInfo info, int64_t index, int64_t* integer, char* text, size_t& size) noexcept {
  return guardedText(operation("::GetNodeInfoEnum", kReading), text, size,
                     [&] { return entryInfo(info, index, integer); });
}

uint32_t Node::GetInfoEnumW(TNodeInfo info, int64_t index, int64_t* integer, wchar_t* text, size_t& size) noexcept {
  return guardedText(operation("::GetNodeInfoEnum", kReading), text, size,
                     [&] { return entryInfo(info, index, integer); });
}

}  // namespace orxGenApi
