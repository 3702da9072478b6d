// The operations on interface containers.
//
// Order of publication: the publisher writes the interfaces and the object first and the use count last (release); a
// check reads the use count first (acquire). So every use count that was taken comes with an object.
//
// Counts change by compare and swap, but by plain stores in a process of one thread: locked operations are most of what
// taking and giving back a count costs.
#include <sys/single_threaded.h>

#include <cstdlib>
#include <new>

#include "BlockRange.h"
#include "OxBase/OxBase.h"

namespace {

using oxbase::ControlBlock;
using oxbase::findBlock;
using oxbase::InterfaceTable;

constexpr uint32_t kUnpublished = ControlBlock::kUnpublished;
constexpr uint32_t kMostCounts = ControlBlock::kMostCounts;

constexpr uint32_t countOf(uint32_t uses) { return uses & kMostCounts; }

// Replaces the count if it is still what was read; otherwise reads it again.
bool replaceCount(std::atomic<uint32_t>& count, uint32_t& read, uint32_t wanted, std::memory_order order) noexcept {
  if (__libc_single_threaded) {
    count.store(wanted, std::memory_order_relaxed);
    return true;
  }
  return count.compare_exchange_weak(read, wanted, order, std::memory_order_relaxed);
}

// Adds one to the use count while it is above zero. `refused` names the bits that also make it refuse.
int32_t addUse(ControlBlock& block, uint32_t refused) noexcept {
  uint32_t uses = block.uses.load(std::memory_order_relaxed);
  do {
    if (countOf(uses) == 0 || (uses & refused) != 0) return OX_E_INVALID_HANDLE;
    if (countOf(uses) == kMostCounts) return OX_E_INVALID_STATE;
  } while (!replaceCount(block.uses, uses, uses + 1, std::memory_order_acquire));
  return OX_OK;
}

// Gives back the weak count that all use counts held together.
void releaseCommonWeak(ControlBlock& block) noexcept {
  if (block.weaks.fetch_sub(1, std::memory_order_acq_rel) == 1) oxbase::retireBlock(block);
}

// The use count has fallen to zero: nobody can take it up again, the block is this thread's.
void endObject(ControlBlock& block) noexcept {
  if (block.object != nullptr) block.object->DestroyInPlace();
  std::free(block.storage);
  std::free(block.moreInterfaces.load(std::memory_order_relaxed));
  block.object = nullptr;
  block.storage = nullptr;  // keeps LeakSanitizer from seeing a free block as an owner
  block.moreInterfaces.store(nullptr, std::memory_order_relaxed);
  releaseCommonWeak(block);
}

int32_t releaseUse(ControlBlock& block) noexcept {
  uint32_t uses = block.uses.load(std::memory_order_relaxed);
  do {
    if (countOf(uses) == 0) return OX_E_INVALID_HANDLE;
  } while (!replaceCount(block.uses, uses, uses - 1, std::memory_order_acq_rel));
  if (countOf(uses) == 1) endObject(block);
  return OX_OK;
}

// Searches the interfaces of a block on which a use count is held.
void* findInterface(const ControlBlock& block, uint64_t id) noexcept {
  if (block.interfaceId.load(std::memory_order_relaxed) == id)
    return block.interfacePointer.load(std::memory_order_relaxed);
  const InterfaceTable* more = block.moreInterfaces.load(std::memory_order_relaxed);
  for (size_t i = 0; more != nullptr && i < more->count; ++i)
    if (more->entries[i].Id == id) return more->entries[i].Interface;
  return nullptr;
}

// Asks the object for its interfaces. The table is the caller's to free, null after a failure.
int32_t listInterfaces(ORX::IDisposableType& object, InterfaceTable*& table) noexcept {
  table = nullptr;
  size_t count = 0;
  if (const int32_t status = object.ListInterfaces(nullptr, &count); status < 0) return status;
  if (count > (SIZE_MAX - sizeof(InterfaceTable)) / sizeof(ORX::InterfaceEntry)) return OX_E_OUT_OF_MEMORY;
  auto* listed = static_cast<InterfaceTable*>(
      std::calloc(1, offsetof(InterfaceTable, entries) + (count + 1) * sizeof(ORX::InterfaceEntry)));
  if (listed == nullptr) return OX_E_OUT_OF_MEMORY;
  listed->count = count;
  int32_t status = count == 0 ? OX_OK : object.ListInterfaces(listed->entries, &count);
  for (size_t i = 0; status >= 0 && i < listed->count; ++i) {
    if (listed->entries[i].Id == 0) status = OX_E_INVALID_ARGUMENT;
    for (size_t before = 0; before < i; ++before)
      if (listed->entries[before].Id == listed->entries[i].Id) status = OX_E_INVALID_ARGUMENT;
  }
  if (status < 0) {
    std::free(listed);
    return status;
  }
  table = listed;
  return OX_OK;
}

// The error for publishing a second object. An interface that is already there is reported first.
int32_t refuseSecondObject(const ControlBlock& block, const InterfaceTable& table) noexcept {
  if ((block.uses.load(std::memory_order_acquire) & kUnpublished) != 0) return OX_E_INVALID_STATE;
  for (size_t i = 0; i < table.count; ++i)
    if (findInterface(block, table.entries[i].Id) != nullptr) return OX_E_INVALID_ARGUMENT;
  return OX_E_INVALID_STATE;
}

int32_t publish(ControlBlock& block, ORX::IDisposableType& object) noexcept {
  InterfaceTable* table = nullptr;
  if (const int32_t status = listInterfaces(object, table); status < 0) return status;
  if (block.claimed.exchange(true, std::memory_order_relaxed)) {
    const int32_t status = refuseSecondObject(block, *table);
    std::free(table);
    return status;
  }
  if (table->count > 0) {
    block.interfacePointer.store(table->entries[0].Interface, std::memory_order_relaxed);
    block.interfaceId.store(table->entries[0].Id, std::memory_order_relaxed);
  }
  if (table->count > 1)
    block.moreInterfaces.store(table, std::memory_order_relaxed);
  else
    std::free(table);  // the usual case: one interface, kept in the block itself
  block.object = &object;
  block.uses.fetch_and(~kUnpublished, std::memory_order_release);
  return OX_OK;
}

}  // namespace

