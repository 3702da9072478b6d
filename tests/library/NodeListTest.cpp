// Relations of nodes, and raw bytes below them.
#include "Device.h"

namespace {

const char* const kNodes = R"(
  <Category Name="Group"><pFeature>Gain</pFeature><pFeature>Selector</pFeature></Category>
  <Integer Name="Gain"><pValue>GainReg</pValue></Integer>
  <Enumeration Name="Selector"><EnumEntry Name="X"><Value>0</Value></EnumEntry>
    <EnumEntry Name="Y"><Value>1</Value></EnumEntry><Value>0</Value><pSelected>Gain</pSelected></Enumeration>
  <Integer Name="Alone"><Value>1</Value></Integer>
  <Register Name="Block"><Address>8</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></Register>)";

class NodeList : public testing::Test {
 protected:
  std::vector<std::string> names(const char* name, TNodeList list) {
    const NODE node = device.node(name);
    int64_t count = -1;
    EXPECT_OK(NListCount(node, list, &count)) << name;
    std::vector<std::string> result;
    for (int64_t i = 0; i < count; ++i)
      result.push_back(textOf([&](char* buffer, size_t& size) { return NList(node, list, i, buffer, size); }));
    return result;
  }
  // Both calls refuse; their texts may differ.
  void expectRefused(const char* name, uint32_t list, uint32_t code, const char* countText, const char* listText) {
    int64_t count = -1;
    size_t size = 0;
    const auto type = static_cast<TNodeList>(list);
    EXPECT_FAILS(NListCount(device.node(name), type, &count), code, countText);
    EXPECT_FAILS(NList(device.node(name), type, 0, nullptr, size), code, listText);
    EXPECT_EQ(count, -1);
  }
  Device device{integerRegister("GainReg", 0) + kNodes, "", 256};
};

using Names = std::vector<std::string>;

TEST_F(NodeList, ListsFollowTheRelation) {
  EXPECT_EQ(names("Group", NL_Children), (Names{"Gain", "Selector"}));  // a category's features
  EXPECT_EQ(names("Gain", NL_Children), (Names{"GainReg"}));            // reading children of any other node
  EXPECT_EQ(names("Selector", NL_EnumEntries).size(), 2u);
  EXPECT_EQ(names("Selector", NL_SelectedFeatures), (Names{"Gain"}));
  EXPECT_EQ(names("Gain", NL_SelectingFeatures), (Names{"Selector"}));
  EXPECT_EQ(names("Alone", NL_SelectingFeatures), Names{});
}

TEST_F(NodeList, WhatANodeIsNotIsRefused) {
  expectRefused("Gain", NL_SelectedFeatures, OXGENAPI_E_INVALID_HANDLE, "This is not a selected node",
                "This is not a selected node");
  expectRefused("Gain", NL_EnumEntries, OXGENAPI_E_INVALID_HANDLE, "This is not an IEnum node",
                "This is not an IEnum node");
  expectRefused("Device", NL_EnumEntries, OXGENAPI_E_INVALID_HANDLE, "This is not an IEnum node",
                "This is not an IEnum node");
  expectRefused("Gain", 4, OXGENAPI_E_NOT_SUPPORTED, "Given list type is unknown", "Unknown list type");
}

TEST_F(NodeList, IndicesOutsideAreRefused) {
  size_t size = 0;
  wchar_t wide[16];
  char narrow[8] = "old";
  for (const int64_t index : {int64_t{2}, int64_t{-1}, INT64_MAX, INT64_MIN}) {
    for (const TNodeList list : {NL_Children, NL_EnumEntries}) {
      size = sizeof narrow;
      EXPECT_FAILS(NList(device.node(list == NL_Children ? "Group" : "Selector"), list, index, narrow, size),
                   OXGENAPI_E_INVALID_ARGUMENT, ("Index out of range: 0 <= " + std::to_string(index) + " < 2").c_str());
      EXPECT_STREQ(narrow, "");
      EXPECT_EQ(size, sizeof narrow);
    }
  }
  EXPECT_FAILS(NList(device.node("Alone"), NL_Children, 0, nullptr, size), OXGENAPI_E_INVALID_ARGUMENT,
               "Index out of range: 0 <= 0 < 0");
  EXPECT_EQ(size, 1u);
  size = 5;
  EXPECT_OK(NList(device.node("Group"), NL_Children, 1, narrow, size));
  EXPECT_STREQ(narrow, "Sele");
  size = 16;
  EXPECT_OK(NListW(device.node("Group"), NL_Children, 1, wide, size));
  EXPECT_EQ(std::wstring(wide), L"Selector");
}

