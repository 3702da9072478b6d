#include "Answer.h"

#include <algorithm>
#include <vector>

namespace ox::camera::gentl {
namespace {

constexpr size_t kUsualText = 512;  // bytes that are offered at least
constexpr size_t kMaxText = 65536;  // bytes of a text that a producer may claim
constexpr size_t kSpare = 1024;     // behind what is offered, for a producer that does not look at the size

struct TextAnswer {
  GC_ERROR code = GC_ERR_SUCCESS;
  std::string fault = {};  // the code says success, the answer cannot be
  std::string text = {};
};

TextAnswer askText(const Ask& ask) {
  INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
  size_t size = 0;
  const GC_ERROR asked = ask(&type, nullptr, &size);
  // Some producers only answer with a buffer; whether the item is there shows then.
  if (asked == GC_ERR_SUCCESS && size > kMaxText) return {asked, "claims a text of " + std::to_string(size) + " bytes"};
  size_t capacity = std::max(kUsualText, asked == GC_ERR_SUCCESS ? size : 0);
  for (;;) {
    std::vector<char> room(capacity + kSpare);
    size = capacity;
    const GC_ERROR code = ask(&type, room.data(), &size);
    const bool small = code == GC_ERR_BUFFER_TOO_SMALL || (code == GC_ERR_INVALID_PARAMETER && size > capacity);
    if (small && capacity < kMaxText) {
      capacity = std::min(std::max(capacity * 4, size > kMaxText ? kMaxText : size), kMaxText);
      continue;
    }
    if (code != GC_ERR_SUCCESS) return {code};
    if (size > capacity)
      return {code, "says " + std::to_string(size) + " bytes in a buffer of " + std::to_string(capacity)};
    const auto end = std::find(room.begin(), room.begin() + static_cast<std::ptrdiff_t>(size), '\0');
    return {code, {}, std::string(room.begin(), end)};
  }
}

template <class Number>
uint64_t as(const std::array<uint8_t, 64>& bytes) {
  Number number;
  std::memcpy(&number, bytes.data(), sizeof number);
  return static_cast<uint64_t>(number);
}

}  // namespace

std::string requireText(const Producer& producer, const char* function, const Ask& ask) {
  TextAnswer answer = askText(ask);
  if (answer.code != GC_ERR_SUCCESS) producer.fail(function, answer.code);
  if (!answer.fault.empty()) producer.failAnswer(function, answer.fault);
  return std::move(answer.text);
}

std::string text(const Ask& ask) {
  TextAnswer answer = askText(ask);
  return answer.code == GC_ERR_SUCCESS && answer.fault.empty() ? std::move(answer.text) : std::string();
}

std::optional<uint64_t> NumberAnswer::value() const {
  if (code != GC_ERR_SUCCESS) return {};
  switch (size) {
    case 1: return bytes[0];
    case 2: return type == INFO_DATATYPE_INT16 ? as<int16_t>(bytes) : as<uint16_t>(bytes);
    case 4: return type == INFO_DATATYPE_INT32 ? as<int32_t>(bytes) : as<uint32_t>(bytes);
    case 8:
      // Some leave the size as it was offered; the type then says how many bytes are meant.
      if (type == INFO_DATATYPE_BOOL8) return bytes[0];
      if (type == INFO_DATATYPE_INT32) return as<int32_t>(bytes);
      if (type == INFO_DATATYPE_UINT32) return as<uint32_t>(bytes);
      if (type == INFO_DATATYPE_STRING || type == INFO_DATATYPE_FLOAT64) return {};
      return as<uint64_t>(bytes);
    default: return {};
  }
}

}  // namespace ox::camera::gentl
