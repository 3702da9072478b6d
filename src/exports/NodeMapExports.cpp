#include "OxGenApi/NodeMap.h"

#include <cstring>

#include "ExportFrame.h"
#include "NodeMap.h"
#include "NodeMapProxy.h"
#include "OxBase/OxBase.h"
#include "Text.h"

using orxGenApi::args;
using orxGenApi::kCreating;
using orxGenApi::NodeMapBase;
using orxGenApi::onObject;
using orxGenApi::toNarrow;

namespace {

// Through the interface alone.
template <class Arguments, class Call>
uint32_t onNodeMap(NODEMAP handle, const Arguments& arguments, Call&& call) {
  return onObject<ORX::INodeMap>(handle, arguments, call);
}

// Where the library's own class is needed.
template <class Arguments, class Call>
uint32_t onOwnNodeMap(NODEMAP handle, const Arguments& arguments, Call&& call) {
  return onObject<NodeMapBase>(handle, arguments, call);
}

uint32_t refuseOldEntryPoint(NODEMAP handle) {
  return orxGenApi::refuse(args("NodeMap", handle), OXGENAPI_E_NOT_SUPPORTED, orxGenApi::kUnspecifiedError);
}

}  // namespace

extern "C" {

uint32_t CreateNodeMap(NODEMAP& NodeMap) {
  NodeMap = nullptr;
  return orxGenApi::guardedExport(args("NodeMap", &NodeMap), kCreating, [&] {
    NodeMap = static_cast<NODEMAP>(orxBase::detail::make_shared_t<orxGenApi::NodeMap>().release());
    return OXGENAPI_OK;
  });
}

uint32_t CreateNodeMapProxy(NODEMAP InternalNodeMap, TReleaseNotify ReleaseNotify, void* pUserData,
                            NODEMAP* ProxyNodeMap) {
  constexpr orxGenApi::FailureRules kCreatingProxy{.unknown = OXGENAPI_E_OUT_OF_MEMORY, .describes = false};
  const auto arguments = args("InternalNodeMap", InternalNodeMap, "ReleaseNotify", ReleaseNotify, "pUserData",
                              pUserData, "ProxyNodeMap", ProxyNodeMap);
  return onOwnNodeMap(InternalNodeMap, arguments, [&](NodeMapBase& internal) {
    *ProxyNodeMap = nullptr;
    return orxGenApi::guardedExport(arguments, kCreatingProxy, [&] {
      auto reference = orxBase::shared_ref<NodeMapBase>::add(InternalNodeMap, &internal);
      auto proxy = orxBase::detail::make_shared_t<orxGenApi::NodeMapProxy>(std::move(reference));
      proxy->setReleaseNotify(ReleaseNotify, pUserData);
      *ProxyNodeMap = static_cast<NODEMAP>(proxy.release());
      return OXGENAPI_OK;
    });
  });
}

bool IsNodeMap(NODEMAP Object) { return orxGenApi::isHandleOf<ORX::INodeMap>(Object); }

uint32_t NMLoadXMLFile(NODEMAP NodeMap, const char* FileName) {
  return onOwnNodeMap(NodeMap, args("NodeMap", NodeMap, "FileName", FileName),
                      [&](NodeMapBase& nodeMap) { return nodeMap.LoadXMLFile(FileName); });
}

uint32_t NMLoadXMLFileW(NODEMAP NodeMap, const wchar_t* FileName) {
  return onOwnNodeMap(NodeMap, args("NodeMap", NodeMap, "FileName", FileName),
                      [&](NodeMapBase& nodeMap) { return nodeMap.LoadXMLFile(toNarrow(FileName).c_str()); });
}

uint32_t NMLoadXMLString(NODEMAP NodeMap, const char* XMLData) {
  return onOwnNodeMap(NodeMap, args("NodeMap", NodeMap, "XMLData", XMLData), [&](NodeMapBase& nodeMap) {
    return nodeMap.LoadXMLString(XMLData, XMLData == nullptr ? 0 : std::strlen(XMLData));
  });
}

uint32_t NMLoadXMLStringW(NODEMAP NodeMap, const wchar_t* XMLData) {
  return onOwnNodeMap(NodeMap, args("NodeMap", NodeMap, "XMLData", XMLData), [&](NodeMapBase& nodeMap) {
    const std::string text = toNarrow(XMLData);
    return nodeMap.LoadXMLString(text.data(), text.size());
  });
}

uint32_t NMLoadXML(NODEMAP NodeMap, ...) { return refuseOldEntryPoint(NodeMap); }

uint32_t NMConnectRegisterPort(NODEMAP NodeMap, ...) { return refuseOldEntryPoint(NodeMap); }

uint32_t NMConnectMultiRegisterPort(NODEMAP NodeMap, ...) { return refuseOldEntryPoint(NodeMap); }

uint32_t NMNodeCount(NODEMAP NodeMap, uint32_t& NodeCount) {
  return onNodeMap(NodeMap, args("NodeMap", NodeMap, "NodeCount", &NodeCount),
                   [&](ORX::INodeMap& nodeMap) { return nodeMap.GetNodeCount(&NodeCount); });
}

uint32_t NMGetNode(NODEMAP NodeMap, const char* NodeName, NODE& Node) {
  return onNodeMap(NodeMap, args("NodeMap", NodeMap, "NodeName", NodeName, "Node", &Node),
                   [&](ORX::INodeMap& nodeMap) { return nodeMap.GetNode(NodeName, &Node); });
}

uint32_t NMGetNodeW(NODEMAP NodeMap, const wchar_t* NodeName, NODE& Node) {
  return onNodeMap(NodeMap, args("NodeMap", NodeMap, "NodeName", NodeName, "Node", &Node),
                   [&](ORX::INodeMap& nodeMap) { return nodeMap.GetNode(toNarrow(NodeName).c_str(), &Node); });
}

uint32_t NMListNode(NODEMAP NodeMap, uint32_t Index, char* NodeName, size_t& NodeNameSize) {
  return onNodeMap(NodeMap,
                   args("NodeMap", NodeMap, "Index", Index, "NodeName", NodeName, "NodeNameSize", &NodeNameSize),
                   [&](ORX::INodeMap& nodeMap) { return nodeMap.ListNode(Index, NodeName, NodeNameSize); });
}

uint32_t NMListNodeW(NODEMAP NodeMap, uint32_t Index, wchar_t* NodeName, size_t& NodeNameSize) {
  return onNodeMap(NodeMap,
                   args("NodeMap", NodeMap, "Index", Index, "NodeName", NodeName, "NodeNameSize", &NodeNameSize),
                   [&](ORX::INodeMap& nodeMap) { return nodeMap.ListNodeW(Index, NodeName, NodeNameSize); });
}

uint32_t NMInfoAsBoolean(NODEMAP NodeMap, TNodeMapInfo Cmd, bool* Info) {
  return onNodeMap(NodeMap, args("NodeMap", NodeMap, "Cmd", Cmd, "Info", Info),
                   [&](ORX::INodeMap& nodeMap) { return nodeMap.GetInfoAsBoolean(Cmd, Info); });
}

uint32_t NMInfoAsInteger(NODEMAP NodeMap, TNodeMapInfo Cmd, int64_t* Info) {
  return onNodeMap(NodeMap, args("NodeMap", NodeMap, "Cmd", Cmd, "Info", Info),
                   [&](ORX::INodeMap& nodeMap) { return nodeMap.GetInfoAsInteger(Cmd, Info); });
}

uint32_t NMInfoAsFloat(NODEMAP NodeMap, TNodeMapInfo Cmd, double* Info) {
  return onNodeMap(NodeMap, args("NodeMap", NodeMap, "Cmd", Cmd, "Info", Info),
                   [&](ORX::INodeMap& nodeMap) { return nodeMap.GetInfoAsFloat(Cmd, Info); });
}

uint32_t NMInfoAsString(NODEMAP NodeMap, TNodeMapInfo Cmd, char* Info, size_t& InfoSize) {
  return onNodeMap(NodeMap, args("NodeMap", NodeMap, "Cmd", Cmd, "Info", Info, "InfoSize", &InfoSize),
                   [&](ORX::INodeMap& nodeMap) { return nodeMap.GetInfoAsString(Cmd, Info, InfoSize); });
}

uint32_t NMInfoAsStringW(NODEMAP NodeMap, TNodeMapInfo Cmd, wchar_t* Info, size_t& InfoSize) {
  return onNodeMap(NodeMap, args("NodeMap", NodeMap, "Cmd", Cmd, "Info", Info, "InfoSize", &InfoSize),
                   [&](ORX::INodeMap& nodeMap) { return nodeMap.GetInfoAsStringW(Cmd, Info, InfoSize); });
}

uint32_t NMPollNodes(NODEMAP NodeMap, int32_t DeltaMS) {
  return onNodeMap(NodeMap, args("NodeMap", NodeMap, "DeltaMS", DeltaMS),
                   [&](ORX::INodeMap& nodeMap) { return nodeMap.PollNodes(DeltaMS); });
}

uint32_t NMConnectPort(NODEMAP NodeMap, TReadMem ReadMem, TWriteMem WriteMem, TPortAccessMode AccessMode,
                       void* pUserData) {
  return NMConnectPortEx(NodeMap, ReadMem, WriteMem, AccessMode, pUserData, "Device");
}

uint32_t NMConnectPortEx(NODEMAP NodeMap, TReadMem ReadMem, TWriteMem WriteMem, TPortAccessMode AccessMode,
                         void* pUserData, const char* PortName) {
  return onOwnNodeMap(
      NodeMap,
      args("NodeMap", NodeMap, "ReadMem", ReadMem, "WriteMem", WriteMem, "AccessMode", AccessMode, "pUserData",
           pUserData, "PortName", PortName),
      [&](NodeMapBase& nodeMap) { return nodeMap.ConnectPort(ReadMem, WriteMem, AccessMode, pUserData, PortName); });
}

uint32_t NMConnectPortExW(NODEMAP NodeMap, TReadMem ReadMem, TWriteMem WriteMem, TPortAccessMode AccessMode,
                          void* pUserData, const wchar_t* PortName) {
  return onOwnNodeMap(NodeMap,
                      args("NodeMap", NodeMap, "ReadMem", ReadMem, "WriteMem", WriteMem, "AccessMode", AccessMode,
                           "pUserData", pUserData, "PortName", PortName),
                      [&](NodeMapBase& nodeMap) {
                        return nodeMap.ConnectPort(ReadMem, WriteMem, AccessMode, pUserData,
                                                   toNarrow(PortName).c_str());
                      });
}

}  // extern "C"
