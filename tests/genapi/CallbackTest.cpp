// Who is called back, when, how often and in which order.
#include <latch>
#include <stdexcept>
#include <thread>

#include "NodeNames.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Callbacks, FireOnceForEveryNodeThatAnOperationReaches) {
  // B, C and D are registers; everything of A comes from them, and all three can be switched off by E.
  std::string nodes = over("A", "B", "<pMin>C</pMin><pMax>D</pMax>");
  for (const auto& [name, address] : {std::pair{"B", 0}, {"C", 4}, {"D", 8}}) {
    nodes += "<IntReg Name='" + std::string(name) + "'><pIsAvailable>E</pIsAvailable><Address>" +
             std::to_string(address) +
             "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>P</pPort></IntReg>";
  }
  TestMap map(nodes + held("E", 1) + "<Port Name='P'/>");
  map.map->Connect(&map.port, "P");
  map.port.poke(8, {100});
  CallLog log;
  log.watch(map, {"P", "E", "D", "C", "B", "A"});

  const std::pair<std::function<void()>, Names> cases[] = {
      {[&] { map.integer("A")->SetValue(5); }, {"A", "B"}},
      {[&] { map.integer("B")->SetValue(5); }, {"B", "A"}},  // the addressed node first
      {[&] { map.node("B")->InvalidateNode(); }, {"B", "A"}},
      {[&] { map.integer("C")->SetValue(1); }, {"C", "A"}},
      {[&] { map.node("A")->InvalidateNode(); }, {"A"}},
      {[&] { map.integer("E")->SetValue(1); }, {"E", "A", "B", "C", "D"}},
      {[&] { map.node("E")->InvalidateNode(); }, {"E", "A", "B", "C", "D"}},
      {[&] { map.node("P")->InvalidateNode(); }, {"P", "A", "B", "C", "D"}},
      {[&] { map.port.InvalidateNode(); }, {"P", "A", "B", "C", "D"}},
      {[&] { map.map->InvalidateNodes(); }, {"A", "B", "C", "D", "E", "P"}}};
  for (const auto& each : cases) {
    each.first();
    EXPECT_EQ(log.take(), each.second) << "case " << &each - cases;
  }
}

TEST(Callbacks, FireForEveryKindOfChangeAndForNothingElse) {
  TestMap map(held("Width", 5) + R"(<Float Name="Gain"><Value>5</Value></Float>
    <Enumeration Name="Mode"><EnumEntry Name="Off"><Value>0</Value></EnumEntry><Value>0</Value></Enumeration>)" +
              reg("IntReg", "Raw", 0, 4));
  CallLog log;
  log.watch(map, {"Width", "Gain", "Mode", "Raw"});

  // Changes, also to what it was before.
  map.integer("Width")->SetValue(5);
  map.value("Width")->FromString("5", false);
  map.enumeration("Mode")->SetIntValue(0);
  const uint8_t byte = 7;
  map.bytes("Raw")->Set(&byte, 1);
  EXPECT_THAT(log.take(), ElementsAre("Width", "Width", "Mode", "Raw"));
  map.node("Width")->ImposeAccessMode(RO);
  map.node("Width")->ImposeAccessMode(RW);
  map.node("Width")->ImposeVisibility(Guru);
  map.integer("Width")->ImposeMin(1);
  map.integer("Width")->ImposeMax(9);
  EXPECT_EQ(log.take(), Names(5, "Width"));
  map.real("Gain")->ImposeMin(1);
  map.real("Gain")->ImposeMax(9);
  EXPECT_EQ(log.take(), Names(2, "Gain"));

  // Questions, connections and refusals.
  map.value("Width")->ToString(true, true);
  map.integer("Raw")->GetValue(true, true);
  map.bytes("Raw")->GetLength();
  map.node("Raw")->GetAccessMode();
  map.map->Connect(&map.port);
  map.map->Poll(1000);
  NodeList_t children;
  map.node("Raw")->GetChildren(children, ctDependingNodes);
  EXPECT_THROW(map.integer("Width")->SetValue(10), OutOfRangeException);
  EXPECT_THROW(map.value("Width")->FromString("x"), InvalidArgumentException);
  EXPECT_THROW(map.value("Mode")->FromString("x"), InvalidArgumentException);
  EXPECT_THROW(map.bytes("Raw")->Set(&byte, 5), OutOfRangeException);
  EXPECT_THAT(log.take(), IsEmpty());
}

int functionCalls = 0;
void countCall(INode*) { ++functionCalls; }

TEST(Callbacks, OfOneNodeRunInTheOrderOfTheirRegistration) {
  TestMap map(held("X"));
  std::string order;
  for (char each = 'a'; each < 'e'; ++each) Register(map.node("X"), [&order, each](INode*) { order += each; });
  Register(map.node("X"), countCall);
  Register(map.node("X"), &countCall);
  map.integer("X")->SetValue(1);
  EXPECT_EQ(order, "abcd");
  EXPECT_EQ(functionCalls, 2) << "plain functions";
}

