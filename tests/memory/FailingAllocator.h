// Memory that runs out on demand: the n-th allocation of the calling thread fails, whoever asks for it: operator new,
// the XML and zip libraries, mappings of the engine. Under a sanitizer, which owns malloc, operator new alone.
#pragma once
#include <cstdint>

namespace memory {

// While it lives, allocations of this thread are counted, and the n-th one fails (0: none).
class Shortage {
 public:
  explicit Shortage(int64_t failing);
  ~Shortage();
  Shortage(const Shortage&) = delete;
  Shortage& operator=(const Shortage&) = delete;
  // Ends it; true when an allocation has failed.
  bool end();
};

// Not counted meanwhile: the device behind a port is not what is tested.
class Plenty {
 public:
  Plenty();
  ~Plenty();
  Plenty(const Plenty&) = delete;
  Plenty& operator=(const Plenty&) = delete;

 private:
  bool wasArmed_;
};

// Blocks taken and not yet given back by all threads; always 0 where malloc belongs to a sanitizer, which finds leaks
// itself.
int64_t outstandingBlocks();

}  // namespace memory
