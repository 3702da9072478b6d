// Room for texts that are not in one piece in a description: joined ones and the names of generated nodes.
#pragma once
#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <string_view>
#include <vector>

#include "GenApi/Types.h"

namespace GENAPI_NAMESPACE {

class TextArena {
 public:
  explicit TextArena(std::vector<std::unique_ptr<char[]>>& blocks) : blocks_(blocks) {}

  // One text made of the parts.
  std::string_view join(std::initializer_list<std::string_view> parts) {
    size_t size = 0;
    for (std::string_view part : parts) size += part.size();
    char* const text = take(size);
    char* end = text;
    for (std::string_view part : parts) end = std::copy(part.begin(), part.end(), end);
    return {text, size};
  }

 private:
  char* take(size_t size) {
    constexpr size_t kBlock = 64 << 10;
    if (size > left_) {
      const size_t block = std::max(size, kBlock);
      blocks_.emplace_back(new char[block]);
      next_ = blocks_.back().get();
      left_ = block;
    }
    char* const taken = next_;
    next_ += size;
    left_ -= size;
    return taken;
  }

  std::vector<std::unique_ptr<char[]>>& blocks_;
  char* next_ = nullptr;
  size_t left_ = 0;
};

}  // namespace GENAPI_NAMESPACE
