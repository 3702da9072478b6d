// Who depends on whom and who selects whom.
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
  Names selecting(std::string_view node) { return names(graph().selecting(index(node))); }
  const DependencyGraph& graph() { return description_->graph(); }

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
      "<Integer Name='Copies'><pValue>Off</pValue><pValueCopy>X</pValueCopy></Integer>"
      "<Integer Name='Aside'><pError>E</pError><pAlias>X</pAlias><pCastAlias>X</pCastAlias><Value>0</Value></Integer>";
  Graph graph(nodes);
  EXPECT_EQ(graph.direct("X"), (Names{"Root", "R", "_K_In", "C", "Table", "Copies"}));
  EXPECT_EQ(graph.direct("_K_In"), Names{"K"});
  EXPECT_EQ(graph.direct("Off"), (Names{"R", "Table", "EnumEntry_E_One", "Copies"}));
  EXPECT_EQ(graph.dependents("EnumEntry_E_One"), Names{"E"});
  EXPECT_EQ(graph.direct("T"), Names{"Chunk"});
  EXPECT_EQ(graph.direct("Device"), (Names{"R", "K"}));
  EXPECT_EQ(graph.direct("E"), Names{});
  EXPECT_EQ(graph.parents("X"), (Names{"Root", "R", "_K_In", "C", "Table"}));
  EXPECT_EQ(graph.parents("EnumEntry_E_One"), Names{"E"});
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

TEST(GraphFeatures, NeedARootThatIsACategory) {
  Graph graph(integer("Root", "") + integer("A", ""));
  EXPECT_FALSE(graph.graph().isFeature(0) || graph.graph().isFeature(1));
}

// N0, N1 that reads it, and so on.
std::string chain(int length) {
  std::string nodes = integer("N0", "");
  for (int i = 1; i < length; ++i) {
    nodes += integer("N" + std::to_string(i), link("pValue", "N" + std::to_string(i - 1)));
  }
  return nodes;
}

// Long chains must not need the stack, nor more memory than the budget.
TEST(GraphLimits, LongChainsAreWalked) {
  constexpr int kNodes = 10000;
  Graph graph(chain(kNodes) + integer("S", link("pSelected", "N0")));
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
  Graph graph(chain(200));
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
