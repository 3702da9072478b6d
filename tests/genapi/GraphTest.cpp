// Who depends on whom, who selects whom, and what follows for caching.
#include <gtest/gtest.h>

#include <thread>

#include "LoaderSnippets.h"
#include "description/Limits.h"

using namespace loading;

namespace {

using Names = std::vector<std::string>;

// Integers with the elements given, one per name; without any a Value.
std::string integer(const std::string& name, const std::string& elements) {
  const bool source = elements.find("pValue>") != std::string::npos;
  return "<Integer Name='" + name + "'>" + elements + (source ? "" : "<Value>1</Value>") + "</Integer>";
}

std::string link(const std::string& element, const std::string& target) {
  return "<" + element + ">" + target + "</" + element + ">";
}

class Graph {
 public:
  explicit Graph(std::string_view nodes, std::string_view version = "1_1") : description_(load(nodes, version)) {}

  Names dependents(std::string_view node) { return names(graph().dependents(index(node), scratch_)); }
  Names direct(std::string_view node) { return names(graph().directDependents(index(node))); }
  Names parents(std::string_view node) { return names(graph().readingParents(index(node))); }
  Names selected(std::string_view node) { return names(graph().selected(index(node))); }
  Names selecting(std::string_view node) { return names(graph().selecting(index(node))); }
  ECachingMode caching(std::string_view node) { return graph().cachingMode(index(node)); }
  bool accessCacheable(std::string_view node) { return graph().accessModeCacheable(index(node)); }
  bool isFeature(std::string_view node) { return graph().isFeature(index(node)); }
  const DependencyGraph& graph() { return description_->graph(); }
  const Description& description() { return *description_; }

 private:
  NodeIndex index(std::string_view node) { return description_->indexOf(node); }
  Names names(std::span<const NodeIndex> nodes) {
    Names result;
    for (NodeIndex node : nodes) result.emplace_back(description_->node(node).name());
    return result;
  }

