// Chunk data: ports over the client's buffer.
#include <gmock/gmock.h>

#include <array>

#include "genapi/TestNodeMap.h"

namespace {

using namespace GENAPI_NAMESPACE;
using namespace GENICAM_NAMESPACE;
using testing::HasSubstr;

class Adapter : public CChunkAdapter {
 public:
  explicit Adapter(INodeMap* map = nullptr, int64_t limit = -1) : CChunkAdapter(map, limit) {}
  bool CheckBufferLayout(uint8_t*, int64_t) override { return false; }
  void AttachBuffer(uint8_t*, int64_t, AttachStatistics_t*) override {}
  const std::vector<CChunkPort*>* ports() const { return m_ppChunkPorts; }
  CChunkPort& port(size_t index) const { return *m_ppChunkPorts->at(index); }
};

std::string reg(const std::string& name, const std::string& port, int64_t address, int bytes) {
  return "<IntReg Name=\"" + name + "\"><Address>" + std::to_string(address) + "</Address><Length>" +
         std::to_string(bytes) + "</Length><AccessMode>RW</AccessMode><pPort>" + port +
         "</pPort><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>";
}

const std::string kTwoPorts = R"(
  <Port Name="Gain"><ChunkID>9efc2cdb</ChunkID></Port>
  <Port Name="Kept"><ChunkID>0000001a</ChunkID><CacheChunkData>Yes</CacheChunkData></Port>
  <Port Name="Device"/>)" + reg("First", "Gain", 0, 2) +
                              reg("Last", "Gain", -2, 2) + reg("Behind", "Gain", 8, 4) +
                              reg("KeptValue", "Kept", 0, 4) +
                              R"(<IntSwissKnife Name="Both"><pVariable Name="A">First</pVariable>
                              <pVariable Name="B">KeptValue</pVariable><Formula>A + B</Formula></IntSwissKnife>)";

TEST(ChunkPort, ServesTheChunkAndPseudoRegistersAndNothingElse) {
  std::array<uint8_t, 16> buffer{0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 99};
  CChunkPort port;
  uint8_t bytes[8] = {};
  EXPECT_EQ(port.GetAccessMode(), NA);
  EXPECT_THAT(thrown<RuntimeException>([&] { port.Read(bytes, 0, 1); }), HasSubstr("no chunk is attached"));
  port.AttachChunk(buffer.data(), 2, 8, true);
  EXPECT_EQ(port.GetAccessMode(), RW);

  const struct {
    int64_t address, length;
    int first;  // the byte read first, -1 for an access outside
  } cases[] = {{0, 8, 1},          {7, 1, 8},
               {-1, 1, 8},         {-8, 8, 1},
               {8, 1, -1},         {7, 2, -1},
               {-9, 1, -1},        {-1, 2, -1},
               {INT64_MIN, 1, -1}, {INT64_MAX - 1, 8, -1},
               {0, 9, -1},         {-8, 9, -1},
               {INT64_MAX, 4, -1}, {INT64_MAX - 15, 1, -1}};
  for (const auto& c : cases) {
    uint8_t got[16] = {};
    if (c.first >= 0) {
      port.Read(got, c.address, c.length);
      EXPECT_EQ(got[0], c.first) << c.address;
    } else {
      EXPECT_THROW(port.Read(got, c.address, c.length), AccessException) << c.address << ", " << c.length;
      EXPECT_THROW(port.Write(got, c.address, c.length), AccessException) << c.address << ", " << c.length;
    }
  }
  uint64_t value = 0;
  port.Read(&value, CHUNK_BASE_ADDRESS_REGISTER, 8);
  EXPECT_EQ(value, reinterpret_cast<uintptr_t>(buffer.data() + 2));
  port.Read(&value, CHUNK_LENGTH_REGISTER, 8);
  EXPECT_EQ(value, 8u);
  EXPECT_THROW(port.Write(&value, CHUNK_LENGTH_REGISTER, 8), AccessException);
  EXPECT_THROW(port.Read(bytes, 0, -1), InvalidArgumentException);
  port.Write("\x2a", -1, 1);
  EXPECT_EQ(buffer[9], 42);
  port.DetachChunk();
  EXPECT_EQ(port.GetAccessMode(), NA);
}

TEST(ChunkPort, RefusesImpossibleChunksAndKeepsTheFormerOne) {
  std::array<uint8_t, 8> buffer{7};
  CChunkPort port;
  port.AttachChunk(buffer.data(), 0, 8, false);
  const struct {
    uint8_t* base;
    int64_t offset, length;
  } cases[] = {{nullptr, 0, 1},
               {buffer.data(), -1, 1},
               {buffer.data(), 0, 0},
               {buffer.data(), 0, -5},
               {reinterpret_cast<uint8_t*>(UINTPTR_MAX - 7), 0, 9},
               {reinterpret_cast<uint8_t*>(UINTPTR_MAX / 2 + 9), INT64_MAX, 1}};
  for (const auto& c : cases)
    EXPECT_THROW(port.AttachChunk(c.base, c.offset, c.length, false), InvalidArgumentException) << c.offset;
  EXPECT_THROW(port.UpdateBuffer(nullptr), InvalidArgumentException);
  uint8_t byte = 0;
  port.Read(&byte, 0, 1);
  EXPECT_EQ(byte, 7);
}

