// Chunk data: ports over the client's buffer.
#include <array>

#include "NodeNames.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Adapter : public CChunkAdapter {
 public:
  explicit Adapter(INodeMap* map = nullptr, int64_t limit = -1) : CChunkAdapter(map, limit) {}
  bool CheckBufferLayout(uint8_t*, int64_t) override { return false; }
  void AttachBuffer(uint8_t*, int64_t, AttachStatistics_t*) override {}
  const std::vector<CChunkPort*>* ports() const { return m_ppChunkPorts; }
  CChunkPort& port(size_t index) const { return *m_ppChunkPorts->at(index); }
};

std::string field(const std::string& name, const std::string& port, int address, int length) {
  return "<IntReg Name='" + name + "'><Address>" + std::to_string(address) + "</Address><Length>" +
         std::to_string(length) + "</Length><AccessMode>RW</AccessMode><pPort>" + port + "</pPort></IntReg>";
}

const std::string kTwoPorts =
    "<Port Name='Gain'><ChunkID>9efc2cdb</ChunkID></Port>"
    "<Port Name='Kept'><ChunkID>0000001a</ChunkID><CacheChunkData>Yes</CacheChunkData></Port>" +
    field("First", "Gain", 0, 2) + field("Last", "Gain", -2, 2) + field("Behind", "Gain", 8, 4) +
    field("KeptValue", "Kept", 0, 4) +
    "<IntSwissKnife Name='Both'><pVariable Name='A'>First</pVariable><pVariable Name='B'>KeptValue</pVariable>"
    "<Formula>A + B</Formula></IntSwissKnife>";

TEST(ChunkPort, ServesTheChunkAndPseudoRegistersAndNothingElse) {
  std::array<uint8_t, 16> buffer{0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 99};
  CChunkPort port;
  uint8_t bytes[16] = {};
  EXPECT_EQ(port.GetAccessMode(), NA);
  EXPECT_THAT(refusal<RuntimeException>([&] { port.Read(bytes, 0, 1); }), HasSubstr("no chunk is attached"));
  port.AttachChunk(buffer.data(), 2, 8, true);
  EXPECT_EQ(port.GetAccessMode(), RW);

  struct Access {
    int64_t address, length;
    int first = -1;  // the byte read first
  };
  for (const Access& inside : {Access{0, 8, 1}, {7, 1, 8}, {-1, 1, 8}, {-8, 8, 1}}) {
    port.Read(bytes, inside.address, inside.length);
    EXPECT_EQ(bytes[0], inside.first) << inside.address;
  }
  for (const Access& outside : {Access{8, 1},
                                {7, 2},
                                {-9, 1},
                                {-1, 2},
                                {INT64_MIN, 1},
                                {INT64_MAX - 1, 8},
                                {0, 9},
                                {-8, 9},
                                {INT64_MAX, 4},
                                {INT64_MAX - 15, 1}}) {
    EXPECT_THROW(port.Read(bytes, outside.address, outside.length), AccessException) << outside.address;
    EXPECT_THROW(port.Write(bytes, outside.address, outside.length), AccessException) << outside.address;
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
  port.AttachChunk(buffer.data(), 7, 1, false);
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
      {"0102030405060708", 8, {1, 2, 3, 4, 5, 6, 7, 8}, true},
      {"0102030405060708090a", 10, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, true},
      {"0102030405060708090a", 10, {3, 4, 5, 6, 7, 8, 9, 10}, false},
  };
  for (const auto& c : cases) {
    TestMap t("<Port Name='P'>" + tag("ChunkID", c.text) + "</Port>");
    const Adapter adapter(t.map);
    ASSERT_EQ(adapter.ports()->size(), 1u);
    std::vector<uint8_t> id = c.bytes;
    EXPECT_EQ(adapter.port(0).GetChunkIDLength(), c.length) << c.text;
    EXPECT_EQ(adapter.port(0).CheckChunkID(id.data(), static_cast<int>(id.size())), c.matches) << c.text;
  }
  TestMap t(kTwoPorts);
  const Adapter adapter(t.map);
  EXPECT_TRUE(adapter.port(1).CheckChunkID(uint64_t{0x1a}));
  EXPECT_FALSE(adapter.port(1).CheckChunkID(uint64_t{0x1a1a}));
  EXPECT_FALSE(adapter.port(1).CheckChunkID(nullptr, 1));
}

