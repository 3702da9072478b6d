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
}

TEST_F(Chunks, IdsThatMatchNothingAreNoError) {
  for (const char* id : {"0x1A", " 1a", "-1a", "123456789", "10000001a", "1234", "", "g"}) {
    EXPECT_OK(attach(id));
    EXPECT_EQ(value("WideValue"), -1) << id;
    EXPECT_EQ(value("NarrowValue"), -1) << id;
  }
}

TEST_F(Chunks, NumericAndWideIdsGoTheSameWay) {
  const TChunkData numeric{0x1a, bytes(), 8, 4};
  EXPECT_OK(NMAttachChunk(device.map, &numeric));
  EXPECT_EQ(value("WideValue"), 30);
  const TChunkDataExW wide{L"34", bytes(), 12, 4};
  EXPECT_OK(NMAttachChunkExW(device.map, &wide));
  EXPECT_EQ(value("NarrowValue"), 40);
  const TChunkData tooLarge{0x10000001a, bytes(), 0, 4};
  EXPECT_OK(NMAttachChunk(device.map, &tooLarge));
  EXPECT_EQ(value("WideValue"), 30);
}

TEST_F(Chunks, BadBuffersAreRefusedBeforeTheStateIsLookedAt) {
  Device empty;
  const TChunkData cases[] = {{1, bytes(), 0, 0}, {1, bytes(), -1, 4}, {1, nullptr, 0, 4}};
  for (const TChunkData& data : cases) {
    EXPECT_FAILS(NMAttachChunk(empty.map, &data), OXGENAPI_E_INVALID_ARGUMENT, "Chunk data buffer invalid");
  }
}

TEST_F(Chunks, ANullIdFailsOnlyWhereThereArePorts) {
  EXPECT_FAILS(attach(nullptr), OXGENAPI_E_UNSPECIFIED, "Unspecified error");
  const TChunkDataExW wide{nullptr, bytes(), 0, 4};
  EXPECT_FAILS(NMAttachChunkExW(device.map, &wide), OXGENAPI_E_UNSPECIFIED, "Unspecified error");
  device.load(description(""));
  EXPECT_OK(attach(nullptr));
  EXPECT_OK(NMAttachChunkExW(device.map, &wide));
}

TEST_F(Chunks, AListStopsAtItsFirstFailureAndKeepsWhatWasAttached) {
  const TChunkDataEx list[] = {{"1a", bytes(), 0, 4}, {"34", bytes(), 4, 4}, {"1a", bytes(), 8, 0}};
  EXPECT_OK(NMAttachChunkListEx(device.map, list, 2));
  EXPECT_EQ(value("WideValue"), 10);
  buffer[0] = 11;
  EXPECT_FAILS(NMAttachChunkListEx(device.map, list, 3), OXGENAPI_E_INVALID_ARGUMENT, "Chunk data buffer invalid");
  EXPECT_EQ(value("WideValue"), 11);
  EXPECT_EQ(value("NarrowValue"), 20);
  EXPECT_OK(NMAttachChunkList(device.map, nullptr, 0));
}

TEST_F(Chunks, UpdateMovesEveryChunkToTheNextBuffer) {
  ASSERT_OK(attach("1a", 4));
  EXPECT_EQ(value("WideValue"), 20);
  std::array<int32_t, 4> next{50, 60, 70, 80};
  EXPECT_OK(NMUpdateChunks(device.map, next.data()));
  EXPECT_EQ(value("WideValue"), 60);
  EXPECT_OK(NMDetachAllChunks(device.map));
  EXPECT_EQ(value("WideValue"), -1);
  EXPECT_OK(NMUpdateChunks(device.map, nullptr));
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
  const TEventData nobody{0x77, payload, 4};
  EXPECT_OK(NMDeliverEvent(device.map, &nobody));
}

