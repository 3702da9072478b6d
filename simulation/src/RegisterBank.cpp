#include "RegisterBank.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstring>
#include <utility>

#include "DeviceFailure.h"

namespace ox::simulation {

namespace {

std::string hex(int64_t value) {
  char digits[20];
  auto end = std::to_chars(digits, digits + sizeof digits, static_cast<uint64_t>(value), 16).ptr;
  return "0x" + std::string(digits, end);
}

uint64_t load(const uint8_t* bytes, int32_t length, ByteOrder order) {
  uint64_t value = 0;
  for (int32_t i = 0; i < length; ++i) value = value << 8 | bytes[order == kBig ? i : length - 1 - i];
  return value;
}

void store(uint8_t* bytes, int32_t length, ByteOrder order, uint64_t value) {
  for (int32_t i = 0; i < length; ++i, value >>= 8)
    bytes[order == kBig ? length - 1 - i : i] = static_cast<uint8_t>(value);
}

}  // namespace

RegisterBank::RegisterBank(int32_t fileBufferLength) {
  std::size_t offset = 0;
  for (const RegisterSpec& spec : kRegisters) {
    const bool fileBuffer = &spec == &kRegisters[index(reg("FileAccessBuffer"))];
    const int32_t length = fileBuffer ? fileBufferLength : spec.length;
    const int64_t size = int64_t{length} * spec.count;
    byAddress_.push_back(static_cast<uint16_t>(cells_.size()));
    cells_.push_back({spec.address,
                      size,
                      offset,
                      length,
                      spec.count,
                      spec.access,
                      spec.order,
                      (spec.flags & kLocked) != 0,
                      spec.name,
                      {},
                      {}});
    offset += static_cast<std::size_t>(size);
  }
  std::sort(byAddress_.begin(), byAddress_.end(),
            [&](uint16_t a, uint16_t b) { return cells_[a].address < cells_[b].address; });
  storage_.resize(offset);
  powerOn(false);
}

void RegisterBank::powerOn(bool again) {
  for (std::size_t i = 0; i < cells_.size(); ++i) {
    if (again && (kRegisters[i].flags & kKept) != 0) continue;
    const Initial& initial = kRegisters[i].initial;
    const auto id = static_cast<RegisterId>(i);
    if (cells_[i].length > 8 && initial.kind == Initial::kInteger) {
      std::ranges::fill(bytes(id), static_cast<uint8_t>(initial.integer));
      continue;
    }
    for (int32_t e = 0; e < cells_[i].count; ++e) {
      if (initial.kind == Initial::kReal) setReal(id, initial.real, e);
      if (initial.kind == Initial::kText) setText(id, initial.text, e);
      if (initial.kind == Initial::kInteger) setInteger(id, initial.integer, e);
    }
  }
  setInteger(reg("FileAccessBufferLength"), static_cast<uint64_t>(cells_[index(reg("FileAccessBuffer"))].length));
}

std::pair<std::size_t, std::size_t> RegisterBank::find(int64_t address, int64_t length, Access wanted) const {
  auto after = std::upper_bound(byAddress_.begin(), byAddress_.end(), address,
                                [&](int64_t a, uint16_t cell) { return a < cells_[cell].address; });
  if (after == byAddress_.begin()) throw DeviceFailure(kAccessRefused, "no register at address " + hex(address));
  const auto first = static_cast<std::size_t>(after - byAddress_.begin()) - 1;
  int64_t at = address;  // the next byte that a register has to cover
  int64_t rest = length;
  for (std::size_t i = first; i < byAddress_.size(); ++i) {
    const Cell& cell = cells_[byAddress_[i]];
    if (cell.address > at || at - cell.address >= cell.size) break;
    if ((cell.access & wanted) == 0)
      throw DeviceFailure(kAccessRefused, "register " + std::string(cell.name) + " at address " + hex(cell.address) +
                                              (wanted == kReadOnly ? " is write-only" : " is read-only"));
    const int64_t here = std::min(rest, cell.size - (at - cell.address));
    at += here;
    rest -= here;
    if (rest == 0) return {first, i};
  }
  throw DeviceFailure(kAccessRefused, "no register at address " + hex(at));
}

void RegisterBank::read(void* buffer, int64_t address, int64_t length) {
  if (length == 0) return;
  const auto [first, last] = find(address, length, kReadOnly);
  auto* out = static_cast<uint8_t*>(buffer);
  for (std::size_t i = first; i <= last; ++i) {
    const Cell& cell = cells_[byAddress_[i]];
    const int64_t from = std::max<int64_t>(0, address - cell.address);
    const int64_t to = std::min(cell.size, address + length - cell.address);
    if (cell.onRead)
      for (int64_t e = from / cell.length; e <= (to - 1) / cell.length; ++e) cell.onRead(static_cast<int32_t>(e));
    std::memcpy(out, storage_.data() + cell.offset + from, static_cast<std::size_t>(to - from));
    out += to - from;
  }
}

void RegisterBank::write(const void* buffer, int64_t address, int64_t length) {
  if (length == 0) return;
  const auto [first, last] = find(address, length, kWriteOnly);
  const bool layoutLocked = integer(reg("TLParamsLocked")) != 0;
  bool hooks = false;
  for (std::size_t i = first; i <= last; ++i) {
    const Cell& cell = cells_[byAddress_[i]];
    if (cell.locked && layoutLocked)
      throw DeviceFailure(kAccessRefused, "register " + std::string(cell.name) + " is locked while images are taken");
    hooks = hooks || cell.onWrite;
  }

  struct Saved {
    std::size_t offset;
    std::vector<uint8_t> bytes;
  };
  std::vector<Saved> saved;
  const auto* in = static_cast<const uint8_t*>(buffer);
  for (std::size_t i = first; i <= last; ++i) {
    const Cell& cell = cells_[byAddress_[i]];
    const int64_t from = std::max<int64_t>(0, address - cell.address);
    const int64_t to = std::min(cell.size, address + length - cell.address);
    uint8_t* bytes = storage_.data() + cell.offset + from;
    if (hooks) saved.push_back({cell.offset + static_cast<std::size_t>(from), {bytes, bytes + (to - from)}});
    std::memcpy(bytes, in, static_cast<std::size_t>(to - from));
    in += to - from;
  }
  if (!hooks) return;
  try {
    for (std::size_t i = first; i <= last; ++i) {
      const Cell& cell = cells_[byAddress_[i]];
      if (!cell.onWrite) continue;
      const int64_t from = std::max<int64_t>(0, address - cell.address);
      const int64_t to = std::min(cell.size, address + length - cell.address);
      for (int64_t e = from / cell.length; e <= (to - 1) / cell.length; ++e) cell.onWrite(static_cast<int32_t>(e));
    }
  } catch (...) {
    for (const Saved& s : saved) std::memcpy(storage_.data() + s.offset, s.bytes.data(), s.bytes.size());
    throw;
  }
}

void RegisterBank::onRead(RegisterId id, Hook hook) { cells_[index(id)].onRead = std::move(hook); }

void RegisterBank::onWrite(RegisterId id, Hook hook) { cells_[index(id)].onWrite = std::move(hook); }

const uint8_t* RegisterBank::element(RegisterId id, int32_t element) const {
  const Cell& cell = cells_[index(id)];
  return storage_.data() + cell.offset + int64_t{element} * cell.length;
}

uint8_t* RegisterBank::element(RegisterId id, int32_t e) {
  return const_cast<uint8_t*>(std::as_const(*this).element(id, e));
}

uint64_t RegisterBank::integer(RegisterId id, int32_t e) const {
  const Cell& cell = cells_[index(id)];
  return load(element(id, e), cell.length, cell.order);
}

int64_t RegisterBank::signedInteger(RegisterId id, int32_t e) const {
  const int unused = 64 - 8 * cells_[index(id)].length;
  return static_cast<int64_t>(integer(id, e) << unused) >> unused;
}

void RegisterBank::setInteger(RegisterId id, uint64_t value, int32_t e) {
  const Cell& cell = cells_[index(id)];
  store(element(id, e), cell.length, cell.order, value);
}

double RegisterBank::real(RegisterId id, int32_t e) const {
  if (cells_[index(id)].length == 4) return std::bit_cast<float>(static_cast<uint32_t>(integer(id, e)));
  return std::bit_cast<double>(integer(id, e));
}

void RegisterBank::setReal(RegisterId id, double value, int32_t e) {
  if (cells_[index(id)].length == 4)
    setInteger(id, std::bit_cast<uint32_t>(static_cast<float>(value)), e);
  else
    setInteger(id, std::bit_cast<uint64_t>(value), e);
}

std::string RegisterBank::text(RegisterId id, int32_t e) const {
  const auto* begin = reinterpret_cast<const char*>(element(id, e));
  return {begin, strnlen(begin, static_cast<std::size_t>(cells_[index(id)].length))};
}

void RegisterBank::setText(RegisterId id, std::string_view value, int32_t e) {
  const auto length = static_cast<std::size_t>(cells_[index(id)].length);
  uint8_t* bytes = element(id, e);
  std::memset(bytes, 0, length);
  std::memcpy(bytes, value.data(), std::min(length, value.size()));
}

std::span<uint8_t> RegisterBank::bytes(RegisterId id) {
  const Cell& cell = cells_[index(id)];
  return {storage_.data() + cell.offset, static_cast<std::size_t>(cell.size)};
}

std::span<const uint8_t> RegisterBank::bytes(RegisterId id) const {
  const Cell& cell = cells_[index(id)];
  return {storage_.data() + cell.offset, static_cast<std::size_t>(cell.size)};
}

}  // namespace ox::simulation
