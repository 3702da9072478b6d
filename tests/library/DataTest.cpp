// Event messages and chunks of image buffers.
#include <array>

#include "Base/GCException.h"
#include "Device.h"
#include "GenApi/GenApi.h"
#include "GenApi/IDestroy.h"
#include "GenericChunkAdapter.h"
#include "GenericEventAdapter.h"
#include "NodeMap.h"

namespace {

std::string portRegister(const std::string& name, const std::string& port) {
  return "<IntReg Name=\"" + name + "\"><Address>0</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>" +
         port + "</pPort><Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>";
}

// Ports with IDs of four bytes (twice), one byte; a register on each.
const std::string kChunkNodes =
    R"(<Port Name="Wide"><ChunkID>0000001A</ChunkID></Port><Port Name="WideToo"><ChunkID>0000001a</ChunkID></Port>
       <Port Name="Narrow"><ChunkID>34</ChunkID></Port>)" +
    portRegister("WideValue", "Wide") + portRegister("WideTooValue", "WideToo") + portRegister("NarrowValue", "Narrow");

class Chunks : public testing::Test {
 protected:
  int64_t value(const char* name) { return device.value(name); }
  uint32_t attach(const char* id, int64_t offset = 0, int64_t length = 4) {
    const TChunkDataEx data{id, reinterpret_cast<uint8_t*>(buffer.data()), offset, length};
    return NMAttachChunkEx(device.map, &data);
  }
  uint8_t* bytes() { return reinterpret_cast<uint8_t*>(buffer.data()); }
  Device device{kChunkNodes};
  std::array<int32_t, 4> buffer{10, 20, 30, 40};
};

TEST_F(Chunks, EveryPortWithTheIdIsAttachedHoweverTheTextIsWritten) {
  for (const char* id : {"1a", "00001A", "0000000000000000001A"}) {
    EXPECT_OK(NMDetachAllChunks(device.map));
    EXPECT_EQ(value("WideValue"), -1);
    EXPECT_OK(attach(id, 4));
    EXPECT_OK(NMUpdateChunks(device.map, nullptr));
    EXPECT_EQ(value("WideValue"), 20) << id;
    EXPECT_EQ(value("WideTooValue"), 20) << id;
    EXPECT_EQ(value("NarrowValue"), -1) << id;
  }
  const TChunkData numeric{0x1a, bytes(), 8, 4}, tooLarge{0x10000001a, bytes(), 0, 4};
  EXPECT_OK(NMAttachChunk(device.map, &numeric));
  EXPECT_OK(NMAttachChunk(device.map, &tooLarge));
  EXPECT_EQ(value("WideValue"), 30);
  const TChunkDataExW wide{L"34", bytes(), 12, 4};
  EXPECT_OK(NMAttachChunkExW(device.map, &wide));
  EXPECT_EQ(value("NarrowValue"), 40);
  // That nothing has such an ID is no error.
  EXPECT_OK(NMDetachAllChunks(device.map));
  for (const char* id : {"0x1A", " 1a", "-1a", "123456789", "10000001a", "1ag", "1234", "", "g"}) {
    EXPECT_OK(attach(id));
    EXPECT_EQ(value("WideValue"), -1) << id;
    EXPECT_EQ(value("NarrowValue"), -1) << id;
  }
}

TEST_F(Chunks, WhatWasReadGoesWithTheChunkAndWithTheDescription) {
  const std::string nodes =
      "<Port Name='Plain'><ChunkID>1A</ChunkID></Port><Port Name='Copied'><ChunkID>1B</ChunkID>"
      "<CacheChunkData>Yes</CacheChunkData></Port>" +
      portRegister("Head", "Plain") + portRegister("Kept", "Copied");
  device.load(description(nodes));
  ASSERT_OK(attach("1a", 0, 8));
  ASSERT_OK(attach("1b", 8, 4));
  EXPECT_EQ(value("Head"), 10);
  EXPECT_EQ(value("Kept"), 30);
  for (const int64_t length : {int64_t{-1}, INT64_MIN}) {
    EXPECT_EQ(attach("1a", 1, length), OXGENAPI_E_UNSPECIFIED);
    EXPECT_EQ(value("Head"), 10) << "the former chunk stays";
  }
  const NODE old = device.node("Head");
  ASSERT_OK(NMDetachAllChunks(device.map));
  EXPECT_EQ(value("Head"), -1) << "read before, but the buffer is the caller's again";
  EXPECT_EQ(value("Kept"), 30) << "copied";
  ASSERT_OK(attach("1a", 0, 8));
  device.load(description(nodes));
  int64_t stale = -1;
  EXPECT_NE(NGetAsInteger(old, &stale), 0u) << "a node of the former description finds no chunk";
  EXPECT_OK(NMUpdateChunks(device.map, bytes())) << "nothing is attached, nothing moves";
  for (const char* name : {"Head", "Kept"}) EXPECT_EQ(value(name), -1) << name;
}

