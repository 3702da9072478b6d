// Who is called back, when, how often and in which order.
#include <latch>
#include <stdexcept>
#include <thread>

#include "NodeNames.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// B, C and D are registers; everything of A comes from them, and all three can be switched off by E.
const std::string kGuardedFamily = R"(
  <Integer Name="A"><pValue>B</pValue><pMin>C</pMin><pMax>D</pMax></Integer>
  <IntReg Name="B"><pIsAvailable>E</pIsAvailable><Address>0</Address><Length>4</Length>
    <AccessMode>RW</AccessMode><pPort>P</pPort></IntReg>
  <IntReg Name="C"><pIsAvailable>E</pIsAvailable><Address>4</Address><Length>4</Length>
    <AccessMode>RW</AccessMode><pPort>P</pPort></IntReg>
  <IntReg Name="D"><pIsAvailable>E</pIsAvailable><Address>8</Address><Length>4</Length>
    <AccessMode>RW</AccessMode><pPort>P</pPort></IntReg>
  <Integer Name="E"><Value>1</Value></Integer>
  <Port Name="P"/>)";

TEST(Callbacks, FireOnceForEveryNodeThatAnOperationReaches) {
  TestMap map(kGuardedFamily);
  map.map->Connect(&map.port, "P");
  map.port.poke(8, {100});
  CallLog log;
  log.watch(map, {"P", "E", "D", "C", "B", "A"});

  map.integer("A")->SetValue(5);
  EXPECT_THAT(log.take(), ElementsAre("A", "B"));
  map.integer("B")->SetValue(5);
  EXPECT_THAT(log.take(), ElementsAre("B", "A")) << "the addressed node first";
  map.node("B")->InvalidateNode();
  EXPECT_THAT(log.take(), ElementsAre("B", "A"));
  map.integer("C")->SetValue(1);
  EXPECT_THAT(log.take(), ElementsAre("C", "A"));
  map.node("A")->InvalidateNode();
  EXPECT_THAT(log.take(), ElementsAre("A"));
  map.integer("E")->SetValue(1);
  EXPECT_THAT(log.take(), ElementsAre("E", "A", "B", "C", "D"));
  map.node("E")->InvalidateNode();
  EXPECT_THAT(log.take(), ElementsAre("E", "A", "B", "C", "D"));
  map.node("P")->InvalidateNode();
  EXPECT_THAT(log.take(), ElementsAre("P", "A", "B", "C", "D"));
  map.port.InvalidateNode();
  EXPECT_THAT(log.take(), ElementsAre("P", "A", "B", "C", "D"));
  map.map->InvalidateNodes();
  EXPECT_THAT(log.take(), ElementsAre("A", "B", "C", "D", "E", "P"));
}

TEST(Callbacks, FireForEveryKindOfChangeAndForNothingElse) {
  TestMap map(R"(
    <Integer Name="Width"><Value>5</Value></Integer>
    <Float Name="Gain"><Value>5</Value></Float>
    <Enumeration Name="Mode"><EnumEntry Name="Off"><Value>0</Value></EnumEntry><Value>0</Value></Enumeration>)" +
              reg("IntReg", "Raw", 0, 4));
  CallLog log;
  log.watch(map, {"Width", "Gain", "Mode", "Raw"});

  // Changes, also to what it was before.
  map.integer("Width")->SetValue(5);
  EXPECT_THAT(log.take(), ElementsAre("Width"));
  map.value("Width")->FromString("5", false);
  EXPECT_THAT(log.take(), ElementsAre("Width"));
  map.enumeration("Mode")->SetIntValue(0);
  EXPECT_THAT(log.take(), ElementsAre("Mode"));
  const uint8_t byte = 7;
  map.bytes("Raw")->Set(&byte, 1);
  EXPECT_THAT(log.take(), ElementsAre("Raw"));
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
void countCall(INode*) {
  ++functionCalls;
}

TEST(Callbacks, MayBePlainFunctions) {
  TestMap map("<Integer Name=\"X\"><Value>0</Value></Integer>");
  Register(map.node("X"), countCall);
  Register(map.node("X"), &countCall);
  map.integer("X")->SetValue(1);
  EXPECT_EQ(functionCalls, 2);
}

