#include "OxGenApi/Node.h"

#include <typeinfo>

#include "ExportFrame.h"
#include "INode.h"
#include "Node.h"

using orxGenApi::args;
using orxGenApi::isHandleOf;
using orxGenApi::onObject;

namespace {

template <class Arguments, class Call>
uint32_t onNode(NODE handle, const Arguments& arguments, Call&& call) {
  return onObject<ORX::INode>(handle, arguments, call);
}

// The library's own nodes are asked without the node map's lock: the value call that follows takes it anyway.
TVerifyMode verifyMode(ORX::INode& node) {
  if (typeid(node) == typeid(orxGenApi::Node)) return static_cast<orxGenApi::Node&>(node).verifyMode();
  TVerifyMode mode = VM_None;
  node.GetVerifyMode(&mode);
  return mode;
}

bool verifiesReads(ORX::INode& node) { return verifyMode(node) >= VM_ReadOnly; }

bool verifiesWrites(ORX::INode& node) {
  const TVerifyMode mode = verifyMode(node);
  return mode == VM_WriteOnly || mode == VM_ReadWrite;
}

}  // namespace

extern "C" {

bool IsNode(NODE Object) { return isHandleOf<ORX::INode>(Object); }

uint32_t NType(NODE Node, TNodeType* Type) {
  TNodeType type = NT_Invalid;
  const uint32_t result =
      onNode(Node, args("Node", Node, "Type", Type), [&](ORX::INode& node) { return node.GetType(&type); });
  *Type = type;
  return result;
}

uint32_t NGetAsBoolean(NODE Node, bool* Value) {
  return onNode(Node, args("Node", Node, "Value", Value),
                [&](ORX::INode& node) { return node.GetAsBoolean(verifiesReads(node), Value); });
}

uint32_t NGetAsInteger(NODE Node, int64_t* Value) {
  return onNode(Node, args("Node", Node, "Value", Value),
                [&](ORX::INode& node) { return node.GetAsInteger(verifiesReads(node), Value); });
}

uint32_t NGetAsFloat(NODE Node, double* Value) {
  return onNode(Node, args("Node", Node, "Value", Value),
                [&](ORX::INode& node) { return node.GetAsFloat(verifiesReads(node), Value); });
}

uint32_t NGetAsString(NODE Node, char* StringValue, size_t& StringValueSize) {
  return onNode(Node, args("Node", Node, "StringValue", StringValue, "StringValueSize", &StringValueSize),
                [&](ORX::INode& node) { return node.GetAsString(verifiesReads(node), StringValue, StringValueSize); });
}

uint32_t NGetAsStringW(NODE Node, wchar_t* StringValue, size_t& StringValueSize) {
  return onNode(Node, args("Node", Node, "StringValue", StringValue, "StringValueSize", &StringValueSize),
                [&](ORX::INode& node) { return node.GetAsStringW(verifiesReads(node), StringValue, StringValueSize); });
}

uint32_t NSetAsBoolean(NODE Node, bool Value) {
  return onNode(Node, args("Node", Node, "Value", Value),
                [&](ORX::INode& node) { return node.SetAsBoolean(verifiesWrites(node), Value); });
}

uint32_t NSetAsInteger(NODE Node, int64_t Value) {
  return onNode(Node, args("Node", Node, "Value", Value),
                [&](ORX::INode& node) { return node.SetAsInteger(verifiesWrites(node), Value); });
}

uint32_t NSetAsFloat(NODE Node, double Value) {
  return onNode(Node, args("Node", Node, "Value", Value),
                [&](ORX::INode& node) { return node.SetAsFloat(verifiesWrites(node), Value); });
}

uint32_t NSetAsString(NODE Node, const char* StringValue) {
  return onNode(Node, args("Node", Node, "StringValue", StringValue),
                [&](ORX::INode& node) { return node.SetAsString(verifiesWrites(node), StringValue); });
}

uint32_t NSetAsStringW(NODE Node, const wchar_t* StringValue) {
  return onNode(Node, args("Node", Node, "StringValue", StringValue),
                [&](ORX::INode& node) { return node.SetAsStringW(verifiesWrites(node), StringValue); });
}

uint32_t NInfoAsBoolean(NODE Node, TNodeInfo Info, bool* Value) {
  return onNode(Node, args("Node", Node, "Info", Info, "Value", Value),
                [&](ORX::INode& node) { return node.GetInfoAsBoolean(Info, Value); });
}

uint32_t NInfoAsInteger(NODE Node, TNodeInfo Info, int64_t* Value) {
  return onNode(Node, args("Node", Node, "Info", Info, "Value", Value),
                [&](ORX::INode& node) { return node.GetInfoAsInteger(Info, Value); });
}

uint32_t NInfoAsFloat(NODE Node, TNodeInfo Info, double* Value) {
  return onNode(Node, args("Node", Node, "Info", Info, "Value", Value),
                [&](ORX::INode& node) { return node.GetInfoAsFloat(Info, Value); });
}

uint32_t NInfoAsString(NODE Node, TNodeInfo Info, char* Value, size_t& InfoSize) {
  return onNode(Node, args("Node", Node, "Info", Info, "Value", Value, "InfoSize", &InfoSize),
                [&](ORX::INode& node) { return node.GetInfoAsString(Info, Value, InfoSize); });
}

uint32_t NInfoAsStringW(NODE Node, TNodeInfo Info, wchar_t* Value, size_t& InfoSize) {
  return onNode(Node, args("Node", Node, "Info", Info, "Value", Value, "InfoSize", &InfoSize),
                [&](ORX::INode& node) { return node.GetInfoAsStringW(Info, Value, InfoSize); });
}

uint32_t NInfoEnum(NODE Node, TNodeInfo InfoEnum, int64_t FileIndex, int64_t* IntegerValue, char* StringValue,
                   size_t* StringValueSize) {
  return onNode(Node,
                args("Node", Node, "InfoEnum", InfoEnum, "FileIndex", FileIndex, "IntegerValue", IntegerValue,
                     "StringValue", StringValue, "StringValueSize", StringValueSize),
                [&](ORX::INode& node) {
                  size_t none = 0;
                  return node.GetInfoEnum(InfoEnum, FileIndex, IntegerValue, StringValue,
                                          StringValueSize == nullptr ? none : *StringValueSize);
                });
}

uint32_t NInfoEnumW(NODE Node, TNodeInfo InfoEnum, int64_t FileIndex, int64_t* IntegerValue, wchar_t* StringValue,
                    size_t* StringValueSize) {
  return onNode(Node,
                args("Node", Node, "InfoEnum", InfoEnum, "FileIndex", FileIndex, "IntegerValue", IntegerValue,
                     "StringValue", StringValue, "StringValueSize", StringValueSize),
                [&](ORX::INode& node) {
                  size_t none = 0;
                  return node.GetInfoEnumW(InfoEnum, FileIndex, IntegerValue, StringValue,
                                           StringValueSize == nullptr ? none : *StringValueSize);
                });
}

uint32_t NListCount(NODE Node, TNodeList List, int64_t* Count) {
  return onNode(Node, args("Node", Node, "List", List, "Count", Count),
                [&](ORX::INode& node) { return node.GetListCount(List, Count); });
}

uint32_t NList(NODE Node, TNodeList List, int64_t Index, char* Entry, size_t& EntrySize) {
  return onNode(Node, args("Node", Node, "List", List, "Index", Index, "Entry", Entry, "EntrySize", &EntrySize),
                [&](ORX::INode& node) { return node.GetList(List, Index, Entry, EntrySize); });
}

uint32_t NListW(NODE Node, TNodeList List, int64_t Index, wchar_t* Entry, size_t& EntrySize) {
  return onNode(Node, args("Node", Node, "List", List, "Index", Index, "Entry", Entry, "EntrySize", &EntrySize),
                [&](ORX::INode& node) { return node.GetListW(List, Index, Entry, EntrySize); });
}

uint32_t NGetAsMemory(NODE Node, int64_t Address, void* pBuffer, int64_t BufferSize) {
  return onObject<orxGenApi::Node>(
      Node, args("Node", Node, "Address", Address, "pBuffer", pBuffer, "BufferSize", BufferSize),
      [&](orxGenApi::Node& node) { return node.GetAsMemory(Address, pBuffer, BufferSize); });
}

uint32_t NSetAsMemory(NODE Node, int64_t Address, const void* pBuffer, int64_t BufferSize) {
  return onObject<orxGenApi::Node>(
      Node, args("Node", Node, "Address", Address, "pBuffer", pBuffer, "BufferSize", BufferSize),
      [&](orxGenApi::Node& node) { return node.SetAsMemory(Address, pBuffer, BufferSize); });
}

uint32_t NGetAsRegisterData(NODE Node, void* pBuffer, int64_t* BufferSize) {
  return onObject<orxGenApi::Node>(Node, args("Node", Node, "pBuffer", pBuffer, "BufferSize", BufferSize),
                                   [&](orxGenApi::Node& node) { return node.GetAsRegisterData(pBuffer, BufferSize); });
}

uint32_t NRegisterUpdate(NODE Node, TNodeUpdate Callback, void* pPrivate, TCallbackHandle* Handle) {
  constexpr int32_t kCallbackType = 0;
  return onNode(Node, args("Node", Node, "Callback", Callback, "pPrivate", pPrivate, "Handle", Handle),
                [&](ORX::INode& node) { return node.RegisterUpdate(kCallbackType, Callback, pPrivate, Handle); });
}

uint32_t NDeregisterUpdate(NODE Node, TCallbackHandle Handle) {
  return onNode(Node, args("Node", Node, "Handle", Handle),
                [&](ORX::INode& node) { return node.DeregisterUpdate(Handle); });
}

uint32_t NInvalidate(NODE Node) {
  return onNode(Node, args("Node", Node), [](ORX::INode& node) { return node.Invalidate(); });
}

uint32_t NGetVerifyMode(NODE Node, TVerifyMode* AccessMode) {
  return onNode(Node, args("Node", Node, "AccessMode", AccessMode),
                [&](ORX::INode& node) { return node.GetVerifyMode(AccessMode); });
}

uint32_t NSetVerifyMode(NODE Node, TVerifyMode AccessMode) {
  return onNode(Node, args("Node", Node, "AccessMode", AccessMode),
                [&](ORX::INode& node) { return node.SetVerifyMode(AccessMode); });
}

}  // extern "C"
