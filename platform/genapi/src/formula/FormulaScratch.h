// Memory for formulas that run inside each other, because variables of one are results of others.
#pragma once
#include <algorithm>
#include <cstddef>
#include <memory>
#include <vector>

#include "formula/FormulaCode.h"

namespace GENAPI_NAMESPACE::formula {

// Taken and given back like a stack. Keeps what it once needed, so that later evaluations allocate nothing.
class Scratch {
 public:
  // Words for one evaluation, for its scope.
  class Words {
   public:
    Words(Scratch& scratch, size_t count)
        : scratch_(scratch), chunk_(scratch.chunk_), used_(scratch.used_), start_(scratch.take(count)) {}
    ~Words() {
      scratch_.chunk_ = chunk_;
      scratch_.used_ = used_;
    }
    Words(const Words&) = delete;
    Words& operator=(const Words&) = delete;
    Value* start() const { return start_; }

   private:
    Scratch& scratch_;
    const size_t chunk_, used_;
    Value* const start_;
  };

 private:
  struct Chunk {
    size_t words;
    std::unique_ptr<Value[]> start;
  };

  Value* take(size_t count) {
    if (chunk_ == chunks_.size() || used_ + count > chunks_[chunk_].words) grow(count);
    Value* const start = chunks_[chunk_].start.get() + used_;
    used_ += count;
    return start;
  }
  [[gnu::noinline]] void grow(size_t count) {
    while (chunk_ < chunks_.size() && used_ + count > chunks_[chunk_].words) {
      ++chunk_;
      used_ = 0;
    }
    if (chunk_ == chunks_.size()) {
      const size_t words = std::max(count, chunks_.empty() ? kFirstWords : 2 * chunks_.back().words);
      chunks_.push_back({words, std::unique_ptr<Value[]>(new Value[words])});
    }
  }

  static constexpr size_t kFirstWords = 256;
  std::vector<Chunk> chunks_;
  size_t chunk_ = 0;
  size_t used_ = 0;  // words of that chunk
};

}  // namespace GENAPI_NAMESPACE::formula
