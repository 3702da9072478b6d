// One row of the register table: where a register lies, who may touch it and what it holds at power on.
#pragma once

#include <cstdint>
#include <string_view>

namespace ox::simulation {

enum Access : uint8_t { kReadOnly = 1, kWriteOnly = 2, kReadWrite = 3 };
enum ByteOrder : uint8_t { kBig, kLittle };

enum RegisterFlags : uint8_t {
  kPlain = 0,
  kUserSet = 1,  // stored in and restored from user sets
  kLocked = 2,   // refuses writes while TLParamsLocked is not 0
  kKept = 4,     // keeps its value over a reset
};

/// Value at power on: an integer, a floating point number or a text.
struct Initial {
  enum Kind : uint8_t { kInteger, kReal, kText };
  constexpr Initial(int value) : kind(kInteger), integer(static_cast<uint64_t>(value)) {}
  constexpr Initial(unsigned value) : kind(kInteger), integer(value) {}
  constexpr Initial(long value) : kind(kInteger), integer(static_cast<uint64_t>(value)) {}
  constexpr Initial(unsigned long value) : kind(kInteger), integer(value) {}
  constexpr Initial(double value) : kind(kReal), real(value) {}
  constexpr Initial(const char* value) : kind(kText), text(value) {}

  Kind kind;
  uint64_t integer = 0;
  double real = 0;
  std::string_view text;
};

struct RegisterSpec {
  std::string_view name;
  int64_t address;
  int32_t length;  // bytes of one element
  int32_t count;   // elements one behind the other
  Access access;
  ByteOrder order;
  int flags;        // of RegisterFlags
  Initial initial;  // of every element
};

}  // namespace ox::simulation
