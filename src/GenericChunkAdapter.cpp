#include "GenericChunkAdapter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <stdexcept>
#include <vector>

#include "Base/GCException.h"

namespace orxGenApi {
namespace {

constexpr const char* kSource = "src/GenericChunkAdapter";
// Where callers of this class expect these failures to come from.
constexpr int kAttachChunkLine = 60;
constexpr int kAttachBufferLine = 64;
constexpr int kUpdateBufferLine = 83;

[[noreturn]] void throwUninitialized(int line) {
  throw GENICAM_NAMESPACE::LogicalErrorException("AttachChunk is called on an uninitialized object!", kSource, line);
}

// A number as bytes, big end first, with as many zeros before it as a port's ID length asks for. IDs of usual length
// take no memory from the heap.
class ChunkIdBytes {
 public:
  explicit ChunkIdBytes(uint32_t value) {
    for (size_t i = few_.size(); value != 0; value >>= 8, ++significant_) few_[--i] = static_cast<uint8_t>(value);
  }
  // False when the number needs more bytes. A negative length is more than a vector can have: std::length_error.
  bool fits(int length) {
    if (length >= 0 && length <= static_cast<int>(few_.size())) return significant_ <= length;
    many_.assign(static_cast<size_t>(length), 0);
    std::copy(few_.begin(), few_.end(), many_.end() - static_cast<ptrdiff_t>(few_.size()));
    return true;
  }
  // For a length that fits() was asked about last.
  uint8_t* bytes(int length) {
    return length <= static_cast<int>(few_.size()) ? few_.data() + few_.size() - length : many_.data();
  }

 private:
  std::array<uint8_t, 16> few_{};
  int significant_ = 0;
  std::vector<uint8_t> many_;
};

}  // namespace

std::optional<uint32_t> parseChunkId(std::string_view text) noexcept {
  if (text.empty()) return std::nullopt;
  uint32_t value = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value, 16);
  if (error != std::errc() || stop != end) return std::nullopt;
  return value;
}

bool CGenericChunkAdapter::CheckBufferLayout(uint8_t*, int64_t) { return false; }

void CGenericChunkAdapter::AttachBuffer(uint8_t*, int64_t, GENAPI_NAMESPACE::AttachStatistics_t* pAttachStatistics) {
  if (pAttachStatistics != nullptr) *pAttachStatistics = {0, 0, 0};
  throw GENICAM_NAMESPACE::LogicalErrorException(
      "AttachBuffer not implemented in generic chunk adapter: use AttachChunk!", kSource, kAttachBufferLine);
}

void CGenericChunkAdapter::UpdateBuffer(uint8_t* pBaseAddress) {
  if (pBaseAddress != nullptr) {
    CChunkAdapter::UpdateBuffer(pBaseAddress);
    return;
  }
  if (m_ppChunkPorts == nullptr) throwUninitialized(kUpdateBufferLine);
  for (auto* port : *m_ppChunkPorts) port->InvalidateNode();
}

template <class Adapter, class Visit>
void CGenericChunkAdapter::visitPorts(const Adapter& adapter, uint64_t id, Visit visit) {
  const std::vector<GENAPI_NAMESPACE::CChunkPort*>& ports = *adapter.m_ppChunkPorts;
  if constexpr (requires { adapter.placesOf(id); }) {
    const auto [given, asked] = adapter.placesOf(id);
    auto next = given.begin(), nextAsked = asked.begin();
    while (next != given.end() || nextAsked != asked.end()) {
      const bool isGiven = nextAsked == asked.end() || (next != given.end() && *next < *nextAsked);
      visit(*ports[isGiven ? *next++ : *nextAsked++]);
    }
  } else {  // an engine that does not know beforehand whose the ID can be
    for (auto* port : ports) visit(*port);
  }
}

void CGenericChunkAdapter::AttachChunk(const char* ChunkID, uint8_t* pBase, int64_t ChunkOffset, int64_t ChunkLength) {
  if (m_ppChunkPorts == nullptr) throwUninitialized(kAttachChunkLine);
  if (m_ppChunkPorts->empty()) return;
  if (ChunkID == nullptr) throw std::logic_error("null chunk ID");
  const std::optional<uint32_t> id = parseChunkId(ChunkID);
  if (!id) return;
  ChunkIdBytes wanted(*id);
  visitPorts(*this, *id, [&](GENAPI_NAMESPACE::CChunkPort& port) {
    portsAsked_.fetch_add(1, std::memory_order_relaxed);
    const int length = port.GetChunkIDLength();
    if (!wanted.fits(length) || !port.CheckChunkID(wanted.bytes(length), length)) return;
    port.AttachChunk(pBase, ChunkOffset, ChunkLength, true);
  });
}

}  // namespace orxGenApi
