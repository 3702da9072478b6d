// The bytes behind the register table: access rules, byte order, and the hooks through which behaviours take part.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "RegisterTable.h"

namespace ox::simulation {

/// Not thread-safe: the camera locks around it. All failures are DeviceFailure.
class RegisterBank {
 public:
  /// Called with the element that is touched (0 for a register that is no array).
  using Hook = std::function<void(int32_t element)>;

  /// `fileBufferLength`: bytes of FileAccessBuffer, which is the only register whose length can be chosen.
  explicit RegisterBank(int32_t fileBufferLength);

  /// Copies bytes out of or into the registers that cover the range without a gap, whatever their number. A write
  /// that any register or hook refuses leaves all bytes as they were.
  void read(void* buffer, int64_t address, int64_t length);
  void write(const void* buffer, int64_t address, int64_t length);

  /// Before the bytes of an element are read from outside: the behaviour brings them up to date.
  void onRead(RegisterId id, Hook hook);
  /// After an element was written from outside: the behaviour acts on it, or throws to refuse.
  void onWrite(RegisterId id, Hook hook);

  /// Values in host order, past access rules and hooks.
  uint64_t integer(RegisterId id, int32_t element = 0) const;
  int64_t signedInteger(RegisterId id, int32_t element = 0) const;
  void setInteger(RegisterId id, uint64_t value, int32_t element = 0);
  double real(RegisterId id, int32_t element = 0) const;
  void setReal(RegisterId id, double value, int32_t element = 0);
  std::string text(RegisterId id, int32_t element = 0) const;
  void setText(RegisterId id, std::string_view value, int32_t element = 0);
  std::span<uint8_t> bytes(RegisterId id);
  std::span<const uint8_t> bytes(RegisterId id) const;
  int32_t elementCount(RegisterId id) const { return cells_[index(id)].count; }

  /// Gives every register its value at power on, except, `again`, those that keep theirs over a reset.
  void powerOn(bool again);

 private:
  struct Cell {
    int64_t address;
    int64_t size;  // all elements
    std::size_t offset;
    int32_t length;
    int32_t count;
    Access access;
    ByteOrder order;
    bool locked;
    std::string_view name;
    Hook onRead;
    Hook onWrite;
  };
  static std::size_t index(RegisterId id) { return static_cast<std::size_t>(id); }

  const uint8_t* element(RegisterId id, int32_t element) const;
  uint8_t* element(RegisterId id, int32_t element);
  /// Places in `byAddress_` of the first and last register of the range; throws if a byte is not covered.
  std::pair<std::size_t, std::size_t> find(int64_t address, int64_t length, Access wanted) const;

  std::vector<Cell> cells_;          // in table order
  std::vector<uint16_t> byAddress_;  // places in cells_, sorted by address
  std::vector<uint8_t> storage_;
};

}  // namespace ox::simulation