TEST_F(Events, BadMessagesAreRefused) {
  Device empty;
  const TEventData noPayload{0x1234, nullptr, 4};
  const TEventData noBytes{0x1234, payload, 0};
  const TEventData good{0x1234, payload, 4};
  EXPECT_FAILS(NMDeliverEvent(empty.map, &noPayload), OXGENAPI_E_INVALID_ARGUMENT, "Event data buffer invalid");
  EXPECT_FAILS(NMDeliverEvent(empty.map, &noBytes), OXGENAPI_E_INVALID_ARGUMENT, "Event data buffer invalid");
  EXPECT_FAILS(NMDeliverEvent(empty.map, &good), OXGENAPI_E_INVALID_STATE, "No NodeMap object available");
  // Only 32 bits of the size are passed on.
  const TEventData cut{0x1234, payload, 0x100000000};
  EXPECT_OK(NMDeliverEvent(device.map, &cut));
  EXPECT_EQ(value("ExposureValue"), -1);
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
  const std::pair<uint64_t, const char*> cases[] = {{0x0, "00"},
                                                    {0x1, "01"},
                                                    {0x2, "02"},
                                                    {0x3, "3"},
                                                    {0x4, "4"},
                                                    {0x8, "08"},
                                                    {0xf, "f"},
                                                    {0x10, "10"},
                                                    {0x11, "011"},
                                                    {0x20, "020"},
                                                    {0xff, "ff"},
                                                    {0x1000, "1000"},
                                                    {0x1001, "01001"},
                                                    {0x1234, "01234"},
                                                    {0x9000, "9000"},
                                                    {0x9001, "9001"},
                                                    {0xffff, "ffff"},
                                                    {1ull << 63, "08000000000000000"},
                                                    {~0ull, "0ffffffffffffffff"}};
  for (const auto& [id, text] : cases) EXPECT_STREQ(orxGenApi::numericIdText(id).data(), text);
}

struct EngineMap {
  explicit EngineMap(const std::string& nodes) {
    const std::string text = description(nodes);
    map =
        GENAPI_NAMESPACE::CNodeMapFactory(GENAPI_NAMESPACE::ContentType_Auto, text.data(), text.size()).CreateNodeMap();
  }
  ~EngineMap() { dynamic_cast<GENAPI_NAMESPACE::IDestroy*>(map)->Destroy(); }
  GENAPI_NAMESPACE::INodeMap* map;
};

TEST(GenericChunkAdapter, KnowsNoBufferLayout) {
  EngineMap engine(kChunkNodes);
  orxGenApi::CGenericChunkAdapter adapter(engine.map);
  GENAPI_NAMESPACE::AttachStatistics_t statistics{1, 2, 3};
  uint8_t byte = 0;
  EXPECT_FALSE(adapter.CheckBufferLayout(&byte, 1));
  EXPECT_THROW(adapter.AttachBuffer(&byte, 1, &statistics), GENICAM_NAMESPACE::LogicalErrorException);
  EXPECT_EQ(statistics.NumChunkPorts + statistics.NumChunks + statistics.NumAttachedChunks, 0);
  adapter.DetachNodeMap();
  EXPECT_THROW(adapter.UpdateBuffer(nullptr), GENICAM_NAMESPACE::LogicalErrorException);
  EXPECT_THROW(adapter.AttachChunk("1a", &byte, 0, 1), GENICAM_NAMESPACE::LogicalErrorException);
}

TEST(GenericEventAdapter, OwnsAPortForEveryNodeWithAnEventId) {
  EngineMap engine(kEventNodes);
  orxGenApi::GenericEventAdapter adapter(engine.map);
  EXPECT_EQ(adapter.portCount(), 2u);
  const uint8_t byte = 0;
  EXPECT_THROW(adapter.DeliverMessage(&byte, 1), GENICAM_NAMESPACE::LogicalErrorException);
  adapter.DetachNodeMap();
  EXPECT_EQ(adapter.portCount(), 0u);
}

}  // namespace