  Loaded description_;
  WalkScratch scratch_;
};

TEST(GraphDependents, SourcesLimitsGuardsAndPortsReachWhoUsesThem) {
  const std::string guard = link("pIsLocked", "E");
  Graph graph(integer("A", link("pValue", "B") + link("pMin", "C") + link("pMax", "D")) + kPort +
              reg("IntReg", "B", guard) + reg("IntReg", "C", guard) + reg("IntReg", "D", guard) + integer("E", ""));
  EXPECT_EQ(graph.dependents("A"), Names{});
  EXPECT_EQ(graph.dependents("B"), Names{"A"});
  EXPECT_EQ(graph.dependents("C"), Names{"A"});
  EXPECT_EQ(graph.dependents("E"), (Names{"A", "B", "C", "D"}));
  EXPECT_EQ(graph.direct("E"), (Names{"B", "C", "D"}));
  EXPECT_EQ(graph.dependents("Device"), (Names{"A", "B", "C", "D"}));
}

TEST(GraphDependents, SelectionAndInvalidatorsCarryOn) {
  Graph graph(integer("A", link("pValue", "D")) + integer("B", link("pValue", "F")) +
              integer("D", link("pInvalidator", "E") + link("pSelected", "F")) +
              integer("E", link("pInvalidator", "D")) + integer("F", "") + integer("G", link("pInvalidator", "E")));
  // A cycle leads back, so D and E depend on themselves.
  EXPECT_EQ(graph.dependents("D"), (Names{"A", "B", "D", "E", "F", "G"}));
  EXPECT_EQ(graph.dependents("E"), (Names{"A", "B", "D", "E", "F", "G"}));
  EXPECT_EQ(graph.dependents("F"), Names{"B"});
  EXPECT_EQ(graph.dependents("B"), Names{});
  EXPECT_EQ(graph.dependents("G"), Names{});
  EXPECT_EQ(graph.dependents("A"), Names{});
}

TEST(GraphDependents, ReadingParentsAreOnlyThoseWhoReadValues) {
  Graph graph(integer("TheNode", link("pInvalidator", "G") + link("pValue", "A") + link("pMin", "B")) +
              integer("A", link("pValue", "C")) + integer("B", "") + integer("C", "") +
              integer("D", link("pValue", "TheNode")) + integer("E", link("pValue", "D")) +
              integer("F", link("pInvalidator", "TheNode")) + integer("G", link("pInvalidator", "H")) +
              integer("H", "") + integer("Copies", link("pValue", "C") + link("pValueCopy", "TheNode")));
  EXPECT_EQ(graph.parents("TheNode"), Names{"D"});
  EXPECT_EQ(graph.parents("C"), (Names{"A", "Copies"}));
  EXPECT_EQ(graph.dependents("TheNode"), (Names{"D", "E", "F", "Copies"}));
}

TEST(GraphDependents, EveryLinkMakesItsEdge) {
  const std::string nodes =
      "<Category Name='Root'><pFeature>X</pFeature></Category>" + integer("X", "") +
      "<Port Name='Device'/>"
      "<String Name='T'><Value/></String><Port Name='Chunk'><pChunkID>T</pChunkID></Port>"
      "<IntReg Name='R'><pIndex pOffset='Off'>X</pIndex><pLength>X</pLength><pPort>Device</pPort></IntReg>" +
      integer("Off", "") +
      "<IntReg Name='K'><IntSwissKnife Name='In'><pVariable Name='V'>X</pVariable><Formula>V</Formula></IntSwissKnife>"
      "<Length>4</Length><pPort>Device</pPort></IntReg>"
      "<Command Name='C'><Value>0</Value><pCommandValue>X</pCommandValue></Command>"
      "<Integer Name='Table'><pIndex>X</pIndex><pValueIndexed Index='1'>Off</pValueIndexed>"
      "<pValueDefault>Off</pValueDefault></Integer>"
      "<Enumeration Name='E'><EnumEntry Name='One'><pIsImplemented>Off</pIsImplemented><Value>1</Value></EnumEntry>"
      "<Value>1</Value></Enumeration>"
      "<Integer Name='Aside'><pError>E</pError><pAlias>X</pAlias><pCastAlias>X</pCastAlias><Value>0</Value></Integer>";
  Graph graph(nodes);
  EXPECT_EQ(graph.direct("X"), (Names{"Root", "R", "_K_In", "C", "Table"}));
  EXPECT_EQ(graph.direct("_K_In"), Names{"K"});
  EXPECT_EQ(graph.direct("Off"), (Names{"R", "Table", "EnumEntry_E_One"}));
  EXPECT_EQ(graph.dependents("EnumEntry_E_One"), Names{"E"});
  EXPECT_EQ(graph.direct("T"), Names{"Chunk"});
  EXPECT_EQ(graph.direct("Device"), (Names{"R", "K"}));
  EXPECT_EQ(graph.direct("E"), Names{});
  EXPECT_EQ(graph.parents("X"), (Names{"Root", "R", "_K_In", "C", "Table"}));
  EXPECT_EQ(graph.parents("EnumEntry_E_One"), Names{"E"});
}

TEST(GraphSelection, SelectedFeaturesComeWithWhoReadsThem) {
  Graph graph(integer("S", link("pSelected", "A") + link("pSelected", "B") + link("pSelected", "C")) +
              integer("AA", link("pValue", "A")) + integer("BB", link("pMax", "B")) +
              integer("AAA", link("pValue", "AA") + link("pMin", "BB")) + integer("A", "") + integer("B", "") +
              "<Category Name='C'><pFeature>A</pFeature><pFeature>S</pFeature></Category>" +
              integer("T", link("pSelected", "B")) + integer("I", link("pInvalidator", "A")));
  EXPECT_EQ(graph.selected("S"), (Names{"A", "B", "C", "AA", "AAA", "BB"}));
  EXPECT_EQ(graph.selected("T"), (Names{"B", "BB", "AAA"}));
  EXPECT_EQ(graph.selected("A"), Names{});
  EXPECT_EQ(graph.selecting("A"), Names{"S"});
  EXPECT_EQ(graph.selecting("AAA"), (Names{"S", "T"}));
  EXPECT_EQ(graph.selecting("BB"), (Names{"S", "T"}));
  // A category is selected by its own name, not because of its features; invalidators carry no selection.
  EXPECT_EQ(graph.selecting("C"), Names{"S"});
  EXPECT_EQ(graph.selecting("I"), Names{});
  EXPECT_EQ(graph.selecting("S"), Names{});
}

TEST(GraphSelection, BothDirectionsAgree) {
  std::string nodes;
  for (int i = 0; i < 60; ++i) {
    const auto other = [&](int step) { return "N" + std::to_string((i * 7 + step * 13) % 60); };
    std::string elements;
    if (i % 3 != 0) elements += link("pMin", other(1)) + link("pMax", other(2));
    if (i % 11 == 0 && i != 0) elements += link("pSelected", "N" + std::to_string(i - 1));
    nodes += integer("N" + std::to_string(i), elements);
  }
  Graph graph(nodes, "1_0");
  size_t pairs = 0;
  for (NodeIndex selector = 0; selector < 60; ++selector) {
    const std::vector<NodeIndex> selected = graph.graph().selected(selector);
    for (NodeIndex node = 0; node < 60; ++node) {
      const std::vector<NodeIndex> selecting = graph.graph().selecting(node);
      const bool forward = std::find(selected.begin(), selected.end(), node) != selected.end();
      const bool backward = std::find(selecting.begin(), selecting.end(), selector) != selecting.end();
      EXPECT_EQ(forward, backward) << selector << " " << node;
      pairs += forward;
    }
  }
  EXPECT_GT(pairs, 20u);
}

TEST(GraphCaching, ModesFollowWhatIsRead) {
  const std::string never = "<Cachable>NoCache</Cachable>", around = "<Cachable>WriteAround</Cachable>";
  Graph graph(kPort + reg("IntReg", "Plain") + reg("IntReg", "Never", never) + reg("FloatReg", "FloatDefault") +
              reg("FloatReg", "FloatThrough", "<Cachable>WriteThrough</Cachable>") +
              reg("IntReg", "Moving", "<pAddress>Never</pAddress>") + integer("Through", link("pValue", "Plain")) +
              integer("OverMoving", link("pValue", "Moving")) + "<Float Name='Held'><Value>1</Value></Float>" +
              "<Float Name='OverHeld'><pValue>Held</pValue></Float>" + integer("HeldInteger", "") +
              reg("IntReg", "Around", around) +
              "<SwissKnife Name='Knife'><pVariable Name='A'>Around</pVariable><pVariable Name='B'>Through</pVariable>"
              "<Formula>A+B</Formula></SwissKnife>"
              "<SwissKnife Name='NeverKnife'><pVariable Name='A'>Knife</pVariable><pVariable Name='B'>OverMoving"
              "</pVariable><Formula>A+B</Formula></SwissKnife>" +
              integer("Guarded", link("pIsLocked", "Never")));
  EXPECT_EQ(graph.caching("Plain"), WriteThrough);
  EXPECT_EQ(graph.caching("Never"), NoCache);
  EXPECT_EQ(graph.caching("FloatDefault"), WriteAround);
  EXPECT_EQ(graph.caching("FloatThrough"), WriteThrough);
  EXPECT_EQ(graph.caching("Moving"), NoCache);
  EXPECT_EQ(graph.caching("Through"), WriteThrough);
  EXPECT_EQ(graph.caching("OverMoving"), NoCache);
  EXPECT_EQ(graph.caching("Held"), WriteAround);
  EXPECT_EQ(graph.caching("OverHeld"), WriteAround);
  EXPECT_EQ(graph.caching("HeldInteger"), WriteThrough);
  EXPECT_EQ(graph.caching("Knife"), WriteAround);
  EXPECT_EQ(graph.caching("NeverKnife"), NoCache);
  EXPECT_EQ(graph.caching("Guarded"), WriteThrough);
}

TEST(GraphCaching, AccessModesDependOnGuardsNotOnTheOwnCaching) {
  const std::string never = "<Cachable>NoCache</Cachable>";
  Graph graph(kPort + reg("IntReg", "Plain") + reg("IntReg", "Never", never + link("pIsLocked", "Plain")) +
              integer("Locked", link("pIsLocked", "Never")) + integer("OverLocked", link("pValue", "Locked")) +
              integer("Limited", link("pMax", "Locked")) + integer("OverNever", link("pValue", "Never")) +
              "<IntSwissKnife Name='K'><pVariable Name='V'>OverLocked</pVariable><Formula>V</Formula></IntSwissKnife>"
              "<Enumeration Name='E'><EnumEntry Name='X'><pIsAvailable>Never</pIsAvailable><Value>1</Value></EnumEntry>"
              "<Value>1</Value></Enumeration>");
  EXPECT_TRUE(graph.accessCacheable("Never"));
  EXPECT_TRUE(graph.accessCacheable("OverNever"));
  EXPECT_TRUE(graph.accessCacheable("Limited"));
  EXPECT_FALSE(graph.accessCacheable("Locked"));
  EXPECT_FALSE(graph.accessCacheable("OverLocked"));
  EXPECT_FALSE(graph.accessCacheable("K"));
  EXPECT_FALSE(graph.accessCacheable("EnumEntry_E_X"));
  EXPECT_FALSE(graph.accessCacheable("E"));
}

TEST(GraphFeatures, FeaturesAreReachedFromRoot) {
  Graph graph(
      "<Category Name='Root'><pFeature>Sub</pFeature></Category><Category Name='Sub'><pFeature>A</pFeature></Category>"
      "<Category Name='Lost'><pFeature>B</pFeature></Category>" +
      integer("A", link("pValue", "C")) + integer("B", "") + integer("C", ""));
  EXPECT_TRUE(graph.isFeature("Sub") && graph.isFeature("A"));
  for (const char* other : {"Root", "Lost", "B", "C"}) EXPECT_FALSE(graph.isFeature(other)) << other;
  Graph noCategory(integer("Root", "") + integer("A", ""));
  EXPECT_FALSE(noCategory.isFeature("A"));
}

// Long chains must not need the stack, nor more memory than the budget.
TEST(GraphLimits, LongChainsAreWalked) {
  constexpr int kNodes = 10000;
  std::string nodes = integer("N0", "");
  for (int i = 1; i < kNodes; ++i)
    nodes += integer("N" + std::to_string(i), link("pValue", "N" + std::to_string(i - 1)));
  nodes += integer("S", link("pSelected", "N0"));
  Graph graph(nodes);
  EXPECT_EQ(graph.graph().selected(kNodes).size(), size_t{kNodes});
  EXPECT_EQ(graph.selecting("N9999"), Names{"S"});
  // 10,000 closures of 5,000 nodes on average are 200 MB: most of them are walked anew each time.
  static_assert(size_t{kNodes} * kNodes / 2 * sizeof(NodeIndex) > kMaxClosureBytes);
  WalkScratch scratch;
  for (int round = 0; round < 2; ++round) {
    for (NodeIndex node = 0; node < kNodes; node += 97) {
      const std::span<const NodeIndex> dependents = graph.graph().dependents(node, scratch);
      ASSERT_EQ(dependents.size(), kNodes - 1 - node);
      EXPECT_TRUE(dependents.empty() || (dependents.front() == node + 1 && dependents.back() == kNodes - 1));
    }
  }
}

TEST(GraphLimits, ThreadsShareClosures) {
  std::string nodes = integer("N0", "");
  for (int i = 1; i < 200; ++i) nodes += integer("N" + std::to_string(i), link("pValue", "N" + std::to_string(i - 1)));
  Graph graph(nodes);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      WalkScratch scratch;
      for (NodeIndex node = 0; node < 200; ++node) {
        EXPECT_EQ(graph.graph().dependents(node, scratch).size(), 199u - node);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
