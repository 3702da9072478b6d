// How often reading every feature asks the device: what may be cached once, what may not be cached once per evaluation
// that needs it, and nothing for metadata. The expected accesses are worked out from the description.
#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "SweepWalk.h"
#include "description/DescriptionLoader.h"

namespace {

// A node map whose ports are all connected.
struct ConnectedMap {
  ConnectedMap(CNodeMapFactory factory, const Description& description, bool patterned) : map(factory.CreateNodeMap()) {
    for (NodeIndex node = 0; node < description.nodeCount(); ++node) {
      if (description.node(node).type != NodeType::Port) continue;
      map->Connect(&ports.try_emplace(node, patterned).first->second, gcstring(description.node(node).name()));
    }
  }
  ~ConnectedMap() { dynamic_cast<IDestroy*>(map)->Destroy(); }
  ConnectedMap(const ConnectedMap&) = delete;
  ConnectedMap& operator=(const ConnectedMap&) = delete;

  // What was read since the last look.
  std::map<SweepWalk::Place, int> reads() {
    std::map<SweepWalk::Place, int> all;
    for (auto& [node, port] : ports) {
      for (const auto& [access, count] : std::exchange(port.reads, {})) all[{node, access}] = count;
    }
    return all;
  }

  std::map<NodeIndex, EndlessPort> ports;
  INodeMap* map;
};

void readFeature(INode* node) {
  const auto asked = [](auto&& question) {
    try {
      question();
    } catch (const GenericException&) {  // that a camera without content cannot answer everything is no matter here
    }
  };
  bool readable = false;
  asked([&] { readable = IsReadable(node->GetAccessMode()); });
  if (!readable) return;
  const auto readNumber = [&](auto* number) {
    asked([&] { number->GetValue(); });
    asked([&] { number->GetMin(); });
    asked([&] { number->GetMax(); });
  };
  if (auto* integer = dynamic_cast<IInteger*>(node)) return readNumber(integer);
  if (auto* real = dynamic_cast<IFloat*>(node)) return readNumber(real);
  asked([&] {
    if (auto* boolean = dynamic_cast<IBoolean*>(node)) return static_cast<void>(boolean->GetValue());
    if (auto* enumeration = dynamic_cast<IEnumeration*>(node)) return static_cast<void>(enumeration->GetIntValue());
    dynamic_cast<IValue*>(node)->ToString();
  });
}

// Types, names, texts, entries, units, relations.
void readMetadata(INode* node) {
  node->GetName();
  node->GetPrincipalInterfaceType();
  node->GetDisplayName();
  node->GetToolTip();
  node->GetDescription();
  node->GetVisibility();
  node->GetCachingMode();
  node->IsStreamable();
  NodeList_t nodes;
  for (const ELinkType each : {ctParentNodes, ctReadingChildren, ctWritingChildren, ctInvalidatingChildren,
                               ctDependingNodes, ctTerminalNodes}) {
    node->GetChildren(nodes, each);
  }
  FeatureList_t features;
  dynamic_cast<ISelector*>(node)->GetSelectedFeatures(features);
  dynamic_cast<ISelector*>(node)->GetSelectingFeatures(features);
  if (auto* integer = dynamic_cast<IInteger*>(node)) integer->GetUnit(), integer->GetRepresentation();
  if (auto* real = dynamic_cast<IFloat*>(node))
    real->GetUnit(), real->GetDisplayNotation(), real->GetDisplayPrecision();
  if (auto* enumeration = dynamic_cast<IEnumeration*>(node)) enumeration->GetEntries(nodes);
}

// One line for each place that was read more or less often than expected.
std::string difference(const Description& description, const std::map<SweepWalk::Place, int>& seen,
                       const std::map<SweepWalk::Place, int>& expected) {
  std::map<SweepWalk::Place, std::pair<int, int>> counts;
  for (const auto& [place, count] : seen) counts[place].first = count;
  for (const auto& [place, count] : expected) counts[place].second = count;
  std::string text;
  for (const auto& [place, count] : counts) {
    if (count.first == count.second) continue;
    text += std::string(description.node(place.first).name()) + " " + std::to_string(place.second.first) + ", " +
            std::to_string(place.second.second) + " bytes: " + std::to_string(count.first) + " reads, not " +
            std::to_string(count.second) + "\n";
  }
  return text;
}

void sweepTwice(const CNodeMapFactory& factory, const Description& description, bool patterned) {
  SCOPED_TRACE(patterned ? "patterned memory" : "zero memory");
  ConnectedMap device(factory, description, patterned), oracle(factory, description, patterned);
  std::vector<NodeIndex> features;
  std::vector<INode*> nodes;
  for (NodeIndex node = 0; node < description.nodeCount(); ++node) {
    INode* each = device.map->GetNode(gcstring(description.node(node).name()));
    readMetadata(each);
    if (!each->IsFeature() || !dynamic_cast<IValue*>(each) || dynamic_cast<ICategory*>(each)) continue;
    features.push_back(node);
    nodes.push_back(each);
  }
  EXPECT_EQ(difference(description, device.reads(), {}), "") << "metadata";
  SweepWalk walk(description, *oracle.map);
  for (const char* which : {"cold sweep", "second sweep"}) {
    for (INode* each : nodes) readFeature(each);
    const auto expected = walk.sweep(features);
    EXPECT_EQ(difference(description, device.reads(), expected), "") << which;
  }
}

}  // namespace

