#include "OxSimulation/MemoryDevice.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <map>
#include <new>
#include <stdexcept>

#include "StateBlob.h"

namespace ox::simulation {

namespace {

constexpr int64_t kPageBytes = 4096;
constexpr std::size_t kMaxPages = 1 << 18;  // 1 GiB: a runaway client must not take all memory

int64_t pageOf(int64_t address) noexcept { return address >> 12; }  // rounds down for negative addresses, too

// Calls visit(page number, offset in page, bytes, bytes done before) for each page the range touches.
template <typename Visit>
void eachPage(int64_t address, int64_t length, Visit visit) {
  for (int64_t done = 0; done < length;) {
    const int64_t at = address + done;
    const int64_t offset = at & (kPageBytes - 1);
    const int64_t here = std::min(length - done, kPageBytes - offset);
    visit(pageOf(at), offset, here, done);
    done += here;
  }
}

bool badRange(const void* buffer, int64_t address, int64_t length) {
  return length < 0 || (!buffer && length > 0) || address > std::numeric_limits<int64_t>::max() - length;
}

}  // namespace

uint8_t MemoryDevice::patternByte(int64_t address) noexcept {
  auto mixed = static_cast<uint64_t>(address) * 0x9E3779B97F4A7C15u;
  mixed ^= mixed >> 29;
  return static_cast<uint8_t>(mixed % 255 + 1);
}

MemoryDevice::MemoryDevice(Fill fill) : fill_(fill) {}

MemoryDevice::MemoryDevice(std::string path, Fill fill) : fill_(fill), path_(std::move(path)) { load(); }

MemoryDevice::Page& MemoryDevice::page(int64_t number) {
  const auto found = pages_.find(number);
  if (found != pages_.end()) return found->second;
  if (pages_.size() == kMaxPages) throw std::bad_alloc();
  Page fresh(kPageBytes, 0);
  if (fill_ == Fill::kPattern)
    for (int64_t i = 0; i < kPageBytes; ++i)
      fresh[static_cast<std::size_t>(i)] = patternByte(static_cast<int64_t>(static_cast<uint64_t>(number) << 12) + i);
  return pages_.emplace(number, std::move(fresh)).first->second;
}

int MemoryDevice::read(void* buffer, int64_t address, int64_t length) {
  if (badRange(buffer, address, length)) return fail(kInvalidArgument, "read: no buffer or impossible length");
  const std::lock_guard lock(mutex_);
  auto* out = static_cast<uint8_t*>(buffer);
  eachPage(address, length, [&](int64_t number, int64_t offset, int64_t here, int64_t done) {
    const auto found = pages_.find(number);
    if (found != pages_.end())
      std::memcpy(out + done, found->second.data() + offset, static_cast<std::size_t>(here));
    else if (fill_ == Fill::kZero)
      std::memset(out + done, 0, static_cast<std::size_t>(here));
    else
      for (int64_t i = 0; i < here; ++i) out[done + i] = patternByte(address + done + i);
  });
  return kSuccess;
}

int MemoryDevice::write(const void* buffer, int64_t address, int64_t length) {
  if (badRange(buffer, address, length)) return fail(kInvalidArgument, "write: no buffer or impossible length");
  const std::lock_guard lock(mutex_);
  try {
    // All pages first, so that running out of memory leaves every byte as it was.
    eachPage(address, length, [&](int64_t number, int64_t, int64_t, int64_t) { page(number); });
    const auto* in = static_cast<const uint8_t*>(buffer);
    eachPage(address, length, [&](int64_t number, int64_t offset, int64_t here, int64_t done) {
      std::memcpy(page(number).data() + offset, in + done, static_cast<std::size_t>(here));
    });
    return kSuccess;
  } catch (const std::bad_alloc&) {
    return fail(kOutOfMemory, {});
  }
}

int MemoryDevice::accessMode() { return kPortReadWrite; }

void MemoryDevice::load() {
  std::ifstream in(path_, std::ios::binary);
  if (!in) {
    if (!std::filesystem::exists(path_)) return;
    throw std::runtime_error("memory image '" + path_ + "' cannot be read");
  }
  try {
    for (auto& [name, bytes] : readState(in)) {
      if (!name.starts_with("page/") || bytes.size() != kPageBytes)
        throw std::runtime_error("block '" + name + "' is no memory page");
      pages_.emplace(pageOf(static_cast<int64_t>(std::stoull(name.substr(5), nullptr, 16))), std::move(bytes));
    }
  } catch (const std::exception& e) {
    throw std::runtime_error("memory image '" + path_ + "': " + e.what());
  }
}

void MemoryDevice::save() {
  if (path_.empty()) throw std::logic_error("memory image: no file was named");
  save(path_);
}

void MemoryDevice::save(const std::string& path) const {
  StateBlocks blocks;
  {
    const std::lock_guard lock(mutex_);
    for (const auto& [number, bytes] : pages_) {
      char name[32];
      std::snprintf(name, sizeof name, "page/%016llx",
                    static_cast<unsigned long long>(static_cast<uint64_t>(number) << 12));
      blocks.emplace(name, bytes);
    }
  }
  const std::string temporary = path + ".new";
  std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
  writeState(out, blocks);
  out.close();
  std::error_code error;
  if (out) std::filesystem::rename(temporary, path, error);
  if (!out || error) {
    std::error_code ignored;
    std::filesystem::remove(temporary, ignored);
    throw std::runtime_error("memory image '" + path + "' cannot be written");
  }
}

}  // namespace ox::simulation
