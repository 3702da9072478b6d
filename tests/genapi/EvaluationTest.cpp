// What an evaluation costs, how deep it may go, and what check mode finds.
#include <pthread.h>

#include "GenApi/CacheCheck.h"
#include "TestMap.h"
#include "nodemap/NodeMap.h"

namespace {

std::string numbered(const char* name, int number) { return name + std::to_string(number); }

constexpr const char* kNoCache = "<Cachable>NoCache</Cachable>";

// --- webs: each node refers to the one below it more than once ---

struct Web {
  const char* kind;
  std::string (*layer)(const std::string& name, const std::string& below);
};

std::string twoVariables(const std::string& name, const std::string& a, const std::string& b) {
  return "<IntSwissKnife Name='" + name + "'><pVariable Name='" + a + "'>" + a.substr(0, a.find('.')) +
         "</pVariable><pVariable Name='" + b + "'>" + b.substr(0, b.find('.')) + "</pVariable><Formula>" + a + " + " +
         b + "</Formula></IntSwissKnife>";
}

const Web kWebs[] = {
    {"variables",
     [](const std::string& name, const std::string& below) {
       return "<IntSwissKnife Name='" + name + "'><pVariable Name='A'>" + below + "</pVariable><pVariable Name='B'>" +
              below + "</pVariable><Formula>(A + B) &amp; 255</Formula></IntSwissKnife>";
     }},
    {"guards",
     [](const std::string& name, const std::string& below) {
       return held(name, 1, tag("pIsImplemented", below) + tag("pIsAvailable", below) + tag("pIsLocked", below));
     }},
    {"converters",
     [](const std::string& name, const std::string& below) {
       return "<IntConverter Name='" + name + "'><pVariable Name='V'>" + below +
              "</pVariable><FormulaTo>FROM + 0 * V</FormulaTo><FormulaFrom>(TO + V) &amp; 255</FormulaFrom>" +
              tag("pValue", below) + "</IntConverter>";
     }},
    {"tables",
     [](const std::string& name, const std::string& below) {
       return "<Integer Name='" + name + "'>" + tag("pIndex", below) + "<pValueIndexed Index='0'>" + below +
              "</pValueIndexed>" + tag("pValueDefault", below) + "</Integer>";
     }},
    {"addresses",
     [](const std::string& name, const std::string& below) {
       return "<IntReg Name='" + name + "'>" + tag("pAddress", below) + tag("pAddress", below) +
              "<Length>1</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>" + kNoCache + "</IntReg>";
     }},
    {"limits", [](const std::string& name,
                  const std::string& below) { return twoVariables(name, below + ".Max", below + ".Min"); }},
};

TEST(Evaluation, OneCallComputesEveryQuestionOnceAndReadsEveryPlaceOnce) {
  for (const Web& web : kWebs) {
    for (const int depth : {8, 16, 30}) {
      SCOPED_TRACE(web.kind + std::string(", depth ") + std::to_string(depth));
      std::string nodes = reg("IntReg", "N0", 0, 1, kNoCache);
      for (int i = 1; i <= depth; ++i) nodes += web.layer(numbered("N", i), numbered("N", i - 1));
      TestMap t(nodes);
      const auto top = t.integer(numbered("N", depth));
      const auto eachPlaceOnce = [&] {
        int most = 0;
        for (const auto& [place, count] : std::exchange(t.port.reads, {})) most = std::max(most, count);
        EXPECT_LE(most, 1);
      };
      t.mode(numbered("N", depth));
      eachPlaceOnce();
      try {
        top->GetValue(true);
      } catch (const GenericException&) {  // guards of zeros: not there
      }
      eachPlaceOnce();
      top->GetMax();
      eachPlaceOnce();
      top->GetInc();
      eachPlaceOnce();
      top->GetUnit();
      top->GetRepresentation();
      eachPlaceOnce();
      const uint64_t before = dynamic_cast<NodeMap*>(t.map)->visits();
      try {
        top->SetValue(0, false);
      } catch (const GenericException&) {
      }
      EXPECT_LE(dynamic_cast<NodeMap*>(t.map)->visits() - before, 300U * static_cast<unsigned>(depth));
    }
  }
}

TEST(Evaluation, WritesThatFanOutEndWithTheirPath) {
  std::string nodes = reg("IntReg", "N0", 0, 1);
  for (int i = 1; i <= 30; ++i)
    nodes += over(numbered("N", i), numbered("N", i - 1), tag("pValueCopy", numbered("N", i - 1)));
  TestMap t(nodes);
  EXPECT_THAT(refusal<RuntimeException>([&] { t.integer("N30")->SetValue(7); }),
              testing::AllOf(testing::StartsWith("N30 > N29 > "),
                             testing::HasSubstr("one call wrote to nodes more than 65536 times")));
  EXPECT_EQ(t.port.memory[0], 7) << "what was written stays written";
  t.integer("N8")->SetValue(9);
  EXPECT_EQ(t.integer("N30")->GetValue(), 9);
}

// What settings are saved and loaded with: one selector, written before each of its features is read or written.
TEST(Evaluation, SelectedFeaturesCostTheSameHoweverManyThereAre) {
  uint64_t visits[3] = {};
  for (int i = 0; i < 3; ++i) {
    const int features = 400 << i;
    std::string nodes = reg("IntReg", "SelectorReg", 0, 4), selected;
    for (int each = 0; each < features; ++each) {
      const std::string name = numbered("F", each);
      nodes += reg("IntReg", name, 4 + 2 * each, 1, "<pIndex Offset=\"1\">SelectorReg</pIndex>");
      selected += tag("pSelected", name);
    }
    TestMap t(nodes + over("Selector", "SelectorReg", selected));
    const auto selector = t.integer("Selector");
    const auto walk = [&] {
      for (int each = 0; each < features; ++each) {
        const auto feature = t.integer(numbered("F", each));
        for (int value = 0; value < 2; ++value) {
          selector->SetValue(value);
          feature->SetValue(each % 100 + value);
        }
        selector->SetValue(0);
        EXPECT_EQ(feature->GetValue(), each % 100);
      }
    };
    walk();
    visits[i] = dynamic_cast<NodeMap*>(t.map)->visits();
    walk();
    visits[i] = dynamic_cast<NodeMap*>(t.map)->visits() - visits[i];
  }
  EXPECT_LE(visits[1], visits[0] * 5 / 2);
  EXPECT_LE(visits[2], visits[1] * 5 / 2);
}

// Answers of nodes in circles; all must come out the same whoever is asked first, and in linear time.
TEST(Evaluation, CirclesOfGuardsAreLinearAndDoNotDependOnWhoIsAskedFirst) {
  constexpr int kNodes = 40;
  std::string nodes = reg("IntReg", "Open", 0, 1, kNoCache);
  for (int i = 0; i < kNodes; ++i) {
    nodes += held(numbered("N", i), 1,
                  tag("pIsImplemented", numbered("N", (i + 1) % kNodes)) +
                      tag("pIsAvailable", i == kNodes / 2 ? "Open" : numbered("N", (i + 2) % kNodes)) +
                      tag("pIsLocked", numbered("N", (i + 3) % kNodes)));
  }
  std::string seen[2];
  for (const int first : {0, 17}) {
    TestMap t(nodes, 0);
    for (int i = 0; i < kNodes; ++i) t.mode(numbered("N", (first + i) % kNodes));
    EXPECT_LE(BytePort::total(t.port.reads), kNodes);
    for (int i = 0; i < kNodes; ++i) seen[first != 0] += std::to_string(t.mode(numbered("N", i)));
  }
  EXPECT_EQ(seen[0], seen[1]);
}

// --- depth ---

void runOnSmallStack(const std::function<void()>& work) {
#ifdef NDEBUG
  constexpr size_t kStack = 256 << 10;
#else
  constexpr size_t kStack = 8 << 20;  // without the optimiser, or with sanitizers, it takes several times as much
#endif
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, kStack), 0);
  pthread_t thread;
  const auto run = [](void* what) -> void* {
    (*static_cast<const std::function<void()>*>(what))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&work)), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

