// Dependents of long chains, and threads that ask for them.
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
};

// N0, N1 that reads it, and so on.
std::string chain(int length) {
  std::string nodes = integer("N0", "");
  for (int i = 1; i < length; ++i)
    nodes += integer("N" + std::to_string(i), link("pValue", "N" + std::to_string(i - 1)));
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
      for (NodeIndex node = 0; node < 200; ++node)
        EXPECT_EQ(graph.graph().dependents(node, scratch).size(), 199u - node);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
