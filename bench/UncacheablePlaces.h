// Where a description forbids to remember what was read.
#pragma once
#include <GenApi/GenApi.h>

#include <cstdint>
#include <cstring>
#include <set>
#include <string>
#include <utility>

using Place = std::pair<int64_t, int64_t>;  // address, length

// Places that some register of the description may not remember. Their addresses may depend on the device's
// content; only the engine tells where numbers and texts are.
inline std::set<Place> uncacheablePlaces(const std::string& text, GENAPI_NAMESPACE::CPortImpl& device) {
  using namespace GENAPI_NAMESPACE;
  INodeMap* const map = CNodeMapFactory(ContentType_Auto, text.data(), text.size()).CreateNodeMap("Device");
  NodeList_t nodes;
  map->GetNodes(nodes);
  for (INode* node : nodes) {
    const GENICAM_NAMESPACE::gcstring name = node->GetName();
    if (std::strstr(name.c_str(), "Device") && dynamic_cast<IPort*>(node)) map->Connect(&device, name);
  }
  std::set<Place> found;
  for (INode* node : nodes) {
    auto* const place = dynamic_cast<IRegister*>(node);
    if (!place || node->GetCachingMode() != NoCache) continue;
    try {
      found.insert({place->GetAddress(), place->GetLength()});
    } catch (const GENICAM_NAMESPACE::GenericException&) {  // nobody can read it
    }
  }
  dynamic_cast<IDestroy*>(map)->Destroy();
  return found;
}