TEST(Evaluation, WhatTheLimitsAllowRunsOnAStackOf256Kilobytes) {
  constexpr int kDepth = 500;
  for (const Web& web : kWebs) {
    SCOPED_TRACE(web.kind);
    std::string nodes = reg("IntReg", "N0", 0, 1, kNoCache);
    for (int i = 1; i <= kDepth; ++i) nodes += web.layer(numbered("N", i), numbered("N", i - 1));
    TestMap t(nodes);
    runOnSmallStack([&] {
      for (const auto& question : std::initializer_list<std::function<void()>>{
               [&] { t.mode("N500"); }, [&] { t.integer("N500")->GetValue(true); },
               [&] { t.integer("N500")->GetMax(); }, [&] { t.integer("N500")->SetValue(0); }}) {
        try {
          question();
        } catch (const GenericException&) {  // too deep, or not there; but no crash
        }
      }
    });
  }
}

TEST(Evaluation, PortsThatCallBackWithoutEndAreRefused) {
  TestMap t(reg("IntReg", "A", 0, 1, kNoCache));
  int depth = 0;
  t.port.onRead = [&](int64_t, int64_t) {
    ++depth;
    t.integer("A")->GetValue();
  };
  runOnSmallStack([&] {
    EXPECT_THAT(refusal<LogicalErrorException>([&] { t.integer("A")->GetValue(); }),
                testing::HasSubstr("more than 64 operations"));
  });
  EXPECT_EQ(depth, 65);
  t.port.onRead = nullptr;
  EXPECT_EQ(t.integer("A")->GetValue(), 0);
}