TEST_F(Chunks, AListStopsAtItsFirstFailureAndKeepsWhatWasAttached) {
  const TChunkDataEx list[] = {{"1a", bytes(), 0, 4}, {"34", bytes(), 4, 4}, {"1a", bytes(), 8, 0}};
  int updates = 0;
  TCallbackHandle registration = 0;
  ASSERT_OK(NRegisterUpdate(
      device.node("WideValue"), [](NODE, void* count) { ++*static_cast<int*>(count); }, &updates, &registration));
  EXPECT_OK(attach("1a"));
  EXPECT_EQ(updates, 0) << "attaching alone is silent";
  EXPECT_OK(NMAttachChunkListEx(device.map, list, 2));
  EXPECT_EQ(updates, 1);
  EXPECT_EQ(value("WideValue"), 10);
  buffer[0] = 11;
  EXPECT_FAILS(NMAttachChunkListEx(device.map, list, 3), OXGENAPI_E_INVALID_ARGUMENT, "Chunk data buffer invalid");
  EXPECT_EQ(value("WideValue"), 11);
  EXPECT_EQ(value("NarrowValue"), 20);
  EXPECT_OK(NMAttachChunkList(device.map, nullptr, 0));

  // The next buffer.
  std::array<int32_t, 4> next{50, 60, 70, 80};
  EXPECT_OK(NMUpdateChunks(device.map, next.data()));
  EXPECT_EQ(value("WideValue"), 50);
  EXPECT_EQ(value("NarrowValue"), 60);
}

const std::string kEventNodes =
    "<Port Name=\"Exposure\"><EventID>1234</EventID></Port>"
    "<Port Name=\"Other\"><EventID>9001</EventID></Port>" +
    portRegister("ExposureValue", "Exposure") + portRegister("OtherValue", "Other");

class Events : public testing::Test {
 protected:
  int64_t value(const char* name) { return device.value(name); }
  Device device{kEventNodes};
  uint8_t payload[4] = {7, 0, 0, 0};
};

TEST_F(Events, AMessageReachesTheNodesWithItsId) {
  EXPECT_EQ(value("ExposureValue"), -1);
  const TEventData numeric{0x1234, payload, 4};
  EXPECT_OK(NMDeliverEvent(device.map, &numeric));
  EXPECT_EQ(value("ExposureValue"), 7);
  EXPECT_EQ(value("OtherValue"), -1);
  payload[0] = 8;
  const TEventDataEx narrow{"001234", payload, 4};
  EXPECT_OK(NMDeliverEventEx(device.map, &narrow));
  EXPECT_EQ(value("ExposureValue"), 8);
  const TEventDataExW wide{L"9001", payload, 4};
  EXPECT_OK(NMDeliverEventExW(device.map, &wide));
  EXPECT_EQ(value("OtherValue"), 8);
  const TEventData nobody{0x77, payload, 4}, cut{0x1234, payload, 0x100000004};
  EXPECT_OK(NMDeliverEvent(device.map, &nobody));
  EXPECT_OK(NMDeliverEvent(device.map, &cut)) << "with the low 32 bits of its size";
}

TEST_F(Events, BadMessagesAreRefused) {
  Device empty;
  const TEventData noPayload{0x1234, nullptr, 4}, noBytes{0x1234, payload, 0}, good{0x1234, payload, 4};
  for (const TEventData* bad : {&noPayload, &noBytes})
    EXPECT_FAILS(NMDeliverEvent(empty.map, bad), OXGENAPI_E_INVALID_ARGUMENT, "Event data buffer invalid");
  EXPECT_FAILS(NMDeliverEvent(empty.map, &good), OXGENAPI_E_INVALID_STATE, "No NodeMap object available");
  for (const char* id : {"0x1234", static_cast<const char*>(nullptr)}) {
    const TEventDataEx named{id, payload, 4};
    EXPECT_EQ(NMDeliverEventEx(device.map, &named), OXGENAPI_E_UNSPECIFIED);
  }
}

TEST_F(Events, ACallbackMayLoadAnewWhileItsEventIsDelivered) {
  TCallbackHandle handle = 0;
  ASSERT_OK(NRegisterUpdate(
      device.node("ExposureValue"),
      [](NODE, void* self) { static_cast<Device*>(self)->load(description(kEventNodes)); }, &device, &handle));
  const TEventData message{0x1234, payload, 4};
  EXPECT_OK(NMDeliverEvent(device.map, &message));
  EXPECT_EQ(value("ExposureValue"), -1);  // a node of the new description, which saw no event
  EXPECT_OK(NMDeliverEvent(device.map, &message));
  EXPECT_EQ(value("ExposureValue"), 7);
}

