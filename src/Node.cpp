#include "Node.h"

#include <utility>

#include "Text.h"

namespace orxGenApi {

Node::Node(orxBase::shared_ref<NodeMapBase> nodeMap, std::shared_ptr<LoadedMap> load,
           GENAPI_NAMESPACE::INode* engineNode) noexcept
    : nodeMap_(std::move(nodeMap)), load_(std::move(load)), typed_(engineNode) {}

Node::~Node() {
  deregisterAll();
  for (const auto& list : related_) delete list.load(std::memory_order_relaxed);
}

Operation Node::operation(const char* tag, const FailureRules& rules) const noexcept {
  return {rules, tag, this,
          [](std::string& text, const void* self) { text += static_cast<const Node*>(self)->typed_.name().c_str(); }};
}

uint32_t Node::GetType(TNodeType* type) noexcept {
  *type = typed_.type;
  return OXGENAPI_OK;
}

void throwIndexOutOfRange(int64_t index, uint64_t count) {
  throw orx_error(OXGENAPI_E_INVALID_ARGUMENT,
                  "Index out of range: 0 <= " + integerText(index) + " < " + integerText(static_cast<int64_t>(count)));
}

}  // namespace orxGenApi
