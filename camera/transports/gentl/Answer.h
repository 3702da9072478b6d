// The size protocol of a producer's answers: asked for the size, then for the content, and checked.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <optional>
#include <string>

#include "Producer.h"

namespace ox::camera::gentl {

// Asks the producer for one item; type may stay as it is.
using Ask = std::function<GC_ERROR(INFO_DATATYPE* type, void* buffer, size_t* size)>;

// A text; it ends with the first zero, or where the producer says that it has ended. Throws TransportError when the
// producer does not give it, or gives what cannot be.
std::string requireText(const Producer& producer, const char* function, const Ask& ask);

// The same for an item that may be missing: empty then, and when the answer cannot be.
std::string text(const Ask& ask);

// Room for the answer to a question for a number, with spare bytes for a producer that does not look at the size.
struct NumberAnswer {
  static constexpr size_t kLargest = 8;
  GC_ERROR code = GC_ERR_ERROR;
  INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
  size_t size = kLargest;
  std::array<uint8_t, 64> bytes{};

  // Nothing when the question failed, or when the size or the type is not that of a number.
  std::optional<uint64_t> value() const;
};

// A number of any type, negative ones as their two's complement. Asks once, without memory.
template <class AskNumber>
std::optional<uint64_t> number(AskNumber ask) {
  NumberAnswer answer;
  answer.code = ask(&answer.type, answer.bytes.data(), &answer.size);
  return answer.value();
}

}  // namespace ox::camera::gentl
