#include "NodeMap.h"

#include <cstring>
#include <utility>

#include "Base/GCUtilities.h"
#include "GenApi/GenApi.h"
#include "LoadedMap.h"
#include "Node.h"
#include "NodeText.h"

namespace orxGenApi {

using GENAPI_NAMESPACE::AutoLock;
using GENICAM_NAMESPACE::gcstring;

namespace {

[[noreturn]] void refuseAbsent(const std::string& name) {
  throw orx_error(OXGENAPI_E_NOT_PRESENT, "Node '" + name + "' not present in NodeMap");
}

// Only these two kinds can be handed out.
void checkKind(GENAPI_NAMESPACE::INode* node) {
  if (dynamic_cast<GENAPI_NAMESPACE::IValue*>(node) || dynamic_cast<GENAPI_NAMESPACE::IPort*>(node)) return;
  throw orx_error(OXGENAPI_E_FEATURE_TYPE,
                  std::string("Feature '") + node->GetName().c_str() + "' is not a value or port type");
}

}  // namespace

NodeMap::~NodeMap() {
  if (loaded_) loaded_->retire();
}

Operation NodeMap::operation(const char* tag, const FailureRules& rules) const noexcept {
  return {rules, tag, this, [](std::string& text, const void* self) {
            const auto load = static_cast<const NodeMap*>(self)->current();
            text += load ? load->map()->GetDeviceName().c_str() : "<nullptr>";
          }};
}

std::shared_ptr<LoadedMap> NodeMap::current() const noexcept {
  AutoLock lock(cacheLock_);
  return loaded_;
}

std::shared_ptr<LoadedMap> NodeMap::loaded() noexcept { return current(); }

std::shared_ptr<LoadedMap> NodeMap::required(const char* otherwise) const {
  auto load = current();
  if (!load) throw orx_error(OXGENAPI_E_INVALID_STATE, otherwise);
  return load;
}

orxBase::shared_ref<Node> NodeMap::nodeFor(const std::shared_ptr<LoadedMap>& load,
                                           GENAPI_NAMESPACE::INode* engineNode) {
  {
    AutoLock lock(cacheLock_);
    if (loaded_ == load) {
      const auto known = nodeCache_.find(engineNode);
      if (known != nodeCache_.end()) {
        if (auto node = known->second.lock()) return node;
      }
    }
  }
  checkKind(engineNode);
  // What the lock guards is prepared before it and ends after it.
  auto built = orxBase::detail::make_shared_t<Node>(shared_from_this(), load, engineNode);
  NodeCache entry;
  entry.emplace(engineNode, orxBase::weak_ref<Node>(built));
  orxBase::shared_ref<Node> other;
  AutoLock lock(cacheLock_);
  if (loaded_ != load) return built;  // of an earlier load: nobody else may find it
  const auto known = nodeCache_.find(engineNode);
  if (known == nodeCache_.end()) {
    nodeCache_.merge(entry);
    return built;
  }
  other = known->second.lock();
  if (other)  // another thread was faster; its node is the one
    std::swap(built, other);
  else
    std::swap(known->second, entry.begin()->second);
  return built;
}

orxBase::shared_ref<Node> NodeMap::known(const char* name) const {
  AutoLock lock(cacheLock_);
  const auto entry = nameCache_.find(std::string_view(name));
  return entry == nameCache_.end() ? orxBase::shared_ref<Node>() : entry->second.lock();
}

void NodeMap::remember(const std::shared_ptr<LoadedMap>& load, const char* name,
                       const orxBase::shared_ref<Node>& node) {
  if (std::strchr(name, ':') != nullptr) return;  // with a name space, a second name of the node
  // What the lock guards is prepared before it and ends after it.
  NameCache entry;
  entry.emplace(name, orxBase::weak_ref<Node>(node));
  AutoLock lock(cacheLock_);
  if (loaded_ != load) return;
  const auto former = nameCache_.find(entry.begin()->first);
  if (former == nameCache_.end())
    nameCache_.merge(entry);
  else
    std::swap(former->second, entry.begin()->second);
}

uint32_t NodeMap::GetNode(const char* name, NODE* node) noexcept {
  *node = nullptr;
  return guarded(operation("-NodeMap::GetNode", kLoading), [&] {
    if (name == nullptr) name = "";
    auto found = known(name);
    if (!found) {
      const auto load = required();
      GENAPI_NAMESPACE::INode* engineNode = load->map()->GetNode(name);
      if (engineNode == nullptr) refuseAbsent(name);
      found = nodeFor(load, engineNode);
      remember(load, name, found);
    }
    *node = static_cast<NODE>(found.release());
  });
}

uint32_t NodeMap::GetNodeCount(uint32_t* count) noexcept {
  return guarded(operation("-NodeMap::GetNodeCount", kAsking),
                 [&] { *count = GENICAM_NAMESPACE::INTEGRAL_CAST<uint32_t>(required()->map()->GetNumNodes()); });
}

std::string NodeMap::listedName(uint32_t index) const {
  const auto load = required();
  const auto& nodes = load->nodes();
  if (index >= nodes.size()) throwIndexOutOfRange(index, nodes.size());
  return nodes[index]->GetName(true).c_str();
}

uint32_t NodeMap::ListNode(uint32_t index, char* name, size_t& size) noexcept {
  return guardedText(operation("-NodeMap::ListNode", kDelivering), name, size, [&] { return listedName(index); });
}

uint32_t NodeMap::ListNodeW(uint32_t index, wchar_t* name, size_t& size) noexcept {
  return guardedText(operation("-NodeMap::ListNode", kDelivering), name, size, [&] { return listedName(index); });
}

uint32_t NodeMap::PollNodes(int32_t elapsedMilliseconds) noexcept {
  return guarded(operation("-NodeMap::PollNodes", kPolling), [&] {
    const auto load = required();
    load->map()->Poll(elapsedMilliseconds);
  });
}

uint32_t NodeMap::ConnectPort(TReadMem read, TWriteMem write, TPortAccessMode accessMode, void* userData,
                              const char* portName) noexcept {
  return guarded(operation("-NodeMap::ConnectPort", kConnecting), [&] {
    const auto load = required("No NodeMap available to connect to");
    const gcstring name(portName == nullptr ? "" : portName);
    if (load->connect(std::make_shared<Port>(read, write, accessMode, userData), name)) return;
    if (load->map()->GetNode(name) == nullptr) refuseAbsent(name.c_str());
    throw orx_error(OXGENAPI_E_NOT_PRESENT, std::string("Node '") + name.c_str() + "' is not a port");
  });
}

void NodeMap::install(GENAPI_NAMESPACE::CNodeMapFactory& factory) {
  constexpr bool kReleaseText = true;
  LoadedMap::EngineMap map(factory.CreateNodeMap("Device", kReleaseText));
  auto load = std::make_shared<LoadedMap>(std::move(map));
  NodeCache formerNodes;
  NameCache formerNames;
  {
    AutoLock lock(cacheLock_);
    loaded_.swap(load);
    nodeCache_.swap(formerNodes);
    nameCache_.swap(formerNames);
  }
  if (load) load->retire();
}

uint32_t NodeMap::LoadXMLFile(const char* fileName) noexcept {
  return guarded(operation("-NodeMap::LoadXMLFile", kLoading), [&] {
    GENAPI_NAMESPACE::CNodeMapFactory factory(GENAPI_NAMESPACE::ContentType_Auto,
                                              gcstring(fileName == nullptr ? "" : fileName),
                                              GENAPI_NAMESPACE::CacheUsage_Automatic, false);
    install(factory);
  });
}

uint32_t NodeMap::LoadXMLString(const char* text, size_t length) noexcept {
  return guarded(operation("-NodeMap::LoadXMLString", kLoading), [&] {
    GENAPI_NAMESPACE::CNodeMapFactory factory(GENAPI_NAMESPACE::ContentType_Auto, text, length,
                                              GENAPI_NAMESPACE::CacheUsage_Automatic, false);
    install(factory);
  });
}

}  // namespace orxGenApi