TEST_F(NodeList, PortsReadAndWriteBytesAsTheyAre) {
  const NODE port = device.node("Device");
  const uint8_t written[3] = {1, 2, 0xff};
  uint8_t read[3] = {};
  EXPECT_OK(NSetAsMemory(port, 100, written, 3));
  EXPECT_EQ(device.memory[102], 0xff);
  EXPECT_OK(NGetAsMemory(port, 100, read, 3));
  EXPECT_EQ(std::memcmp(read, written, 3), 0);

  EXPECT_FAILS(NGetAsMemory(port, 0, nullptr, 3), OXGENAPI_E_INVALID_ARGUMENT, "Invalid buffer");
  EXPECT_FAILS(NSetAsMemory(port, 0, written, 0), OXGENAPI_E_INVALID_ARGUMENT, "Invalid buffer");
  for (const char* name : {"Gain", "GainReg", "Block", "Group", "Selector"}) {  // before the buffer is looked at
    EXPECT_FAILS(NGetAsMemory(device.node(name), 0, nullptr, 0), OXGENAPI_E_NOT_SUPPORTED,
                 "Only port nodes support memory access");
    EXPECT_FAILS(NSetAsMemory(device.node(name), 0, nullptr, 0), OXGENAPI_E_NOT_SUPPORTED,
                 "Only port nodes support memory access");
  }
  // A refused write has the code of a refused read.
  EXPECT_FAILS(NGetAsMemory(port, 1000, read, 3), OXGENAPI_E_NOT_READABLE, "Address 0x3e8 is not readable");
  EXPECT_FAILS(NSetAsMemory(port, -2, read, 3), OXGENAPI_E_NOT_READABLE, "Address 0xfffffffffffffffe is not writable");
  const int accesses = device.reads + device.writes;
  for (const int64_t size : {int64_t{-1}, INT64_MIN}) {
    const std::string text = "Device: length " + std::to_string(size) + " is negative";
    EXPECT_FAILS(NGetAsMemory(port, 0, read, size), OXGENAPI_E_UNSPECIFIED, text.c_str());
    EXPECT_FAILS(NSetAsMemory(port, 0, read, size), OXGENAPI_E_UNSPECIFIED, text.c_str());
  }
  EXPECT_FAILS(NGetAsMemory(port, 0, read, 257), OXGENAPI_E_NOT_READABLE, "Address 0x0 is not readable");
  EXPECT_EQ(device.reads + device.writes, accesses);
  EXPECT_OK(NMConnectPort(device.map, nullptr, nullptr, nullptr, nullptr));
  EXPECT_FAILS(NGetAsMemory(port, 0, read, 3), OXGENAPI_E_NOT_READABLE, "Read operation not supported");
  EXPECT_FAILS(NSetAsMemory(port, 0, read, 3), OXGENAPI_E_NOT_READABLE, "Write operation not supported");
}

TEST_F(NodeList, RegistersGiveTheirBytes) {
  const NODE block = device.node("Block");
  std::memcpy(device.memory.data() + 8, "\x01\x02\x03\x04", 4);
  int64_t size = 0;
  EXPECT_OK(NGetAsRegisterData(block, nullptr, &size));
  EXPECT_EQ(size, 4);
  EXPECT_EQ(device.reads, 0);
  uint8_t bytes[4] = {};
  EXPECT_OK(NGetAsRegisterData(block, bytes, &size));
  EXPECT_EQ(std::memcmp(bytes, "\x01\x02\x03\x04", 4), 0);
  for (size = -1; size <= 5; size += 6) {
    EXPECT_EQ(NGetAsRegisterData(block, bytes, &size), OXGENAPI_E_UNSPECIFIED) << size;
    EXPECT_NE(lastErrorText().find("Block: "), std::string::npos) << lastErrorText();
  }
  size = 2;
  bytes[2] = 77;
  EXPECT_OK(NGetAsRegisterData(block, bytes, &size));
  EXPECT_EQ(bytes[2], 77);
  for (const char* name : {"GainReg", "Gain", "Device", "Group"}) {  // an integer register counts as an integer
    EXPECT_FAILS(NGetAsRegisterData(device.node(name), nullptr, &size), OXGENAPI_E_NOT_SUPPORTED,
                 "The node does not implement the IRegister interface");
  }
}

}  // namespace