TEST(Callbacks, OfOneNodeRunInTheOrderOfTheirRegistration) {
  TestMap map("<Integer Name=\"X\"><Value>0</Value></Integer>");
  std::string order;
  for (char each = 'a'; each < 'e'; ++each) Register(map.node("X"), [&order, each](INode*) { order += each; });
  map.integer("X")->SetValue(1);
  EXPECT_EQ(order, "abcd");
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

// What a registered client sees.
class Witness {
 public:
  void inside(INode* node) { story += othersGetTheLock(node->GetNodeMap()) ? "inside:free " : "inside:locked "; }
  void outside(INode* node) { story += othersGetTheLock(node->GetNodeMap()) ? "outside:free " : "outside:locked "; }
  std::string story;
};

TEST(Callbacks, RunInsideTheLockFirstAndThenOutsideIt) {
  TestMap map(R"(<Integer Name="A"><pValue>B</pValue></Integer><Integer Name="B"><Value>0</Value></Integer>)");
  Witness witness;
  Register(map.node("A"), witness, &Witness::outside, cbPostOutsideLock);
  Register(map.node("B"), witness, &Witness::outside, cbPostOutsideLock);
  Register(map.node("B"), witness, &Witness::inside);
  Register(map.node("A"), witness, &Witness::inside, cbPostInsideLock);
  map.integer("B")->SetValue(1);
  EXPECT_EQ(witness.story, "inside:locked inside:locked outside:free outside:free ");

  // A caller that holds the lock itself gets its callbacks at the end of the operation all the same.
  witness.story.clear();
  {
    const AutoLock lock(map.map->GetLock());
    map.integer("A")->SetValue(2);
    EXPECT_EQ(witness.story, "inside:locked inside:locked outside:locked outside:locked ");
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
  {
    TestMap map("<Node Name=\"X\"/><Node Name=\"Y\"/>");
    INode* x = map.node("X");
    INode* y = map.node("Y");
    EXPECT_THROW(x->RegisterCallback(nullptr), InvalidArgumentException);
    const CallbackHandleType first = x->RegisterCallback(new RawCallback(x, story));
    const CallbackHandleType second = x->RegisterCallback(new RawCallback(x, story));
    const CallbackHandleType third = y->RegisterCallback(new RawCallback(y, story));
    EXPECT_NE(first, second);
    EXPECT_NE(first, third);
    EXPECT_NE(second, third);

    x->InvalidateNode();
    EXPECT_EQ(std::exchange(story, ""), "inside inside outside outside ");
    EXPECT_FALSE(y->DeregisterCallback(first)) << "a callback of another node";
    EXPECT_TRUE(x->DeregisterCallback(first));
    EXPECT_EQ(std::exchange(story, ""), "destroyed:X ");
    EXPECT_FALSE(x->DeregisterCallback(first));
    EXPECT_FALSE(x->DeregisterCallback(0));
    EXPECT_FALSE(x->DeregisterCallback(-1));
    x->InvalidateNode();
    EXPECT_EQ(std::exchange(story, ""), "inside outside ");

    Deregister(third);
    EXPECT_EQ(std::exchange(story, ""), "destroyed:Y ");
    Deregister(third);
    Deregister(first);
    Deregister(12345678);
    EXPECT_EQ(story, "");
  }
  EXPECT_EQ(story, "destroyed:X ") << "the end of the map destroys what is left and calls nothing";
}

TEST(Callbacks, MayEndThemselvesAndEachOther) {
  TestMap map(R"(<Integer Name="A"><pValue>B</pValue></Integer><Integer Name="B"><Value>0</Value></Integer>)");
  std::string story;
  CallbackHandleType self = 0, later = 0, outside = 0;
  self = Register(map.node("B"), [&](INode* node) {
    story += "self ";
    EXPECT_TRUE(node->DeregisterCallback(self));
    Deregister(later);
    EXPECT_TRUE(map.node("A")->DeregisterCallback(outside));
  });
  later = map.node("B")->RegisterCallback(new RawCallback(map.node("B"), story));
  outside = map.node("A")->RegisterCallback(make_NodeCallback(
      map.node("A"), [&](INode*) { story += "outside "; }, cbPostOutsideLock));
  map.integer("B")->SetValue(1);
  EXPECT_EQ(std::exchange(story, ""), "self destroyed:B ");
  map.integer("B")->SetValue(2);
  EXPECT_EQ(story, "");
}

TEST(Callbacks, ThatRegisterOthersDoNotDisturbTheListBeingFired) {
  TestMap map("<Integer Name=\"X\"><Value>0</Value></Integer>");
  int calls = 0;
  Register(map.node("X"), [&](INode* node) {
    ++calls;
    for (int i = 0; i < 100; ++i) Register(node, [](INode*) {});
  });
  map.integer("X")->SetValue(1);
  EXPECT_EQ(calls, 1);
}

TEST(Callbacks, OutsideTheLockDoNotHoldUpDeregistering) {
  TestMap map("<Integer Name=\"X\"><Value>0</Value></Integer>");
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
  TestMap map(R"(
    <Command Name="Go"><pValue>Source</pValue><CommandValue>1</CommandValue></Command>
    <Integer Name="Source"><Value>0</Value></Integer>)");
  ICommand* go = map.command("Go");
  int count = 0;
  std::string story;
  Register(map.node("Go"), [&](INode*) {
    const int mine = ++count;
    const bool done = go->IsDone();
    story += std::to_string(mine) + (done ? ":done " : ":executing ");
  });
  go->Execute();
  EXPECT_EQ(count, 1);
  EXPECT_EQ(std::exchange(story, ""), "1:executing ");
  map.integer("Source")->SetValue(0);
  EXPECT_EQ(count, 3) << "the write, and inside its callback the IsDone that noticed the end";
  EXPECT_EQ(story, "3:done 2:done ");
  EXPECT_TRUE(go->IsDone());
  EXPECT_EQ(count, 3);
}

TEST(Callbacks, NestOnlySoDeepAndTheRefusedWriteChangesNothing) {
  TestMap map("<Integer Name=\"X\"><Value>0</Value></Integer>");
  IInteger* x = map.integer("X");
  int calls = 0;
  Register(map.node("X"), [&](INode*) {
    ++calls;
    x->SetValue(x->GetValue() + 1);
  });
  EXPECT_THROW(x->SetValue(1), LogicalErrorException);
  EXPECT_EQ(calls, 64);
  EXPECT_EQ(x->GetValue(), 64);
  EXPECT_TRUE(othersGetTheLock(map.map));

  // Outside the lock it is the same depth.
  TestMap other("<Integer Name=\"X\"><Value>0</Value></Integer>");
  IInteger* y = other.integer("X");
  int outside = 0;
  other.node("X")->RegisterCallback(make_NodeCallback(
      other.node("X"),
      [&](INode*) {
        ++outside;
        y->SetValue(y->GetValue() + 1);
      },
      cbPostOutsideLock));
  EXPECT_THROW(y->SetValue(1), LogicalErrorException);
  EXPECT_EQ(outside, 64);
}

TEST(Callbacks, ThatThrowDoNotStopTheOthers) {
  TestMap map("<Integer Name=\"X\"><Value>0</Value></Integer>");
  std::string story;
  const auto add = [&](const char* name, ECallbackType type) {
    map.node("X")->RegisterCallback(make_NodeCallback(
        map.node("X"),
        [&story, name](INode*) {
          story += name;
          throw std::runtime_error(name);
        },
        type));
  };
  add("outside-1 ", cbPostOutsideLock);
  add("inside-1 ", cbPostInsideLock);
  add("inside-2 ", cbPostInsideLock);
  add("outside-2 ", cbPostOutsideLock);
  EXPECT_EQ(refusal<std::runtime_error>([&] { map.integer("X")->SetValue(1); }), "inside-1 ");
  EXPECT_EQ(story, "inside-1 inside-2 outside-1 outside-2 ");
  EXPECT_EQ(map.integer("X")->GetValue(), 1) << "the write itself has happened";
  EXPECT_TRUE(othersGetTheLock(map.map));
}

TEST(Callbacks, OfWhatAPortChangesInTheMiddleOfAReadFireAtItsEnd) {
  TestMap map("<Integer Name=\"Counter\"><Value>0</Value></Integer>" + reg("IntReg", "Raw", 0, 4));
  CallLog log;
  log.watch(map, {"Counter", "Raw"});
  map.port.onRead = [&](int64_t, int64_t) {
    map.integer("Counter")->SetValue(map.integer("Counter")->GetValue() + 1);
    map.integer("Counter")->SetValue(map.integer("Counter")->GetValue() + 1);
    EXPECT_THAT(log.take(), IsEmpty()) << "not before the outermost call ends";
  };
  map.integer("Raw")->GetValue();
  EXPECT_THAT(log.take(), ElementsAre("Counter"));
  EXPECT_EQ(map.integer("Counter")->GetValue(), 2);
}

}  // namespace
