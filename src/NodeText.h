// The one way in which node and node map operations return text.
#pragma once
#include <string>

#include "Failure.h"
#include "Text.h"

namespace orxGenApi {

// Runs work that makes a text (std::string or gcstring), and hands it to the caller's buffer, or the empty text when it
// fails.
template <class Character, class Work>
uint32_t guardedText(const Operation& operation, Character* buffer, size_t& size, Work&& work) noexcept {
  const uint32_t result = guarded(operation, [&] { copyText(std::string_view(work()), buffer, size); });
  if (result != OXGENAPI_OK) copyText({}, buffer, size);
  return result;
}

}  // namespace orxGenApi