// --- check mode ---

struct Differences final : ICacheCheck {
  void OnDifference(const CacheDifference& difference) override {
    const auto bytes = [](const std::vector<uint8_t>& all) { return all.empty() ? -1 : all[0]; };
    found.push_back(difference.node.c_str() + std::string("@") + std::to_string(difference.address) + ": " +
                    std::to_string(bytes(difference.remembered)) + ", read " + std::to_string(bytes(difference.read)));
  }
  std::vector<std::string> found;
};

TEST(CheckMode, FindsAnswersThatTheDeviceDoesNotConfirm) {
  TestMap t(over("Width", "WidthReg") + reg("IntReg", "WidthReg", 0, 1) + reg("IntReg", "Steady", 1, 1) +
            knife("Double", "Width", "X * 2"));
  Differences differences;
  t.integer("Double")->GetValue();
  t.integer("Steady")->GetValue();
  auto* checked = dynamic_cast<ICheckedNodeMap*>(t.map);
  checked->SetCacheCheck(&differences);
  EXPECT_EQ(t.integer("Double")->GetValue(), 0);
  EXPECT_TRUE(differences.found.empty());
  t.port.poke(0, {5});
  EXPECT_EQ(t.integer("Double")->GetValue(), 0) << "answers stay what they are without the check";
  EXPECT_EQ(t.integer("Steady")->GetValue(), 0);
  EXPECT_THAT(std::exchange(differences.found, {}), testing::ElementsAre("WidthReg@0: 0, read 5"));
  t.port.onRead = [](int64_t, int64_t) { throw TIMEOUT_EXCEPTION("gone"); };
  EXPECT_EQ(t.integer("Width")->GetValue(), 0);
  EXPECT_THAT(std::exchange(differences.found, {}), testing::ElementsAre("WidthReg@0: 0, read -1"));
  t.port.onRead = nullptr;
  t.node("WidthReg")->InvalidateNode();
  EXPECT_EQ(t.integer("Double")->GetValue(), 10);
  checked->SetCacheCheck(nullptr);
  t.port.poke(0, {6});
  EXPECT_EQ(t.integer("Double")->GetValue(), 10);
  EXPECT_TRUE(differences.found.empty());
}

}  // namespace