TEST(ChunkPort, IdsCompareWithoutLeadingZeros) {
  const struct {
    const char* text;
    int length;
    std::vector<uint8_t> bytes;
    bool matches;
  } cases[] = {
      {"0000001A", 4, {0, 0, 0, 0x1a}, true},
      {"0000001A", 4, {0x1a}, true},
      {"1a", 1, {0, 0x1a}, true},
      {"1a", 1, {0x1a, 0}, false},
      {"01234", 3, {0x12, 0x34}, true},
      {"0000", 2, {}, true},
      {"0000", 2, {0, 0, 0}, true},
      {"0102030405060708090a", 10, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, true},
      {"0102030405060708090a", 10, {3, 4, 5, 6, 7, 8, 9, 10}, false},
  };
  for (const auto& c : cases) {
    TestNodeMap map("<Port Name=\"P\"><ChunkID>" + std::string(c.text) + "</ChunkID></Port>");
    const Adapter adapter(map.get());
    ASSERT_EQ(adapter.ports()->size(), 1u);
    std::vector<uint8_t> id = c.bytes;
    EXPECT_EQ(adapter.port(0).GetChunkIDLength(), c.length) << c.text;
    EXPECT_EQ(adapter.port(0).CheckChunkID(id.data(), static_cast<int>(id.size())), c.matches) << c.text;
  }
  TestNodeMap map("<Port Name=\"P\"><ChunkID>0000001A</ChunkID></Port>");
  const Adapter adapter(map.get());
  EXPECT_TRUE(adapter.port(0).CheckChunkID(uint64_t{0x1a}));
  EXPECT_FALSE(adapter.port(0).CheckChunkID(uint64_t{0x1a1a}));
  EXPECT_FALSE(adapter.port(0).CheckChunkID(nullptr, 1));
}

TEST(ChunkPort, AnIdFromTheDeviceIsReadWhenAskedAndMatchesNothingWhileUnreadable) {
  TestNodeMap map(R"(
    <Port Name="P"><pChunkID>Id</pChunkID></Port><Port Name="Device"/>
    <StringReg Name="Id"><Address>0</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</pPort>
      <Cachable>NoCache</Cachable></StringReg>)");
  const Adapter adapter(map.get());
  uint8_t zeros[2] = {};
  EXPECT_EQ(adapter.port(0).GetChunkIDLength(), 0);
  EXPECT_FALSE(adapter.port(0).CheckChunkID(zeros, 2));
  EXPECT_FALSE(adapter.port(0).CheckChunkID(zeros, 0));
  EXPECT_FALSE(adapter.port(0).CheckChunkID(uint64_t{0}));
  MemoryPort device;
  std::memcpy(device.memory.data(), "0a1", 4);
  map->Connect(&device);
  EXPECT_EQ(adapter.port(0).GetChunkIDLength(), 2);
  EXPECT_TRUE(adapter.port(0).CheckChunkID(uint64_t{0xa1}));
  device.failAt = device.accesses + 1;
  EXPECT_FALSE(adapter.port(0).CheckChunkID(uint64_t{0xa1})) << "the device does not tell it";
  std::memcpy(device.memory.data(), "xyz", 4);
  EXPECT_EQ(adapter.port(0).GetChunkIDLength(), 0);
  map->Connect(static_cast<IPort*>(nullptr));
}

TEST(ChunkAdapter, NodesReadTheAttachedChunkAndTellWhatLiesOutside) {
  TestNodeMap map(kTwoPorts);
  Adapter adapter;
  EXPECT_EQ(adapter.ports(), nullptr);
  adapter.AttachNodeMap(map.get());
  ASSERT_EQ(adapter.ports()->size(), 2u);
  EXPECT_EQ(map.mode("First"), NA);
  std::array<uint8_t, 8> buffer{1, 2, 3, 4, 5, 6, 7, 8};
  adapter.port(0).AttachChunk(buffer.data(), 0, 8, true);
  EXPECT_EQ(map.mode("First"), RW) << "attaching drops what was known of access";
  EXPECT_EQ(map.integer("First"), 0x0201);
  EXPECT_EQ(map.integer("Last"), 0x0807);
  EXPECT_EQ(map.node<IRegister>("Last").GetAddress(), 6) << "negative addresses are told from the chunk's start";
  EXPECT_EQ(thrown<AccessException>([&] { map.integer("Behind"); }),
            "Behind > Gain: bytes 8..11 lie outside the chunk 9efc2cdb of 8 bytes");
  map.node<IInteger>("Last").SetValue(0x1234);
  EXPECT_EQ(buffer[6], 0x34);
}

