// The object behind a NODE handle: one feature of a loaded description.
#pragma once
#include <array>
#include <atomic>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "Failure.h"
#include "INode.h"
#include "LoadedMap.h"
#include "NodeMapBase.h"
#include "OxBase/SharedRef.h"
#include "TypedNode.h"

namespace orxGenApi {

class Node : public ORX::INode, public orxBase::enable_shared_from_this<Node> {
 public:
  using InterfaceType = ORX::INode;
  static uint64_t interfaceId() noexcept { return OX_INTERFACE_NODE; }

  // Keeps the node map object and the load it belongs to alive.
  Node(orxBase::shared_ref<NodeMapBase> nodeMap, std::shared_ptr<LoadedMap> load,
       GENAPI_NAMESPACE::INode* engineNode) noexcept;
  ~Node() override;

  const TypedNode& typed() const noexcept { return typed_; }
  const std::shared_ptr<LoadedMap>& load() const noexcept { return load_; }
  const orxBase::shared_ref<NodeMapBase>& nodeMap() const noexcept { return nodeMap_; }
  // Without the node map's lock, for calls that are about to take it.
  TVerifyMode verifyMode() const noexcept { return verifyMode_.load(std::memory_order_relaxed); }

  uint32_t GetType(TNodeType* type) noexcept override;

  // NodeInfo.cpp
  uint32_t GetInfoAsBoolean(TNodeInfo info, bool* value) noexcept override;
  uint32_t GetInfoAsFloat(TNodeInfo info, double* value) noexcept override;
  uint32_t GetInfoAsInteger(TNodeInfo info, int64_t* value) noexcept override;
  uint32_t GetInfoAsString(TNodeInfo info, char* value, size_t& size) noexcept override;
  uint32_t GetInfoAsStringW(TNodeInfo info, wchar_t* value, size_t& size) noexcept override;
  uint32_t GetInfoEnum(TNodeInfo info, int64_t index, int64_t* integer, char* text, size_t& size) noexcept override;
  uint32_t GetInfoEnumW(TNodeInfo info, int64_t index, int64_t* integer, wchar_t* text, size_t& size) noexcept override;

  // NodeList.cpp
  uint32_t GetListCount(TNodeList list, int64_t* count) noexcept override;
  uint32_t GetList(TNodeList list, int64_t index, char* entry, size_t& size) noexcept override;
  uint32_t GetListW(TNodeList list, int64_t index, wchar_t* entry, size_t& size) noexcept override;

  // NodeValue.cpp
  uint32_t GetAsBoolean(bool verify, bool* value) noexcept override;
  uint32_t GetAsFloat(bool verify, double* value) noexcept override;
  uint32_t GetAsInteger(bool verify, int64_t* value) noexcept override;
  uint32_t GetAsString(bool verify, char* value, size_t& size) noexcept override;
  uint32_t GetAsStringW(bool verify, wchar_t* value, size_t& size) noexcept override;
  uint32_t SetAsBoolean(bool verify, bool value) noexcept override;
  uint32_t SetAsFloat(bool verify, double value) noexcept override;
  uint32_t SetAsInteger(bool verify, int64_t value) noexcept override;
  uint32_t SetAsString(bool verify, const char* value) noexcept override;
  uint32_t SetAsStringW(bool verify, const wchar_t* value) noexcept override;
  // The value's text form; throws.
  GENICAM_NAMESPACE::gcstring readText(bool verify);

  // NodeMemory.cpp
  uint32_t GetAsMemory(int64_t address, void* buffer, int64_t size) noexcept;
  uint32_t SetAsMemory(int64_t address, const void* buffer, int64_t size) noexcept;
  uint32_t GetAsRegisterData(void* buffer, int64_t* size) noexcept;

  // NodeUpdate.cpp
  uint32_t Invalidate() noexcept override;
  uint32_t RegisterUpdate(int32_t callbackType, TNodeUpdate callback, void* userData,
                          TCallbackHandle* handle) noexcept override;
  uint32_t DeregisterUpdate(TCallbackHandle handle) noexcept override;
  uint32_t GetVerifyMode(TVerifyMode* mode) noexcept override;
  uint32_t SetVerifyMode(TVerifyMode mode) noexcept override;

 private:
  class CallbackHelper;
  class UpdateCallback;
  using Related = std::vector<GENAPI_NAMESPACE::INode*>;

  // "<name><tag>: <text>" in the record of a failure.
  Operation operation(const char* tag, const FailureRules& rules) const noexcept;
  bool readBoolean(bool verify);
  int64_t readInteger(bool verify);
  double readFloat(bool verify);
  void writeBoolean(bool verify, bool value);
  void writeInteger(bool verify, int64_t value);
  void writeFloat(bool verify, double value);
  void writeText(bool verify, const char* value);
  // What a list holds. It follows from the description alone, so it is found once: callers walk lists entry by entry.
  const Related& related(TNodeList list, const char* unknown) const;
  Related findRelated(TNodeList list, const char* unknown) const;
  GENAPI_NAMESPACE::INode& relatedAt(TNodeList list, int64_t index) const;
  std::string entryInfo(TNodeInfo info, int64_t index, int64_t* integer) const;
  GENICAM_NAMESPACE::gcstring listEntryName(TNodeList list, int64_t index) const;
  void deregisterAll() noexcept;

  const orxBase::shared_ref<NodeMapBase> nodeMap_;
  const std::shared_ptr<LoadedMap> load_;
  const TypedNode typed_;
  mutable std::array<std::atomic<const Related*>, 4> related_{};  // by TNodeList; null until asked
  std::atomic<TVerifyMode> verifyMode_{VM_WriteOnly};             // written under the engine map's lock
  // What is registered with the engine, which owns the callback objects. Guarded by the engine map's lock.
  std::set<TCallbackHandle> callbacks_;
};

template <>
struct HandleKind<Node> : HandleKind<ORX::INode> {};

// Refuses with "Index out of range: 0 <= 7 < 5".
[[noreturn]] void throwIndexOutOfRange(int64_t index, uint64_t count);

}  // namespace orxGenApi
