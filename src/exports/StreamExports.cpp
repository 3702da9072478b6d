#include <limits>

#include "ExportFrame.h"
#include "NodeMapStream.h"
#include "OxGenApi/NodeMap.h"
#include "Text.h"

namespace orxGenApi {
namespace {

// Creating reports what it throws as every creating export does.
uint32_t createStream(NodeMapBase& nodeMap, NODEMAPSTREAM* stream) {
  *stream =
      static_cast<NODEMAPSTREAM>(orxBase::detail::make_shared_t<NodeMapStream>(nodeMap.shared_from_this()).release());
  return OXGENAPI_OK;
}

template <class Character>
uint32_t dump(NODEMAPSTREAM NodeMapStream, Character* Settings, size_t* SettingsSize) {
  const auto arguments = args("NodeMapStream", NodeMapStream, "Settings", Settings, "SettingsSize", SettingsSize);
  return onObject<orxGenApi::NodeMapStream>(NodeMapStream, arguments, [&](orxGenApi::NodeMapStream& stream) {
    // No room even for the zero, or more than any object can be long.
    constexpr size_t kLargest = static_cast<size_t>(std::numeric_limits<ptrdiff_t>::max()) / sizeof(Character);
    if (SettingsSize == nullptr || (Settings != nullptr && (*SettingsSize == 0 || *SettingsSize > kLargest)))
      return refuse(arguments, OXGENAPI_E_INVALID_ARGUMENT, "invalid buffer size to read string through c-interface");
    stream.withText([&](std::string_view text) { copyText(text, Settings, *SettingsSize); });
    return OXGENAPI_OK;
  });
}

}  // namespace
}  // namespace orxGenApi

using namespace orxGenApi;

uint32_t NMCreateStream(NODEMAP NodeMap, TStreamType StreamType, NODEMAPSTREAM* Stream) {
  const auto arguments = args("NodeMap", NodeMap, "StreamType", StreamType, "Stream", Stream);
  return onObject<NodeMapBase>(NodeMap, arguments, [&](NodeMapBase& nodeMap) {
    if (Stream != nullptr) *Stream = nullptr;
    if (StreamType != ST_Json) return refuse(arguments, OXGENAPI_E_INVALID_HANDLE, "Invalid TStreamType handle");
    if (Stream == nullptr) return refuse(arguments, OXGENAPI_E_INVALID_ARGUMENT, "Invalid buffer");
    return guardedExport(arguments, kCreating, [&] { return createStream(nodeMap, Stream); });
  });
}

uint32_t NMStreamPush(NODEMAPSTREAM NodeMapStream, NODE Node) {
  const auto arguments = args("NodeMapStream", NodeMapStream, "Node", Node);
  return onObject<orxGenApi::NodeMapStream>(NodeMapStream, arguments, [&](orxGenApi::NodeMapStream& stream) {
    return onObject<orxGenApi::Node>(Node, arguments, [&](orxGenApi::Node& node) {
      stream.push(node);
      return OXGENAPI_OK;
    });
  });
}

uint32_t NMStreamDump(NODEMAPSTREAM NodeMapStream, char* Settings, size_t* SettingsSize) {
  return dump(NodeMapStream, Settings, SettingsSize);
}

uint32_t NMStreamDumpW(NODEMAPSTREAM NodeMapStream, wchar_t* Settings, size_t* SettingsSize) {
  return dump(NodeMapStream, Settings, SettingsSize);
}
