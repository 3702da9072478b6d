// Typed values and the conversions between them.
#include <cmath>

#include "Node.h"
#include "NodeText.h"

namespace orxGenApi {

using GENICAM_NAMESPACE::gcstring;

namespace {

// Every read goes through the caches.
constexpr bool kUseCache = false;

[[noreturn]] void refuseConversion(const char* text) { throw orx_error(OXGENAPI_E_NOT_SUPPORTED, text); }

// Cuts towards zero. A number that no 64-bit integer holds is refused, never bent into one.
int64_t truncated(const TypedNode& node, double value, uint32_t code) {
  constexpr double kLimit = 9223372036854775808.0;
  if (value >= -kLimit && value < kLimit) return static_cast<int64_t>(value);
  throw orx_error(code, std::string(node.name().c_str()) + ": " + realText(value) + " does not fit a 64-bit integer");
}

}  // namespace

bool Node::readBoolean(bool verify) {
  switch (typed_.type) {
    case NT_Boolean: return typed_.boolean->GetValue(verify, kUseCache);
    case NT_Command: return typed_.command->IsDone(true);
    case NT_Float:
    case NT_Integer: return readInteger(verify) != 0;
    default: refuseConversion("Value of this feature can not be returned as boolean");
  }
}

int64_t Node::readInteger(bool verify) {
  switch (typed_.type) {
    case NT_Integer: return typed_.integer->GetValue(verify, kUseCache);
    case NT_Boolean:
    case NT_Command: return readBoolean(verify) ? 1 : 0;
    case NT_Enumeration: return typed_.enumeration->GetIntValue(verify, kUseCache);
    case NT_EnumEntry: return typed_.entry->GetValue();
    case NT_Float: return truncated(typed_, readFloat(verify), OXGENAPI_E_UNSPECIFIED);
    default: refuseConversion("Value of this feature can not be returned as integer");
  }
}

double Node::readFloat(bool verify) {
  switch (typed_.type) {
    case NT_Float: return typed_.real->GetValue(verify, kUseCache);
    case NT_Boolean:
    case NT_Command:
    case NT_Enumeration:
    case NT_EnumEntry:
    case NT_Integer: return static_cast<double>(readInteger(verify));
    default: refuseConversion("Value of this feature can not be returned as float");
  }
}

gcstring Node::readText(bool verify) {
  switch (typed_.type) {
    case NT_EnumEntry: return typed_.entry->GetSymbolic();
    case NT_Float: return gcstring(realText(readFloat(verify)));
    case NT_Integer: return gcstring(integerText(readInteger(verify)));
    case NT_Register: break;  // refused although it has a value
    default:
      if (typed_.value != nullptr) return typed_.value->ToString(verify, kUseCache);
  }
  refuseConversion("Value of this feature can not be returned as string");
}

void Node::writeBoolean(bool verify, bool value) {
  switch (typed_.type) {
    case NT_Boolean: return typed_.boolean->SetValue(value, verify);
    case NT_Command:
      if (value) typed_.command->Execute(true);
      return;
    case NT_Float:
    case NT_Integer: return writeInteger(verify, value ? 1 : 0);
    default: refuseConversion("Value of this feature can not be set as boolean");
  }
}

void Node::writeInteger(bool verify, int64_t value) {
  switch (typed_.type) {
    case NT_Integer: return typed_.integer->SetValue(value, verify);
    case NT_Boolean:
    case NT_Command: return writeBoolean(verify, value != 0);
    case NT_Enumeration: return typed_.enumeration->SetIntValue(value, verify);
    case NT_Float: return writeFloat(verify, static_cast<double>(value));
    default: refuseConversion("Value of this feature can not be set as integer");
  }
}

void Node::writeFloat(bool verify, double value) {
  switch (typed_.type) {
    case NT_Float: return typed_.real->SetValue(value, verify);
    case NT_Boolean:
    case NT_Command:
    case NT_Enumeration:
    case NT_Integer: return writeInteger(verify, truncated(typed_, value, OXGENAPI_E_INVALID_ARGUMENT));
    default: refuseConversion("Value of this feature can not be set as float");
  }
}

void Node::writeText(bool verify, const char* value) {
  if (typed_.type == NT_Category) throw orx_error(OXGENAPI_E_NOT_WRITABLE, "Category is RO");
  if (typed_.value == nullptr) refuseConversion("Value of this feature can not be set as string");
  typed_.value->FromString(value, verify);
}

uint32_t Node::GetAsBoolean(bool verify, bool* value) noexcept {
  return guarded(operation("::GetAsBoolean", kReading), [&] { *value = readBoolean(verify); });
}

uint32_t Node::GetAsInteger(bool verify, int64_t* value) noexcept {
  return guarded(operation("::GetAsInteger", kReading), [&] { *value = readInteger(verify); });
}

uint32_t Node::GetAsFloat(bool verify, double* value) noexcept {
  return guarded(operation("::GetAsFloat", kReading), [&] { *value = readFloat(verify); });
}

uint32_t Node::GetAsString(bool verify, char* value, size_t& size) noexcept {
  return guardedText(operation("::GetAsString", kReading), value, size, [&] { return readText(verify); });
}

uint32_t Node::GetAsStringW(bool verify, wchar_t* value, size_t& size) noexcept {
  return guardedText(operation("::GetAsString", kReading), value, size, [&] { return readText(verify); });
}

uint32_t Node::SetAsBoolean(bool verify, bool value) noexcept {
  return guarded(operation("::SetAsBoolean", kWriting), [&] { writeBoolean(verify, value); });
}

uint32_t Node::SetAsInteger(bool verify, int64_t value) noexcept {
  return guarded(operation("::SetAsInteger", kWriting), [&] { writeInteger(verify, value); });
}

uint32_t Node::SetAsFloat(bool verify, double value) noexcept {
  return guarded(operation("::SetAsFloat", kWriting), [&] { writeFloat(verify, value); });
}

uint32_t Node::SetAsString(bool verify, const char* value) noexcept {
  return guarded(operation("::SetAsString", kWriting), [&] { writeText(verify, value); });
}

uint32_t Node::SetAsStringW(bool verify, const wchar_t* value) noexcept {
  return guarded(operation("::SetAsString", kWriting), [&] { writeText(verify, toNarrow(value).c_str()); });
}

}  // namespace orxGenApi
