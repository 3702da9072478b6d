// Events and chunks.
#include <string>

#include "ExportFrame.h"
#include "NodeMapBase.h"
#include "OxGenApi/NodeMap.h"
#include "Text.h"

using orxGenApi::args;
using orxGenApi::NodeMapBase;
using orxGenApi::onObject;
using orxGenApi::record;
using orxGenApi::toNarrow;

namespace {

uint32_t deliver(NodeMapBase& nodeMap, const TEventData& data) {
  return nodeMap.DeliverEvent(data.EventID, data.pBuffer, data.BufferSize);
}
uint32_t deliver(NodeMapBase& nodeMap, const TEventDataEx& data) {
  return nodeMap.DeliverEventEx(data.EventID, data.pBuffer, data.BufferSize);
}
uint32_t deliver(NodeMapBase& nodeMap, const TEventDataExW& data) {
  return nodeMap.DeliverEventEx(toNarrow(data.EventID).c_str(), data.pBuffer, data.BufferSize);
}

uint32_t attach(NodeMapBase& nodeMap, const TChunkData& data) {
  return nodeMap.AttachChunk(data.ChunkID, data.pBase, data.ChunkOffset, data.ChunkLength);
}
uint32_t attach(NodeMapBase& nodeMap, const TChunkDataEx& data) {
  return nodeMap.AttachChunkEx(data.ChunkID, data.pBase, data.ChunkOffset, data.ChunkLength);
}
uint32_t attach(NodeMapBase& nodeMap, const TChunkDataExW& data) {
  if (data.ChunkID == nullptr)  // a missing ID stays one: an empty text is another thing
    return nodeMap.AttachChunkEx(nullptr, data.pBase, data.ChunkOffset, data.ChunkLength);
  return nodeMap.AttachChunkEx(toNarrow(data.ChunkID).c_str(), data.pBase, data.ChunkOffset, data.ChunkLength);
}

template <class Data>
uint32_t deliverEvent(NODEMAP handle, const Data* data) {
  return onObject<NodeMapBase>(handle, args("hNodeMap", handle, "Data", record(data)),
                               [&](NodeMapBase& nodeMap) { return deliver(nodeMap, *data); });
}

template <class Data>
uint32_t attachChunk(NODEMAP handle, const Data* data) {
  return onObject<NodeMapBase>(handle, args("hNodeMap", handle, "Data", record(data)),
                               [&](NodeMapBase& nodeMap) { return attach(nodeMap, *data); });
}

// The first failure ends the list; what was attached before stays attached.
template <class Data>
uint32_t attachChunkList(NODEMAP handle, const Data* list, size_t length) {
  const auto arguments = args("hNodeMap", handle, "DataList", list, "Length", length);
  if (list == nullptr && length != 0) return refuse(arguments, OXGENAPI_E_INVALID_ARGUMENT, "Invalid DataList");
  return onObject<NodeMapBase>(handle, arguments, [&](NodeMapBase& nodeMap) {
    if (length == 0) return OXGENAPI_OK;
    for (size_t i = 0; i < length; ++i)
      if (const uint32_t result = attach(nodeMap, list[i])) return result;
    return nodeMap.UpdateChunks(nullptr);
  });
}

}  // namespace

extern "C" {

uint32_t NMDeliverEvent(NODEMAP NodeMap, const TEventData* pData) { return deliverEvent(NodeMap, pData); }

uint32_t NMDeliverEventEx(NODEMAP NodeMap, const TEventDataEx* pData) { return deliverEvent(NodeMap, pData); }

uint32_t NMDeliverEventExW(NODEMAP NodeMap, const TEventDataExW* pData) { return deliverEvent(NodeMap, pData); }

uint32_t NMAttachChunk(NODEMAP NodeMap, const TChunkData* pData) { return attachChunk(NodeMap, pData); }

uint32_t NMAttachChunkEx(NODEMAP NodeMap, const TChunkDataEx* pData) { return attachChunk(NodeMap, pData); }

uint32_t NMAttachChunkExW(NODEMAP NodeMap, const TChunkDataExW* pData) { return attachChunk(NodeMap, pData); }

uint32_t NMAttachChunkList(NODEMAP NodeMap, const TChunkData* DataList, size_t Length) {
  return attachChunkList(NodeMap, DataList, Length);
}

uint32_t NMAttachChunkListEx(NODEMAP NodeMap, const TChunkDataEx* DataList, size_t Length) {
  return attachChunkList(NodeMap, DataList, Length);
}

uint32_t NMAttachChunkListExW(NODEMAP NodeMap, const TChunkDataExW* DataList, size_t Length) {
  return attachChunkList(NodeMap, DataList, Length);
}

uint32_t NMUpdateChunks(NODEMAP NodeMap, void* pBase) {
  return onObject<NodeMapBase>(NodeMap, args("hNodeMap", NodeMap, "pBase", pBase),
                               [&](NodeMapBase& nodeMap) { return nodeMap.UpdateChunks(pBase); });
}

uint32_t NMDetachAllChunks(NODEMAP NodeMap) {
  return onObject<NodeMapBase>(NodeMap, args("hNodeMap", NodeMap),
                               [](NodeMapBase& nodeMap) { return nodeMap.DetachAllChunks(); });
}

}  // extern "C"
