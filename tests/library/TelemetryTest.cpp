// What a failure tells the telemetry library: one record, before the last error is set, with the arguments of the call
// or the name of the object and the operation.
#include <cstdio>
#include <functional>
#include <nlohmann/json.hpp>

#include "Device.h"
#include "Interposed.h"
#include "Records.h"

namespace {

std::string hexadecimal(const void* pointer) {
  char text[32];
  std::snprintf(text, sizeof text, "%llx", static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(pointer)));
  return text;
}

TEST(CallTelemetry, AnInvalidHandleShowsTheArguments) {
  int64_t value = 0;
  NODE node{};
  size_t size = 0;
  char buffer[4];
  const TEventData event{};
  const TChunkData chunks[1] = {};
  void* const bad = &value;
  const struct {
    std::function<uint32_t()> call;
    std::string text;
  } cases[] = {
      {[] { return NInvalidate(nullptr); }, "(Pv Node=<null>): Invalid NODE handle"},
      {[&] { return NInvalidate(static_cast<NODE>(bad)); }, "(Pv Node=@" + hexadecimal(bad) + "): Invalid NODE handle"},
      {[&] { return NGetAsInteger(nullptr, &value); },
       "(Pv Node=<null>,Pl Value=0x" + hexadecimal(&value) + "): Invalid NODE handle"},
      {[&] { return NInfoAsString(nullptr, NI_Max, nullptr, size); },
       "(Pv Node=<null>,9TNodeInfo Info=3,Pc Value=<null>,Pm InfoSize=0x" + hexadecimal(&size) +
           "): Invalid NODE handle"},
      {[] { return NSetAsString(nullptr, "ab"); }, "(Pv Node=<null>,PKc StringValue=\"ab\"): Invalid NODE handle"},
      {[] { return NSetAsStringW(nullptr, L"\u00e9"); },
       "(Pv Node=<null>,PKw StringValue=\"\u00e9\"): Invalid NODE handle"},
      {[] { return NSetAsString(nullptr, nullptr); }, "(Pv Node=<null>,PKc StringValue=<null>): Invalid NODE handle"},
      {[] { return NSetAsFloat(nullptr, 2.5); }, "(Pv Node=<null>,d Value=2.5): Invalid NODE handle"},
      {[] { return NSetAsBoolean(nullptr, true); }, "(Pv Node=<null>,b Value=true): Invalid NODE handle"},
      {[] { return NMPollNodes(nullptr, -5); }, "(Pv NodeMap=<null>,i DeltaMS=-5): Invalid NODEMAP handle"},
      {[&] { return NMGetNode(nullptr, "ab", node); },
       "(Pv NodeMap=<null>,PKc NodeName=\"ab\",PPv Node=0x" + hexadecimal(&node) + "): Invalid NODEMAP handle"},
      {[&] { return NMDeliverEvent(nullptr, &event); },
       "(Pv hNodeMap=<null>,10TEventData Data = <...>): Invalid NODEMAP handle"},
      {[&] { return NMAttachChunkList(nullptr, chunks, 1); },
       "(Pv hNodeMap=<null>,PK10TChunkData DataList=0x" + hexadecimal(chunks) + ",m Length=1): Invalid NODEMAP handle"},
      {[] { return NMAttachChunkList(nullptr, nullptr, 1); },
       "(Pv hNodeMap=<null>,PK10TChunkData DataList=<null>,m Length=1): Invalid DataList"},
      {[] { return NMLoadXML(nullptr, 3); }, "(Pv NodeMap=<null>): Unspecified error"},
      {[&] { return NGetAsMemory(nullptr, -1, buffer, 4); },
       "(Pv Node=<null>,l Address=-1,Pv pBuffer=0x" + hexadecimal(buffer) + ",l BufferSize=4): Invalid NODE handle"},
  };
  for (const auto& c : cases) {
    Records records;
    EXPECT_NE(c.call(), 0u);
    EXPECT_EQ(records.texts(), std::vector<std::string>{c.text});
  }
}

TEST(CallTelemetry, ARecordNamesTheModuleAndTheCodeAndCutsLongTexts) {
  Device device(integerRegister("Width", 0));
  const NODE width = device.node("Width");
  Records records;
  EXPECT_OK(NSetAsInteger(width, 3));  // sends nothing
  EXPECT_NE(NMLoadXMLString(nullptr, std::string(100'000, 'x').c_str()), 0u);
  ASSERT_EQ(records.lines().size(), 1u);
  EXPECT_LT(records.texts()[0].size(), 400u);
  const auto line = nlohmann::json::parse(records.lines()[0]);
  EXPECT_EQ(line["module"], "OxGenApi");
  EXPECT_EQ(line["version"], "3.6.0");
  EXPECT_EQ(line["level"], 3);
  EXPECT_EQ(line["attributes"]["Code"], 0x8000001du);
}

TEST(CallTelemetry, WhatSendingThrowsChangesNothing) {
  interposed::throwWhenSending(true);
  EXPECT_FAILS(NInvalidate(nullptr), OXGENAPI_E_INVALID_HANDLE, "Invalid NODE handle");
  interposed::throwWhenSending(false);
}

TEST(CallTelemetry, AFailedOperationShowsItsObjectAndTag) {
  Device device(integerRegister("Width", 0) + "<String Name=\"Label\"><Value>x</Value></String>");
  Device empty;
  NODE none = nullptr;
  bool flag = false;
  const NODE width = device.node("Width");
  const NODE label = device.node("Label");
  const struct {
    std::function<uint32_t()> call;
    const char* text;
  } cases[] = {
      {[&] { return NMGetNode(empty.map, "Width", none); }, "<nullptr>-NodeMap::GetNode: No NodeMap object available"},
      {[&] { return NMGetNode(device.map, "Height", none); },
       "Device-NodeMap::GetNode: Node 'Height' not present in NodeMap"},
      {[&] { return NGetAsBoolean(label, &flag); },
       "Label::GetAsBoolean: Value of this feature can not be returned as boolean"},
      {[&] { return NRegisterUpdate(width, nullptr, nullptr, nullptr); },
       "Width::RegisterCallback: Callback function pointer must be set"},
      {[&] { return NMUpdateChunks(empty.map, nullptr); },
       "<nullptr>-NodeMap::UpdateChunks: No NodeMap object available"},
  };
  for (const auto& c : cases) {
    Records records;
    EXPECT_NE(c.call(), 0u);
    EXPECT_EQ(records.texts(), std::vector<std::string>{c.text});
  }
}

}  // namespace
