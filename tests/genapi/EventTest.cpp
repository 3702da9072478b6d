// Events: payloads that arrive from outside the register space.
#include <gmock/gmock.h>

#include <thread>

#include "genapi/TestNodeMap.h"

namespace {

using namespace GENAPI_NAMESPACE;
using namespace GENICAM_NAMESPACE;
using testing::HasSubstr;

const std::string kEvents = R"(
  <Port Name="End"><EventID>9001</EventID></Port>
  <Port Name="EndToo"><EventID>00009001</EventID></Port>
  <Port Name="Wide"><EventID>0102030405060708090A</EventID></Port>
  <IntReg Name="Stamp"><Address>0</Address><Length>2</Length><AccessMode>RO</AccessMode><pPort>End</pPort>
    <Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <IntReg Name="Tail"><Address>-1</Address><Length>1</Length><AccessMode>RO</AccessMode><pPort>EndToo</pPort>
    <Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <IntSwissKnife Name="Sum"><pVariable Name="A">Stamp</pVariable><pVariable Name="B">Tail</pVariable>
    <Formula>A + B</Formula></IntSwissKnife>
  <IntReg Name="WideValue"><Address>0</Address><Length>1</Length><AccessMode>RO</AccessMode><pPort>Wide</pPort>
    <Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <Integer Name="Plain"><EventID>ff</EventID><Value>3</Value></Integer>)";

TEST(EventAdapter, DeliversToEveryNodeOfTheIdInOneOperation) {
  TestNodeMap map(kEvents);
  CEventAdapterGeneric adapter(map.get());
  int& stamp = map.counted("Stamp");
  int& sum = map.counted("Sum");
  int& plain = map.counted("Plain");
  EXPECT_EQ(map.mode("Stamp"), NA);
  const uint8_t message[] = {0x34, 0x12, 7};
  adapter.DeliverMessage(message, 3, gcstring("09001"));
  EXPECT_EQ(map.mode("Stamp"), RO);
  EXPECT_EQ(map.integer("Stamp"), 0x1234);
  EXPECT_EQ(map.integer("Tail"), 7);
  EXPECT_EQ(map.integer("Sum"), 0x1234 + 7);
  EXPECT_EQ(stamp, 1);
  EXPECT_EQ(sum, 1) << "two ports, one delivery, one callback";
  EXPECT_EQ(plain, 0);

  adapter.DeliverMessage(nullptr, 0, uint64_t{0xff});
  EXPECT_EQ(plain, 1) << "a node without a port is only invalidated";
  EXPECT_EQ(map.integer("Plain"), 3);
  adapter.DeliverMessage(message, 3, gcstring("102030405060708090a"));
  EXPECT_EQ(map.integer("WideValue"), 0x34) << "IDs may be wider than 64 bits";
  adapter.DeliverMessage(message, 3, gcstring("30405060708090a"));
  adapter.DeliverMessage(message, 3, gcstring("1234"));
  EXPECT_EQ(sum, 1) << "IDs that nobody has change nothing";
}

TEST(EventAdapter, CallbacksOutsideTheLockRunWithoutIt) {
  TestNodeMap map(kEvents);
  CEventAdapterGeneric adapter(map.get());
  struct Watcher {
    void called(INode* node) {
      // Another thread would be let in: the lock can be taken and given back without depth.
      bool taken = false;
      std::thread([&] {
        taken = node->GetNodeMap()->GetLock().TryLock();
        if (taken) node->GetNodeMap()->GetLock().Unlock();
      }).join();
      free += taken;
      ++calls;
    }
    int calls = 0;
    int free = 0;
  } watcher;
  Register(map->GetNode("Stamp"), watcher, &Watcher::called, cbPostOutsideLock);
  adapter.DeliverMessage(reinterpret_cast<const uint8_t*>("ab"), 2, uint64_t{0x9001});
  EXPECT_EQ(watcher.calls, 1);
  EXPECT_EQ(watcher.free, 1);
}

TEST(EventAdapter, APayloadStaysUntilTheNextOne) {
  TestNodeMap map(kEvents);
  CEventAdapterGeneric adapter(map.get());
  {
    std::vector<uint8_t> gone{1, 2};
    adapter.DeliverMessage(gone.data(), 2, uint64_t{0x9001});
  }
  EXPECT_EQ(map.integer("Stamp"), 0x0201);
  adapter.DeliverMessage(nullptr, 0, uint64_t{0x9001});
  EXPECT_EQ(map.mode("Stamp"), RO) << "an empty payload is a payload";
  EXPECT_EQ(thrown<AccessException>([&] { map.integer("Stamp"); }),
            "Stamp > End: bytes 0..1 lie outside the event 9001 of 0 bytes");
  EXPECT_THROW(map.node<IPort>("End").Write("x", 0, 1), AccessException);
  adapter.DetachNodeMap();
  EXPECT_FALSE(IsReadable(map.mode("Stamp")));
}

TEST(EventAdapter, RefusesWhatIsNoMessage) {
  TestNodeMap map(kEvents);
  CEventAdapterGeneric adapter(map.get());
  const uint8_t byte = 1;
  for (const char* id : {"", "0x9001", "9001 ", "-1", "g"})
    EXPECT_THROW(adapter.DeliverMessage(&byte, 1, gcstring(id)), InvalidArgumentException) << id;
  EXPECT_THROW(adapter.DeliverMessage(nullptr, 1, uint64_t{0x9001}), InvalidArgumentException);
  EXPECT_THROW(adapter.DeliverMessage(&byte, static_cast<uint32_t>(kMaxEventBytes) + 1, uint64_t{0x9001}),
               InvalidArgumentException);
  EXPECT_THROW(adapter.DeliverMessage(&byte, 1), LogicalErrorException);
  EXPECT_THROW(CEventAdapterGeneric(nullptr).AttachNodeMap(nullptr), InvalidArgumentException);
  EXPECT_EQ(map.mode("Stamp"), NA);
}

TEST(EventPort, ServesOneNodeOnItsOwn) {
  TestNodeMap map(kEvents);
  EXPECT_THROW(CEventPort(nullptr), InvalidArgumentException);
  EXPECT_THROW(CEventPort(map->GetNode("Sum")), InvalidArgumentException);
  CEventPort port(map->GetNode("End"));
  int& stamp = map.counted("Stamp");
  EXPECT_EQ(port.GetEventIDLength(), 2);
  uint8_t id[] = {0, 0x90, 0x01};
  EXPECT_TRUE(port.CheckEventID(id, 3));
  EXPECT_TRUE(port.CheckEventID(uint64_t{0x9001}));
  EXPECT_FALSE(port.CheckEventID(uint64_t{0x900100}));
  uint8_t payload[] = {9, 0};
  port.AttachEvent(payload, 2);
  EXPECT_EQ(map.integer("Stamp"), 9);
  EXPECT_EQ(stamp, 0) << "attaching is silent";
  port.InvalidateNode();
  EXPECT_EQ(stamp, 1);
  port.DetachEvent();
  EXPECT_EQ(stamp, 2);
  EXPECT_EQ(map.mode("Stamp"), NA);
}

TEST(EventAdapter, SurvivesItsNodeMap) {
  TestNodeMap map(kEvents);
  CEventAdapterGeneric adapter(map.get());
  CEventPort port(map->GetNode("Plain"));
  map.end();
  adapter.DeliverMessage(reinterpret_cast<const uint8_t*>("ab"), 2, uint64_t{0x9001});
  port.InvalidateNode();
  EXPECT_EQ(port.GetEventIDLength(), 0);
  adapter.DetachNodeMap();
}

}  // namespace