TEST(ChunkPort, AnIdFromTheDeviceIsReadWhenAskedAndMatchesNothingWhileUnreadable) {
  TestMap t("<Port Name='P'><pChunkID>Id</pChunkID></Port>" + reg("StringReg", "Id", 0, 4, tag("Cachable", "NoCache")));
  t.map->Connect(static_cast<IPort*>(nullptr));
  const Adapter adapter(t.map);
  uint8_t zeros[2] = {};
  EXPECT_EQ(adapter.port(0).GetChunkIDLength(), 0);
  EXPECT_FALSE(adapter.port(0).CheckChunkID(zeros, 2));
  EXPECT_FALSE(adapter.port(0).CheckChunkID(zeros, 0));
  EXPECT_FALSE(adapter.port(0).CheckChunkID(uint64_t{0}));
  t.port.poke(0, {'0', 'a', '1'});
  t.map->Connect(&t.port);
  EXPECT_EQ(adapter.port(0).GetChunkIDLength(), 2);
  EXPECT_TRUE(adapter.port(0).CheckChunkID(uint64_t{0xa1}));
  t.port.failAt = t.port.accesses + 1;
  EXPECT_FALSE(adapter.port(0).CheckChunkID(uint64_t{0xa1})) << "the device does not tell it";
  t.port.poke(0, {'x', 'y', 'z'});
  EXPECT_EQ(adapter.port(0).GetChunkIDLength(), 0);
}

TEST(ChunkAdapter, NodesReadTheAttachedChunkAndTellWhatLiesOutside) {
  TestMap t(kTwoPorts);
  Adapter adapter;
  EXPECT_EQ(adapter.ports(), nullptr);
  adapter.AttachNodeMap(t.map);
  ASSERT_EQ(adapter.ports()->size(), 2u);
  EXPECT_EQ(t.mode("First"), NA);
  std::array<uint8_t, 8> buffer{1, 2, 3, 4, 5, 6, 7, 8};
  adapter.port(0).AttachChunk(buffer.data(), 0, 8, true);
  EXPECT_EQ(t.mode("First"), RW) << "attaching drops what was known of access";
  EXPECT_EQ(t.integer("First")->GetValue(), 0x0201);
  EXPECT_EQ(t.integer("Last")->GetValue(), 0x0807);
  EXPECT_EQ(t.bytes("Last")->GetAddress(), 6) << "negative addresses are told from the chunk's start";
  EXPECT_EQ(refusal<AccessException>([&] { t.integer("Behind")->GetValue(); }),
            "Behind > Gain: bytes 8..11 lie outside the chunk 9efc2cdb of 8 bytes");
  t.integer("Last")->SetValue(0x1234);
  EXPECT_EQ(buffer[6], 0x34);
}