TEST(ChunkAdapter, AttachingIsSilentAndInvalidatingCallsBackOncePerOperation) {
  TestNodeMap map(kTwoPorts);
  Adapter adapter(map.get());
  int& first = map.counted("First");
  int& both = map.counted("Both");
  std::array<uint8_t, 8> one{1, 0, 0, 0, 0, 0, 0, 0}, two{2, 0, 0, 0, 0, 0, 0, 0};
  adapter.port(0).AttachChunk(one.data(), 0, 4, true);
  adapter.port(1).AttachChunk(one.data(), 4, 4, false);
  EXPECT_EQ(map.integer("Both"), 1);
  adapter.port(0).AttachChunk(two.data(), 0, 4, true);
  EXPECT_EQ(map.integer("Both"), 2) << "caches above the port were dropped";
  EXPECT_EQ(first + both, 0);
  adapter.port(0).InvalidateNode();
  EXPECT_EQ(first, 1);
  EXPECT_EQ(both, 1);

  one[4] = 10;
  adapter.UpdateBuffer(one.data());
  EXPECT_EQ(first, 2);
  EXPECT_EQ(both, 2) << "both ports moved, one callback";
  EXPECT_EQ(map.integer("Both"), 11);
  EXPECT_THROW(adapter.UpdateBuffer(nullptr), InvalidArgumentException);

  adapter.DetachBuffer();
  EXPECT_EQ(both, 3);
  EXPECT_EQ(map.mode("First"), NA);
  adapter.DetachBuffer();
  adapter.UpdateBuffer(one.data());
  EXPECT_EQ(both, 3) << "no port had a chunk";
  EXPECT_EQ(map.mode("First"), NA);
}

TEST(ChunkAdapter, CopiesOnlyWhereCallerDescriptionAndLimitAgree) {
  const struct {
    size_t port;
    bool cache;
    int64_t limit;
    EAccessMode left;  // after detaching
  } cases[] = {{1, true, -1, RO}, {1, true, 4, RO},   {1, true, 3, NA},
               {1, true, 0, NA},  {1, false, -1, NA}, {0, true, -1, NA}};
  for (const auto& c : cases) {
    TestNodeMap map(kTwoPorts);
    Adapter adapter(map.get(), c.limit);
    std::array<uint8_t, 4> buffer{5, 0, 0, 0};
    adapter.port(c.port).AttachChunk(buffer.data(), 0, 4, c.cache);
    adapter.DetachBuffer();
    EXPECT_EQ(adapter.port(c.port).GetAccessMode(), c.left) << c.port << c.cache << c.limit;
    if (c.left != RO) continue;
    buffer[0] = 6;
    EXPECT_EQ(map.integer("KeptValue"), 5) << "the copy outlives the buffer";
    EXPECT_EQ(map.mode("KeptValue"), RO);
    EXPECT_THROW(map.node<IInteger>("KeptValue").SetValue(1), AccessException);
    adapter.ClearCaches();
    EXPECT_EQ(map.mode("KeptValue"), NA);
  }
}

TEST(ChunkAdapter, AnotherImplementationTakesOverUntilTheAdapterComesBack) {
  TestNodeMap map(kTwoPorts);
  Adapter adapter(map.get());
  std::array<uint8_t, 4> buffer{5, 0, 0, 0};
  adapter.port(0).AttachChunk(buffer.data(), 0, 4, false);
  MemoryPort other;
  other.memory[0] = 77;
  map->Connect(&other, "Gain");
  EXPECT_EQ(map.integer("First"), 77);
  adapter.DetachNodeMap();
  EXPECT_EQ(map.integer("First"), 77) << "a port that was replaced disconnects nobody";
  adapter.AttachNodeMap(map.get());
  EXPECT_EQ(map.mode("First"), NA);
}

TEST(ChunkAdapter, SurvivesItsNodeMapAndMovesToAnother) {
  TestNodeMap map(kTwoPorts);
  TestNodeMap next(kTwoPorts);
  Adapter adapter(map.get());
  std::array<uint8_t, 4> buffer{5, 0, 0, 0};
  adapter.port(0).AttachChunk(buffer.data(), 0, 4, false);
  map.end();
  EXPECT_EQ(adapter.port(0).GetChunkIDLength(), 0);
  adapter.port(0).InvalidateNode();
  adapter.UpdateBuffer(buffer.data());
  adapter.DetachBuffer();
  adapter.ClearCaches();
  adapter.AttachNodeMap(next.get());
  adapter.port(0).AttachChunk(buffer.data(), 0, 4, false);
  EXPECT_EQ(next.integer("First"), 5);
  EXPECT_THROW(adapter.AttachNodeMap(nullptr), InvalidArgumentException);
}

}  // namespace
