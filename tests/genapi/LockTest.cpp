// The lock of a node map, and threads that share a map or a description.
#include <atomic>
#include <latch>
#include <thread>

#include "NodeNames.h"

namespace {

constexpr int kThreads = 4;

// Runs the body in four threads at once, with the number of the thread.
template <class Body>
void inThreads(Body&& body) {
  std::latch start(kThreads);
  std::vector<std::thread> threads;
  for (int number = 0; number < kThreads; ++number) {
    threads.emplace_back([&, number] {
      start.arrive_and_wait();
      body(number);
    });
  }
  for (std::thread& each : threads) each.join();
}

bool othersGet(CLock& lock) {
  bool got = false;
  std::thread([&] {
    got = lock.TryLock();
    if (got) lock.Unlock();
  }).join();
  return got;
}

TEST(Locks, AreRecursiveAndExclusive) {
  CLock lock;
  EXPECT_TRUE(lock.TryLock());
  EXPECT_TRUE(lock.TryLock());
  lock.Lock();
  EXPECT_FALSE(othersGet(lock));
  lock.Unlock();
  lock.Unlock();
  EXPECT_FALSE(othersGet(lock));
  lock.Unlock();
  EXPECT_TRUE(othersGet(lock));
  {
    const AutoLock outer(lock);
    const AutoLock inner(lock);
    EXPECT_FALSE(othersGet(lock));
  }
  EXPECT_TRUE(othersGet(lock));
}

// A bit of everything.
const std::string kBusyMap = R"(
  <Category Name="Root"><pFeature>Width</pFeature><pFeature>Gain</pFeature><pFeature>Mode</pFeature></Category>
  <Integer Name="Width"><pIsLocked>Locked</pIsLocked><pValue>WidthReg</pValue><pMax>WidthMax</pMax>
    <Unit>px</Unit></Integer>
  <IntSwissKnife Name="WidthMax"><pVariable Name="M">Mode</pVariable><Formula>1000 + M</Formula></IntSwissKnife>
  <Converter Name="Gain"><FormulaTo>FROM * 10</FormulaTo><FormulaFrom>TO / 10</FormulaFrom><pValue>GainReg</pValue>
  </Converter>
  <Enumeration Name="Mode"><EnumEntry Name="Slow"><Value>0</Value></EnumEntry>
    <EnumEntry Name="Fast"><Value>1</Value></EnumEntry><pValue>ModeReg</pValue><pSelected>Width</pSelected></Enumeration>
  <Command Name="Go"><pValue>GoReg</pValue><CommandValue>1</CommandValue><PollingTime>1</PollingTime></Command>
  <Boolean Name="Locked"><Value>false</Value></Boolean>
  <String Name="Note"><pValue>NoteReg</pValue></String>)" +
                             reg("IntReg", "WidthReg", 0, 4) + reg("IntReg", "GainReg", 4, 4) +
                             reg("IntReg", "ModeReg", 8, 4) + reg("IntReg", "GoReg", 12, 4) +
                             reg("StringReg", "NoteReg", 16, 8) +
                             reg("IntReg", "Clock", 24, 4, "<PollingTime>2</PollingTime>");

// Uses every sort of call; the results must make sense whatever other threads do meanwhile.
void useEverything(TestMap& map, int number, int rounds) {
  std::atomic<int> called{0};
  for (int i = 0; i < rounds; ++i) {
    const CallbackHandleType handle = Register(map.node("Width"), [&](INode*) { ++called; });
    map.integer("Width")->SetValue(number * 100 + i % 50);
    EXPECT_GE(called, 1);
    EXPECT_LT(map.integer("Width")->GetValue(), 1000);
    EXPECT_GE(map.integer("Width")->GetMax(), 1000);
    map.real("Gain")->SetValue(number + 0.5);
    const double gain = map.real("Gain")->GetValue();
    EXPECT_EQ(gain - static_cast<int>(gain), 0.5);
    map.value("Mode")->FromString(i % 2 ? "Fast" : "Slow");
    EXPECT_NE(map.enumeration("Mode")->GetCurrentEntry(), nullptr);
    map.command("Go")->Execute();
    map.command("Go")->IsDone();
    map.map->Poll(1);
    map.text("Note")->SetValue(number % 2 ? "odd" : "even");
    const std::string note = map.text("Note")->GetValue().c_str();
    EXPECT_TRUE(note == "odd" || note == "even") << note;
    map.integer("Clock")->GetValue(false, true);
    if (i % 8 == 0) map.map->InvalidateNodes();
    if (i % 8 == 4) map.node("Mode")->ImposeAccessMode(RW);
    NodeList_t nodes;
    map.map->GetNodes(nodes);
    gcstring_vector names;
    for (INode* each : nodes) {
      each->GetAccessMode();
      each->GetChildren(nodes, ctDependingNodes);
      each->GetPropertyNames(names);
      each->GetVisibility();
      break;
    }
    EXPECT_TRUE(map.node("Width")->DeregisterCallback(handle));
    const int before = called;
    map.node("Locked")->InvalidateNode();
    EXPECT_EQ(called, before) << "not called after its end";
  }
}

TEST(Threads, ShareAMap) {
  TestMap map(kBusyMap);
  // Nodes are made at their first use, here by whoever comes first.
  inThreads([&](int number) { useEverything(map, number, 60); });
}

TEST(Threads, WorkOnMapsOfOneDescription) {
  std::vector<std::unique_ptr<TestMap>> maps(kThreads);
  for (auto& each : maps) each = std::make_unique<TestMap>(kBusyMap);
  inThreads([&](int number) { useEverything(*maps[static_cast<size_t>(number)], number, 60); });
}

TEST(Threads, LoadAndEndMapsAtTheSameTime) {
  inThreads([&](int number) {
    for (int i = 0; i < 8; ++i) {
      TestMap map(kBusyMap);
      std::vector<std::string> errors;
      EXPECT_TRUE(map.map->ParseSwissKnifes());
      useEverything(map, number, 2);
    }
  });
}

TEST(Threads, NeverWaitForAnotherMap) {
  // One device hangs; the map of another one answers meanwhile.
  TestMap slow(reg("IntReg", "Raw", 0, 4)), quick(reg("IntReg", "Raw", 0, 4));
  std::latch asked(1), mayAnswer(1);
  slow.port.onRead = [&](int64_t, int64_t) {
    asked.count_down();
    mayAnswer.wait();
  };
  std::thread reader([&] { slow.integer("Raw")->GetValue(); });
  asked.wait();
  quick.integer("Raw")->SetValue(3);
  EXPECT_EQ(quick.integer("Raw")->GetValue(), 3);
  // What the description says of the slow map needs no lock either.
  EXPECT_STREQ(slow.node("Raw")->GetName(), "Raw");
  EXPECT_STREQ(slow.node("Raw")->GetDisplayName(), "Raw");
  EXPECT_FALSE(slow.node("Raw")->IsStreamable());
  NodeList_t nodes;
  slow.map->GetNodes(nodes);
  EXPECT_EQ(nodes.size(), 2U);
  mayAnswer.count_down();
  reader.join();
}

}  // namespace