// The digits that receivers compare; the leading zero follows from the number of bits.
TEST(NumericId, KeepsItsLeadingZeroRule) {
  std::string texts;
  for (const uint64_t id :
       {0x0, 0x1, 0x2, 0x3, 0x4, 0x8, 0xf, 0x10, 0x11, 0x20, 0xff, 0x1000, 0x1001, 0x1234, 0x9000, 0x9001, 0xffff})
    (texts += orxGenApi::numericIdText(id).data()) += ' ';
  EXPECT_EQ(texts, "00 01 02 3 4 08 f 10 011 020 ff 1000 01001 01234 9000 9001 ffff ");
  EXPECT_STREQ(orxGenApi::numericIdText(1ull << 63).data(), "08000000000000000");
  EXPECT_STREQ(orxGenApi::numericIdText(~0ull).data(), "0ffffffffffffffff");
}

using GENAPI_NAMESPACE::CNodeMapFactory;
using GENICAM_NAMESPACE::LogicalErrorException;

TEST(GenericAdapters, KnowNoLayoutAndEndWithTheirNodeMap) {
  GENAPI_NAMESPACE::INodeMap* map = CNodeMapFactory(description(kChunkNodes + kEventNodes).c_str()).CreateNodeMap();
  uint8_t byte = 0;
  {
    orxGenApi::CGenericChunkAdapter chunks(map);
    GENAPI_NAMESPACE::AttachStatistics_t statistics{1, 2, 3};
    EXPECT_FALSE(chunks.CheckBufferLayout(&byte, 1));
    EXPECT_THROW(chunks.AttachBuffer(&byte, 1, &statistics), LogicalErrorException);
    EXPECT_EQ(statistics.NumChunkPorts + statistics.NumChunks + statistics.NumAttachedChunks, 0);
    chunks.DetachNodeMap();
    EXPECT_THROW(chunks.UpdateBuffer(nullptr), LogicalErrorException);
    EXPECT_THROW(chunks.AttachChunk("1a", &byte, 0, 1), LogicalErrorException);
    orxGenApi::GenericEventAdapter events(map);
    EXPECT_EQ(events.portCount(), 2u);  // one for every node with an event ID
    EXPECT_THROW(events.DeliverMessage(&byte, 1), LogicalErrorException);
    events.DetachNodeMap();
    EXPECT_EQ(events.portCount(), 0u);
  }
  dynamic_cast<GENAPI_NAMESPACE::IDestroy*>(map)->Destroy();
}

// n chunks of n ports whose IDs the description gives; two more have theirs from a node and are asked each time.
TEST(GenericAdapters, AChunkLooksOnlyAtPortsThatCanHaveItsId) {
  for (const uint32_t n : {100u, 200u, 400u}) {
    std::string ports, asked;
    std::vector<std::string> ids;
    for (uint32_t i = 0; i < n; ++i) {
      ids.emplace_back(orxGenApi::numericIdText(0xA000 + i * 7 % n).data());
      ports += "<Port Name='P" + std::to_string(i) + "'><ChunkID>" + ids.back() + "</ChunkID></Port>";
      if (i % 60 != 1 || i > 100) continue;
      ports += "<Port Name='Asked" + std::to_string(i) + "'><pChunkID>Id" + std::to_string(i) + "</pChunkID></Port>";
      asked += "<String Name='Id" + std::to_string(i) + "'><Value>" + ids.back() + "</Value></String>";
    }
    GENAPI_NAMESPACE::INodeMap* map = CNodeMapFactory(description(ports + asked).c_str()).CreateNodeMap();
    const auto startOf = [&](const std::string& name) {
      const GENAPI_NAMESPACE::CPortPtr port(map->GetNode(name.c_str()));
      uint64_t start = 0;
      port->Read(&start, GENAPI_NAMESPACE::CHUNK_BASE_ADDRESS_REGISTER, sizeof start);
      return start;
    };
    {
      std::vector<uint8_t> bytes(n);
      orxGenApi::CGenericChunkAdapter chunks(map);
      for (uint32_t i = 0; i < n; ++i) chunks.AttachChunk(ids[i].c_str(), bytes.data(), i, 1);
      EXPECT_EQ(chunks.portsAsked(), 3 * n) << "each chunk its own port and the two";
      const auto first = reinterpret_cast<uintptr_t>(bytes.data());
      for (uint32_t i = 0; i < n; ++i) ASSERT_EQ(startOf("P" + std::to_string(i)), first + i);
      EXPECT_EQ(startOf("Asked1"), first + 1);
      EXPECT_EQ(startOf("Asked61"), first + 61);
    }
    dynamic_cast<GENAPI_NAMESPACE::IDestroy*>(map)->Destroy();
  }
}

}  // namespace
