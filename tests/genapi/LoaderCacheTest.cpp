// Descriptions are shared by all who load the same text, and by nobody longer than they are used.
#include <gtest/gtest.h>

#include <thread>

#include "LoaderSnippets.h"

using namespace loading;

namespace {

std::string uniqueText() {
  static int number = 0;
  return described("<Node Name='Cached" + std::to_string(++number) + "'/>");
}

TEST(LoaderCache, TheSameTextIsTheSameDescriptionWhileItIsUsed) {
  const std::string text = uniqueText();
  Loaded first = loadText(text);
  EXPECT_EQ(loadText(text), first);
  EXPECT_EQ(first->sourceText(), text);
  EXPECT_NE(loadText(text + "\n"), first);
  clearDescriptionCache();
  EXPECT_EQ(loadText(text), first) << "what is in use stays";
  const std::weak_ptr<const Description> watched = first;
  first.reset();
  EXPECT_TRUE(watched.expired());
  clearDescriptionCache();
  EXPECT_NE(loadText(text), nullptr);
}

TEST(LoaderCache, FailedLoadsLeaveNothingBehind) {
  const std::string text = described("<Node/>");
  const std::string reason = textFault(text);
  EXPECT_EQ(textFault(text), reason);
  EXPECT_NE(reason, "");
}

TEST(LoaderCache, ThreadsThatLoadTheSameTextShareOneDescription) {
  constexpr int kThreads = 8, kRounds = 50;
  for (int round = 0; round < kRounds; ++round) {
    const std::string text = uniqueText();
    std::vector<Loaded> loaded(kThreads);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
      threads.emplace_back([&, i] { loaded[static_cast<size_t>(i)] = loadText(text); });
    for (std::thread& thread : threads) thread.join();
    for (const Loaded& description : loaded) EXPECT_EQ(description, loaded[0]);
  }
}

TEST(LoaderCache, ThreadsMayAskForTheGraphAtOnce) {
  const Loaded description =
      load("<Integer Name='A'><Value>1</Value></Integer><Integer Name='B'><pValue>A</pValue></Integer>");
  std::vector<const DependencyGraph*> graphs(8);
  std::vector<std::thread> threads;
  for (const DependencyGraph*& graph : graphs) {
    threads.emplace_back([&] {
      graph = &description->graph();
      WalkScratch scratch;
      EXPECT_EQ(graph->dependents(0, scratch).size(), 1u);
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const DependencyGraph* graph : graphs) EXPECT_EQ(graph, graphs[0]);
}

}  // namespace