TEST(ChunkAdapter, AttachingIsSilentAndInvalidatingCallsBackOncePerOperation) {
  TestMap t(kTwoPorts);
  Adapter adapter(t.map);
  CallLog log;
  log.watch(t, {"First", "Both"});
  const auto both = ElementsAre("First", "Both");
  std::array<uint8_t, 8> one{1, 0, 0, 0, 0, 0, 0, 0}, two{2, 0, 0, 0, 0, 0, 0, 0};
  adapter.port(0).AttachChunk(one.data(), 0, 4, true);
  adapter.port(1).AttachChunk(one.data(), 4, 4, false);
  EXPECT_EQ(t.integer("Both")->GetValue(), 1);
  adapter.port(0).AttachChunk(two.data(), 0, 4, true);
  EXPECT_EQ(t.integer("Both")->GetValue(), 2) << "caches above the port were dropped";
  EXPECT_THAT(log.take(), IsEmpty());
  adapter.port(0).InvalidateNode();
  EXPECT_THAT(log.take(), both);

  one[4] = 10;
  adapter.UpdateBuffer(one.data());
  EXPECT_THAT(log.take(), both) << "both ports moved, one callback";
  EXPECT_EQ(t.integer("Both")->GetValue(), 11);
  EXPECT_THROW(adapter.UpdateBuffer(nullptr), InvalidArgumentException);

  adapter.DetachBuffer();
  EXPECT_THAT(log.take(), both);
  EXPECT_EQ(t.mode("First"), NA);
  adapter.DetachBuffer();
  adapter.UpdateBuffer(one.data());
  EXPECT_THAT(log.take(), IsEmpty()) << "no port had a chunk";
  EXPECT_EQ(t.mode("First"), NA);
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
    TestMap t(kTwoPorts);
    Adapter adapter(t.map, c.limit);
    std::array<uint8_t, 4> buffer{5, 0, 0, 0};
    adapter.port(c.port).AttachChunk(buffer.data(), 0, 4, c.cache);
    std::array<uint8_t, 4> second{8, 0, 0, 0};
    adapter.UpdateBuffer(second.data());
    adapter.DetachBuffer();
    EXPECT_EQ(adapter.port(c.port).GetAccessMode(), c.left) << c.port << c.cache << c.limit;
    if (c.left != RO) continue;
    second[0] = 6;
    EXPECT_EQ(t.integer("KeptValue")->GetValue(), 8) << "the copy outlives the buffer, the last one";
    EXPECT_EQ(t.mode("KeptValue"), RO);
    EXPECT_THROW(t.integer("KeptValue")->SetValue(1), AccessException);
    adapter.ClearCaches();
    EXPECT_EQ(t.mode("KeptValue"), NA);
    adapter.port(c.port).AttachChunk(buffer.data(), 0, 4, c.cache);
    t.integer("KeptValue")->SetValue(9);
    adapter.DetachBuffer();
    EXPECT_EQ(t.integer("KeptValue")->GetValue(), 9) << "what is written to the chunk is written to its copy";
  }
}

TEST(ChunkAdapter, AnotherImplementationTakesOverUntilTheAdapterComesBack) {
  TestMap t(kTwoPorts);
  Adapter adapter(t.map);
  std::array<uint8_t, 4> buffer{5, 0, 0, 0};
  adapter.port(0).AttachChunk(buffer.data(), 0, 4, false);
  t.port.poke(0, {77});
  t.map->Connect(&t.port, "Gain");
  EXPECT_EQ(t.integer("First")->GetValue(), 77);
  adapter.DetachNodeMap();
  EXPECT_EQ(t.integer("First")->GetValue(), 77) << "a port that was replaced disconnects nobody";
  adapter.AttachNodeMap(t.map);
  EXPECT_EQ(t.mode("First"), NA);
}

TEST(ChunkAdapter, SurvivesItsNodeMapAndMovesToAnother) {
  TestMap t(kTwoPorts), next(kTwoPorts);
  Adapter adapter(t.map);
  std::array<uint8_t, 4> buffer{5, 0, 0, 0};
  adapter.port(0).AttachChunk(buffer.data(), 0, 4, false);
  t.end();
  EXPECT_EQ(adapter.port(0).GetChunkIDLength(), 0);
  adapter.port(0).InvalidateNode();
  adapter.UpdateBuffer(buffer.data());
  adapter.DetachBuffer();
  adapter.ClearCaches();
  adapter.AttachNodeMap(next.map);
  adapter.port(0).AttachChunk(buffer.data(), 0, 4, false);
  EXPECT_EQ(next.integer("First")->GetValue(), 5);
  EXPECT_THROW(adapter.AttachNodeMap(nullptr), InvalidArgumentException);
}

}  // namespace