// Whether the lock could be had by somebody else now.
bool othersGetTheLock(INodeMap* map) {
  bool got = false;
  std::thread([&] {
    got = map->GetLock().TryLock();
    if (got) map->GetLock().Unlock();
  }).join();
  return got;
}

TEST(Callbacks, RunInsideTheLockFirstAndThenOutsideIt) {
  TestMap map(over("A", "B") + held("B"));
  std::string story;
  const auto witness = [&](const char* name, const std::string& place, ECallbackType type) {
    const auto see = [&, place](INode*) { story += place + (othersGetTheLock(map.map) ? ":free " : ":locked "); };
    map.node(name)->RegisterCallback(make_NodeCallback(map.node(name), see, type));
  };
  for (const char* name : {"A", "B"}) witness(name, "outside", cbPostOutsideLock);
  for (const char* name : {"B", "A"}) witness(name, "inside", cbPostInsideLock);
  map.integer("B")->SetValue(1);
  EXPECT_EQ(std::exchange(story, ""), "inside:locked inside:locked outside:free outside:free ");

  // A caller that holds the lock itself gets its callbacks at the end of the operation all the same.
  {
    const AutoLock lock(map.map->GetLock());
    map.integer("A")->SetValue(2);
    EXPECT_EQ(story, "inside:locked inside:locked outside:locked outside:locked ");
  }
  EXPECT_TRUE(othersGetTheLock(map.map));
}

// A callback that tells what happens to it.
class RawCallback : public CNodeCallback {
 public:
  RawCallback(INode* node, std::string& story) : CNodeCallback(node, cbPostInsideLock), story_(story) {}
  void operator()(ECallbackType type) const override {
    story_ += type == cbPostInsideLock ? "inside " : type == cbPostOutsideLock ? "outside " : "? ";
  }
  void Destroy() override {
    story_ += std::string("destroyed:") + GetNode()->GetName().c_str() + " ";
    delete this;
  }

 private:
  std::string& story_;
};

TEST(Callbacks, BelongToTheNodeUntilTheyAreDestroyedOnce) {
  std::string story;
  TestMap map("<Node Name=\"X\"/><Node Name=\"Y\"/>");
  INode* x = map.node("X");
  INode* y = map.node("Y");
  EXPECT_THROW(x->RegisterCallback(nullptr), InvalidArgumentException);
  const CallbackHandleType first = x->RegisterCallback(new RawCallback(x, story));
  const CallbackHandleType second = x->RegisterCallback(new RawCallback(x, story));
  const CallbackHandleType third = y->RegisterCallback(new RawCallback(y, story));
  EXPECT_TRUE(first != second && first != third && second != third);

  x->InvalidateNode();
  EXPECT_EQ(std::exchange(story, ""), "inside inside outside outside ");
  EXPECT_FALSE(y->DeregisterCallback(first)) << "a callback of another node";
  EXPECT_TRUE(x->DeregisterCallback(first));
  EXPECT_EQ(std::exchange(story, ""), "destroyed:X ");
  for (const CallbackHandleType dead : {first, CallbackHandleType{0}, static_cast<CallbackHandleType>(-1)})
    EXPECT_FALSE(x->DeregisterCallback(dead));
  x->InvalidateNode();
  EXPECT_EQ(std::exchange(story, ""), "inside outside ");

  Deregister(third);
  EXPECT_EQ(std::exchange(story, ""), "destroyed:Y ");
  for (const CallbackHandleType dead : {third, first, CallbackHandleType{12345678}}) Deregister(dead);
  EXPECT_EQ(story, "");
  map.end();
  EXPECT_EQ(story, "destroyed:X ") << "the end of the map destroys what is left and calls nothing";
}

TEST(Callbacks, MayEndThemselvesAndEachOtherAndRegisterMore) {
  TestMap map(over("A", "B") + held("B"));
  std::string story;
  int added = 0;
  CallbackHandleType self = 0, later = 0, outside = 0;
  self = Register(map.node("B"), [&](INode* node) {
    story += "self ";
    for (int i = 0; i < 100; ++i) Register(node, [&](INode*) { ++added; });
    EXPECT_TRUE(node->DeregisterCallback(self));
    Deregister(later);
    EXPECT_TRUE(map.node("A")->DeregisterCallback(outside));
  });
  later = map.node("B")->RegisterCallback(new RawCallback(map.node("B"), story));
  outside = map.node("A")->RegisterCallback(make_NodeCallback(
      map.node("A"), [&](INode*) { story += "outside "; }, cbPostOutsideLock));
  map.integer("B")->SetValue(1);
  EXPECT_EQ(std::exchange(story, ""), "self destroyed:B ");
  EXPECT_EQ(added, 0) << "the list being fired stays as it was";
  map.integer("B")->SetValue(2);
  EXPECT_EQ(story, "");
  EXPECT_EQ(added, 100);
}

