// Makes results that say what is wrong.
#pragma once

#include <exception>
#include <iterator>
#include <new>

#include "Formatting.h"
#include "OxPixels/Result.h"

namespace ox::pixels {

/// A failure with a text; one that is too long loses its end, so the reason comes first.
template <class... Args>
Result failure(Code code, fmt::format_string<Args...> text, Args&&... args) noexcept {
  Result result;
  result.code = code;
  formatInto(result.text, std::size(result.text), text, fmt::make_format_args(args...));
  return result;
}

/// Runs work that allocates and returns what it returns, or the failure to get memory.
template <class Work>
Result withMemory(Work&& work) noexcept try {
  return work();
} catch (const std::bad_alloc&) {
  return failure(Code::NoMemory, "not enough memory");
} catch (const std::exception& error) {
  return failure(Code::Io, "{}", error.what());
}

}  // namespace ox::pixels