OxHandle OxCreatePlacementIfaceContainer(size_t Size, void** Storage) {
  if (Storage == nullptr) return nullptr;
  *Storage = nullptr;
  // Apart from the block, so that an address sanitizer sees a use after the end.
  void* storage = std::malloc(Size == 0 ? 1 : Size);
  if (storage == nullptr) return nullptr;
  ControlBlock* block = oxbase::takeBlock();
  if (block == nullptr) {
    std::free(storage);
    return nullptr;
  }
  block->object = nullptr;
  block->storage = storage;
  block->interfaceId.store(0, std::memory_order_relaxed);
  block->interfacePointer.store(nullptr, std::memory_order_relaxed);
  block->claimed.store(false, std::memory_order_relaxed);
  block->weaks.store(1, std::memory_order_relaxed);
  block->uses.store(kUnpublished | 1, std::memory_order_release);
  *Storage = storage;
  return block;
}

int32_t OxIfaceContainerAdd(OxHandle Container, void* Object) {
  ControlBlock* block = findBlock(Container);
  // Held for the length of the call: the object's own code runs in it.
  if (block == nullptr || addUse(*block, 0) < 0) return OX_E_INVALID_HANDLE;
  const int32_t status =
      Object == nullptr ? OX_E_INVALID_ARGUMENT : publish(*block, *static_cast<ORX::IDisposableType*>(Object));
  releaseUse(*block);
  return status;
}

int32_t OxIfaceContainerQuery(OxHandle Container, uint64_t Id, void** Interface) {
  if (Interface == nullptr) return OX_E_INVALID_ARGUMENT;
  *Interface = nullptr;
  ControlBlock* block = findBlock(Container);
  if (block == nullptr) return OX_E_INVALID_HANDLE;
  const uint32_t uses = block->uses.load(std::memory_order_acquire);
  if (countOf(uses) == 0) return OX_E_INVALID_HANDLE;
  if ((uses & kUnpublished) != 0 || Id == 0) return OX_E_NOT_PRESENT;

  if (block->interfaceId.load(std::memory_order_relaxed) == Id) {
    *Interface = block->interfacePointer.load(std::memory_order_relaxed);
  } else if (block->moreInterfaces.load(std::memory_order_relaxed) != nullptr) {
    // The table is freed with the object, and this caller may own no count at all.
    if (addUse(*block, kUnpublished) < 0) return OX_E_INVALID_HANDLE;
    *Interface = findInterface(*block, Id);
    releaseUse(*block);
  }
  return *Interface == nullptr ? OX_E_NOT_PRESENT : OX_OK;
}

int32_t OxIfaceContainerCheckedAddUseCounter(OxHandle Container) {
  ControlBlock* block = findBlock(Container);
  return block == nullptr ? OX_E_INVALID_HANDLE : addUse(*block, kUnpublished);
}

int32_t OxIfaceContainerAddUseCounter(OxHandle Container) {
  ControlBlock* block = findBlock(Container);
  return block == nullptr ? OX_E_INVALID_HANDLE : addUse(*block, 0);
}

int32_t OxIfaceContainerReleaseUseCounter(OxHandle Container) {
  ControlBlock* block = findBlock(Container);
  return block == nullptr ? OX_E_INVALID_HANDLE : releaseUse(*block);
}

int32_t OxIfaceContainerAddWeakCounter(OxHandle Container) {
  ControlBlock* block = findBlock(Container);
  if (block == nullptr) return OX_E_INVALID_HANDLE;
  uint32_t weaks = block->weaks.load(std::memory_order_relaxed);
  do {
    if (weaks == 0) return OX_E_INVALID_HANDLE;
    if (weaks == kMostCounts) return OX_E_INVALID_STATE;
  } while (!block->weaks.compare_exchange_weak(weaks, weaks + 1, std::memory_order_relaxed, std::memory_order_relaxed));
  return OX_OK;
}

int32_t OxIfaceContainerReleaseWeakCounter(OxHandle Container) {
  ControlBlock* block = findBlock(Container);
  if (block == nullptr) return OX_E_INVALID_HANDLE;
  uint32_t weaks = block->weaks.load(std::memory_order_acquire);
  do {
    // While the object lives the last weak count is the one that all use counts hold: nobody else's to give back.
    const bool common = weaks == 1 && countOf(block->uses.load(std::memory_order_relaxed)) != 0;
    if (weaks == 0 || common) return OX_E_INVALID_HANDLE;
  } while (!block->weaks.compare_exchange_weak(weaks, weaks - 1, std::memory_order_acq_rel, std::memory_order_acquire));
  if (weaks == 1) oxbase::retireBlock(*block);
  return OX_OK;
}
