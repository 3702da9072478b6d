// What an object must offer to live in an interface container.
#ifndef OXBASE_IDISPOSABLETYPE_H
#define OXBASE_IDISPOSABLETYPE_H

#include <cstddef>
#include <cstdint>

namespace ORX {

// One interface of an object: its id and the pointer that OxIfaceContainerQuery answers for it.
struct InterfaceEntry {
  uint64_t Id;
  void* Interface;
};

// The container destroys its object and learns its interfaces through this interface alone. Objects derive from it
// virtually, so that an object with several interfaces has it once. The two operations and their order are fixed.
class IDisposableType {
 public:
  // Runs the destructor of the whole object; the container frees the storage afterwards.
  virtual void DestroyInPlace() noexcept = 0;

  // Lists the interfaces of the object; the pointers stay valid as long as the object.
  //   entries  null: *count receives the number of interfaces and nothing else happens.
  //   count    capacity of entries; exactly the number of interfaces is written.
  // Returns 0, 0x80000002 when the capacity is too small (nothing is written), 0x80000005 when out of memory.
  virtual int32_t ListInterfaces(InterfaceEntry* entries, size_t* count) noexcept = 0;

 protected:
  IDisposableType() = default;
  IDisposableType(const IDisposableType&) = default;
  IDisposableType& operator=(const IDisposableType&) = default;
  ~IDisposableType() = default;
};

}  // namespace ORX

#endif
