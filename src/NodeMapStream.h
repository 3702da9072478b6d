// A growing JSON document of node snapshots: an array with one object per pushed node.
#pragma once
#include <cstdint>
#include <mutex>
#include <string>
#include <utility>

#include "HandleKind.h"
#include "Node.h"
#include "NodeMapBase.h"
#include "OxBase/SharedRef.h"

namespace orxGenApi {

// Threads: pushes and dumps may come from several threads. The lock covers the document only; it is never held while a
// node is read.
class NodeMapStream : public orxBase::enable_shared_from_this<NodeMapStream> {
 public:
  // Registered on first use.
  static uint64_t interfaceId() noexcept;

  // Keeps the node map alive.
  explicit NodeMapStream(orxBase::shared_ref<NodeMapBase> nodeMap) : nodeMap_(std::move(nodeMap)) {}

  // Appends {"Display Name", "Name", "Type", "Value"} of the node as it is now. The value of categories and commands,
  // and one that cannot be read, is an empty text. Bytes that are not UTF-8 become U+FFFD, so that every document can
  // be read. Throws orx_error 0x80000001 "not a valid node type" for a node whose type has no name in the document.
  void push(Node& node);

  // Calls with the document as compact JSON, a std::string_view that is valid during the call. The document is kept as
  // text and only grows by what is pushed, so asking for its size and then for itself writes nothing twice.
  template <class Use>
  void withText(Use&& use) const {
    const std::lock_guard guard(lock_);
    use(std::string_view(text_));
  }

 private:
  const orxBase::shared_ref<NodeMapBase> nodeMap_;
  mutable std::mutex lock_;
  std::string text_ = "[]";
};

template <>
struct HandleKind<NodeMapStream> {
  using Interface = NodeMapStream;
  static uint64_t id() noexcept { return NodeMapStream::interfaceId(); }
  static constexpr const char* kInvalid = "Invalid NODEMAPSTREAM handle";
};

}  // namespace orxGenApi
