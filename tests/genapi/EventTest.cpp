// Events: payloads that arrive from outside the register space.
#include "NodeNames.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string event(const std::string& port, const std::string& id) {
  return "<Port Name='" + port + "'><EventID>" + id + "</EventID></Port>";
}

std::string field(const std::string& name, int address, int length, const std::string& port) {
  return "<IntReg Name='" + name + "'><Address>" + std::to_string(address) + "</Address><Length>" +
         std::to_string(length) + "</Length><pPort>" + port + "</pPort></IntReg>";
}

const std::string kEvents =
    event("End", "9001") + event("EndToo", "00009001") + event("Wide", "0102030405060708090A") +
    field("Stamp", 0, 2, "End") + field("Tail", -1, 1, "EndToo") + field("WideValue", 0, 1, "Wide") +
    "<IntSwissKnife Name='Sum'><pVariable Name='A'>Stamp</pVariable><pVariable Name='B'>Tail</pVariable>"
    "<Formula>A + B</Formula></IntSwissKnife><Integer Name='Plain'><EventID>ff</EventID><Value>3</Value></Integer>";

struct EventMap : TestMap {
  EventMap() : TestMap(kEvents), adapter(map) { log.watch(*this, {"Stamp", "Sum", "Plain"}); }
  int64_t valueOf(const char* name) const { return integer(name)->GetValue(); }
  CallLog log;
  CEventAdapterGeneric adapter;
};

TEST(EventAdapter, DeliversToEveryNodeOfTheIdInOneOperation) {
  EventMap t;
  EXPECT_EQ(t.mode("Stamp"), NA);
  const uint8_t message[] = {0x34, 0x12, 7};
  t.adapter.DeliverMessage(message, 3, gcstring("09001"));
  EXPECT_EQ(t.mode("Stamp"), RO);
  EXPECT_EQ(t.valueOf("Stamp"), 0x1234);
  EXPECT_EQ(t.valueOf("Tail"), 7);
  EXPECT_EQ(t.valueOf("Sum"), 0x1234 + 7);
  EXPECT_THAT(t.log.take(), ElementsAre("Stamp", "Sum")) << "two ports, one delivery, one callback";

  t.adapter.DeliverMessage(nullptr, 0, uint64_t{0xff});
  EXPECT_THAT(t.log.take(), ElementsAre("Plain")) << "a node without a port is only invalidated";
  EXPECT_EQ(t.valueOf("Plain"), 3);
  t.adapter.DeliverMessage(message, 3, gcstring("102030405060708090a"));
  EXPECT_EQ(t.valueOf("WideValue"), 0x34) << "IDs may be wider than 64 bits";
  for (const char* id : {"30405060708090a", "1234"}) t.adapter.DeliverMessage(message, 3, gcstring(id));
  EXPECT_THAT(t.log.take(), IsEmpty()) << "IDs that nobody has change nothing";
}

TEST(EventAdapter, APayloadStaysUntilTheNextOne) {
  EventMap t;
  {
    std::vector<uint8_t> gone{1, 2};
    t.adapter.DeliverMessage(gone.data(), 2, uint64_t{0x9001});
  }
  EXPECT_EQ(t.valueOf("Stamp"), 0x0201);
  t.adapter.DeliverMessage(nullptr, 0, uint64_t{0x9001});
  EXPECT_EQ(t.mode("Stamp"), RO) << "an empty payload is a payload";
  EXPECT_EQ(refusal<AccessException>([&] { t.valueOf("Stamp"); }),
            "Stamp > End: bytes 0..1 lie outside the event 9001 of 0 bytes");
  EXPECT_THROW(CPortPtr(t.node("End"))->Write("x", 0, 1), AccessException);
  t.adapter.DetachNodeMap();
  EXPECT_FALSE(IsReadable(t.mode("Stamp")));
}

TEST(EventAdapter, RefusesWhatIsNoMessage) {
  EventMap t;
  const uint8_t byte = 1;
  for (const char* id : {"", "0x9001", "9001 ", "-1", "g"})
    EXPECT_THROW(t.adapter.DeliverMessage(&byte, 1, gcstring(id)), InvalidArgumentException) << id;
  EXPECT_THROW(t.adapter.DeliverMessage(nullptr, 1, uint64_t{0x9001}), InvalidArgumentException);
  EXPECT_THROW(t.adapter.DeliverMessage(&byte, static_cast<uint32_t>(kMaxEventBytes) + 1, uint64_t{0x9001}),
               InvalidArgumentException);
  EXPECT_THROW(t.adapter.DeliverMessage(&byte, 1), LogicalErrorException);
  EXPECT_THROW(CEventAdapterGeneric(nullptr).AttachNodeMap(nullptr), InvalidArgumentException);
  EXPECT_EQ(t.mode("Stamp"), NA);
  const std::vector<uint8_t> longest(static_cast<size_t>(kMaxEventBytes));
  t.adapter.DeliverMessage(longest.data(), static_cast<uint32_t>(longest.size()), uint64_t{0x9001});
}

TEST(EventPort, ServesOneNodeOnItsOwn) {
  EventMap t;
  EXPECT_THROW(CEventPort(nullptr), InvalidArgumentException);
  EXPECT_THROW(CEventPort(t.node("Sum")), InvalidArgumentException);
  CEventPort port(t.node("End"));
  EXPECT_EQ(port.GetEventIDLength(), 2);
  uint8_t id[] = {0, 0x90, 0x01};
  EXPECT_TRUE(port.CheckEventID(id, 3));
  EXPECT_TRUE(port.CheckEventID(uint64_t{0x9001}));
  EXPECT_FALSE(port.CheckEventID(uint64_t{0x900100}));
  uint8_t payload[] = {9, 0};
  port.AttachEvent(payload, 2);
  EXPECT_EQ(t.valueOf("Stamp"), 9);
  EXPECT_THAT(t.log.take(), IsEmpty()) << "attaching is silent";
  port.InvalidateNode();
  EXPECT_THAT(t.log.take(), ElementsAre("Stamp", "Sum"));
  port.DetachEvent();
  EXPECT_THAT(t.log.take(), ElementsAre("Stamp", "Sum"));
  EXPECT_EQ(t.mode("Stamp"), NA);
}

TEST(EventAdapter, SurvivesItsNodeMap) {
  EventMap t;
  CEventPort port(t.node("Plain"));
  t.end();
  t.adapter.DeliverMessage(reinterpret_cast<const uint8_t*>("ab"), 2, uint64_t{0x9001});
  port.InvalidateNode();
  EXPECT_EQ(port.GetEventIDLength(), 0);
  t.adapter.DetachNodeMap();
}

}  // namespace