TEST(Sweep, ReadsEachPlaceOnceAndWhatMayNotBeCachedWheneverItIsNeeded) {
  const std::string nodes =
      reg("IntReg", "A", 0, 4) + reg("MaskedIntReg", "Bits", 0, 4, "<LSB>0</LSB><MSB>3</MSB>") +
      reg("IntReg", "Live", 4, 2, tag("Cachable", "NoCache")) +
      "<Integer Name='OverLive'><pIsLocked>Live</pIsLocked><pValue>A</pValue><pMax>Live</pMax></Integer>"
      "<Integer Name='Guarded'><pIsAvailable>Live</pIsAvailable><pValue>Bits</pValue></Integer>"
      "<IntSwissKnife Name='Lazy'><pVariable Name='L'>Live</pVariable><pVariable Name='B'>A</pVariable>"
      "<Formula>B &lt; 1000000 ? 1 : L</Formula></IntSwissKnife>"
      "<Converter Name='C'><pVariable Name='L'>Live</pVariable><FormulaTo>FROM</FormulaTo><FormulaFrom>TO+L"
      "</FormulaFrom><pValue>A</pValue></Converter>"
      "<Command Name='Go'><pValue>A</pValue><CommandValue>1</CommandValue></Command>"
      "<Enumeration Name='E'><EnumEntry Name='Once'><Value>0</Value><IsSelfClearing>Yes</IsSelfClearing></EnumEntry>"
      "<EnumEntry Name='More'><Value>1</Value></EnumEntry><pValue>S</pValue></Enumeration>" +
      reg("IntReg", "S", 8, 1) +
      "<Integer Name='Table'><pIndex>Bits</pIndex><pValueIndexed "
      "Index='0'>S</pValueIndexed><pValueDefault>Live"
      "</pValueDefault></Integer>"
      "<Category Name='Root'><pFeature>OverLive</pFeature><pFeature>Guarded</pFeature><pFeature>Lazy</pFeature>"
      "<pFeature>C</pFeature><pFeature>Go</pFeature><pFeature>E</pFeature><pFeature>Table</pFeature></Category>";
  const std::string text = description(nodes);
  const auto loaded = loadDescriptionText(text, ContentType_Auto);
  for (const bool patterned : {false, true}) sweepTwice(CNodeMapFactory(text.c_str()), *loaded.description, patterned);
}

TEST(Sweep, OfRealDescriptions) {
  const char* folder = std::getenv("OXGENAPI_DESCRIPTIONS");
  if (!folder) GTEST_SKIP() << "set OXGENAPI_DESCRIPTIONS to a folder of camera descriptions";
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() == ".xml" || entry.path().extension() == ".zip") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  for (const auto& file : files) {
    SCOPED_TRACE(file.filename());
    const auto loaded = loadDescriptionFile(file, ContentType_Auto);
    const CNodeMapFactory factory(ContentType_Auto, file.c_str());
    for (const bool patterned : {false, true}) sweepTwice(factory, *loaded.description, patterned);
  }
}