TEST(Callbacks, OutsideTheLockDoNotHoldUpDeregistering) {
  TestMap map(held("X"));
  std::latch entered(1), mayLeave(1);
  bool destroyed = false;
  struct Slow : CNodeCallback {
    Slow(INode* node, std::latch& in, std::latch& out, bool& end)
        : CNodeCallback(node, cbPostOutsideLock), entered(in), mayLeave(out), destroyed(end) {}
    void operator()(ECallbackType type) const override {
      if (type != cbPostOutsideLock) return;
      entered.count_down();
      mayLeave.wait();
    }
    void Destroy() override {
      destroyed = true;
      delete this;
    }
    std::latch &entered, &mayLeave;
    bool& destroyed;
  };
  const CallbackHandleType slow =
      map.node("X")->RegisterCallback(new Slow(map.node("X"), entered, mayLeave, destroyed));
  std::thread writer([&] { map.integer("X")->SetValue(1); });
  entered.wait();
  EXPECT_TRUE(map.node("X")->DeregisterCallback(slow));
  EXPECT_FALSE(destroyed) << "while it runs";
  mayLeave.count_down();
  writer.join();
  EXPECT_TRUE(destroyed);
}

TEST(Callbacks, StartOperationsOfTheirOwnThatFireFirst) {
  TestMap map(over("Go", "Source", "<CommandValue>1</CommandValue>", "Command") + held("Source"));
  ICommand* go = map.command("Go");
  int count = 0;
  std::string story;
  Register(map.node("Go"), [&](INode*) {
    const int mine = ++count;
    const bool done = go->IsDone();
    story += std::to_string(mine) + (done ? ":done " : ":executing ");
  });
  go->Execute();
  EXPECT_EQ(std::exchange(story, ""), "1:executing ");
  map.integer("Source")->SetValue(0);
  EXPECT_EQ(story, "3:done 2:done ") << "the write, and inside its callback the IsDone that noticed the end";
  EXPECT_TRUE(go->IsDone());
  EXPECT_EQ(count, 3);
}

TEST(Callbacks, NestOnlySoDeepAndTheRefusedWriteChangesNothing) {
  for (const ECallbackType type : {cbPostInsideLock, cbPostOutsideLock}) {
    TestMap map(held("X"));
    IInteger* x = map.integer("X");
    int calls = 0;
    const auto increment = [&](INode*) {
      ++calls;
      x->SetValue(x->GetValue() + 1);
    };
    map.node("X")->RegisterCallback(make_NodeCallback(map.node("X"), increment, type));
    EXPECT_THROW(x->SetValue(1), LogicalErrorException);
    EXPECT_EQ(calls, 64);
    EXPECT_EQ(x->GetValue(), 64);
    EXPECT_TRUE(othersGetTheLock(map.map));
  }
}

TEST(Callbacks, ThatThrowDoNotStopTheOthers) {
  TestMap map(held("X"));
  std::string story;
  for (const auto& [name, type] : {std::pair{"outside-1 ", cbPostOutsideLock},
                                   {"inside-1 ", cbPostInsideLock},
                                   {"inside-2 ", cbPostInsideLock},
                                   {"outside-2 ", cbPostOutsideLock}}) {
    const auto failing = [&story, text = name](INode*) {
      story += text;
      throw std::runtime_error(text);
    };
    map.node("X")->RegisterCallback(make_NodeCallback(map.node("X"), failing, type));
  }
  EXPECT_EQ(refusal<std::runtime_error>([&] { map.integer("X")->SetValue(1); }), "inside-1 ");
  EXPECT_EQ(story, "inside-1 inside-2 outside-1 outside-2 ");
  EXPECT_EQ(map.integer("X")->GetValue(), 1) << "the write itself has happened";
  EXPECT_TRUE(othersGetTheLock(map.map));
}

TEST(Callbacks, OfWhatAPortChangesInTheMiddleOfAReadFireAtItsEnd) {
  TestMap map(held("Counter") + reg("IntReg", "Raw", 0, 4));
  CallLog log;
  log.watch(map, {"Counter", "Raw"});
  map.port.onRead = [&](int64_t, int64_t) {
    for (int i = 0; i < 2; ++i) map.integer("Counter")->SetValue(map.integer("Counter")->GetValue() + 1);
    EXPECT_THAT(log.take(), IsEmpty()) << "not before the outermost call ends";
  };
  map.integer("Raw")->GetValue();
  EXPECT_THAT(log.take(), ElementsAre("Counter"));
  EXPECT_EQ(map.integer("Counter")->GetValue(), 2);
}

}  // namespace
