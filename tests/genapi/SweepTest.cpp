// What reading every feature asks the device: nothing for metadata, each place at most once in a call, and in check
// mode nothing that contradicts what is remembered.
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "GenApi/CacheCheck.h"
#include "TestMap.h"

namespace {

// Bytes without end: zero, or a pattern that follows from the address alone.
class EndlessPort : public CPortImpl {
 public:
  explicit EndlessPort(bool patterned = false) : patterned_(patterned) {}
  EAccessMode GetAccessMode() const override { return RW; }
  void Read(void* buffer, int64_t address, int64_t length) override {
    ++reads[{address, length}];
    for (int64_t i = 0; i < length; ++i) {
      const auto mixed = (static_cast<uint64_t>(address) + static_cast<uint64_t>(i)) * 0x9E3779B97F4A7C15;
      static_cast<uint8_t*>(buffer)[i] = patterned_ ? static_cast<uint8_t>(mixed >> 56) : uint8_t{0};
    }
  }
  void Write(const void*, int64_t, int64_t) override { ADD_FAILURE() << "a sweep writes nothing"; }

  std::map<BytePort::Access, int> reads;

 private:
  bool patterned_;
};

struct Differences final : ICacheCheck {
  void OnDifference(const CacheDifference& difference) override { nodes.push_back(difference.node.c_str()); }
  std::vector<std::string> nodes;
};

class Sweep {
 public:
  Sweep(const std::string& text, bool patterned) : map_(CNodeMapFactory(gcstring(text.c_str())).CreateNodeMap()) {
    NodeList_t nodes;
    map_->GetNodes(nodes);
    for (INode* each : nodes) {
      if (each->GetPrincipalInterfaceType() != intfIPort) continue;
      map_->Connect(&ports_.try_emplace(each->GetName().c_str(), patterned).first->second, each->GetName());
    }
    for (INode* each : nodes) readMetadata(each);
    EXPECT_TRUE(placesReadMoreThan(0).empty()) << "metadata";
    for (INode* each : nodes) {
      if (each->IsFeature() && dynamic_cast<IValue*>(each) && !dynamic_cast<ICategory*>(each))
        features_.push_back(each);
    }
  }
  ~Sweep() { dynamic_cast<IDestroy*>(map_)->Destroy(); }
  Sweep(const Sweep&) = delete;
  Sweep& operator=(const Sweep&) = delete;

  void run() {
    for (INode* each : features_) {
      ask(each, [&] { each->GetAccessMode(); });
      ask(each, [&] { dynamic_cast<IValue*>(each)->ToString(true); });
      const auto limits = [&](auto* number) {
        ask(each, [&] { number->GetMin(); });
        ask(each, [&] { number->GetMax(); });
        ask(each, [&] { number->GetValue(); });
      };
      if (auto* integer = dynamic_cast<IInteger*>(each)) limits(integer);
      if (auto* real = dynamic_cast<IFloat*>(each)) limits(real);
    }
  }

  std::vector<std::string> differences() {
    Differences found;
    dynamic_cast<ICheckedNodeMap*>(map_)->SetCacheCheck(&found);
    for (INode* each : features_) {
      try {
        dynamic_cast<IValue*>(each)->ToString();
      } catch (const GenericException&) {
      }
    }
    dynamic_cast<ICheckedNodeMap*>(map_)->SetCacheCheck(nullptr);
    return found.nodes;
  }

 private:
  // One public call: it reads no place twice.
  template <class Question>
  void ask(INode* node, Question&& question) {
    for (auto& [name, port] : ports_) port.reads.clear();
    try {
      question();
    } catch (const GenericException&) {  // a camera without content cannot answer everything
    }
    EXPECT_TRUE(placesReadMoreThan(1).empty()) << node->GetName().c_str();
  }

  std::vector<BytePort::Access> placesReadMoreThan(int times) const {
    std::vector<BytePort::Access> places;
    for (const auto& [name, port] : ports_) {
      for (const auto& [access, count] : port.reads) {
        if (count > times) places.push_back(access);
      }
    }
    return places;
  }

  static void readMetadata(INode* node) {
    node->GetDisplayName();
    node->GetVisibility();
    node->GetCachingMode();
    NodeList_t nodes;
    for (const ELinkType each : {ctParentNodes, ctReadingChildren, ctWritingChildren, ctInvalidatingChildren,
                                 ctDependingNodes, ctTerminalNodes}) {
      node->GetChildren(nodes, each);
    }
    FeatureList_t features;
    dynamic_cast<ISelector*>(node)->GetSelectedFeatures(features);
    dynamic_cast<ISelector*>(node)->GetSelectingFeatures(features);
    if (auto* integer = dynamic_cast<IInteger*>(node)) integer->GetUnit(), integer->GetRepresentation();
    if (auto* real = dynamic_cast<IFloat*>(node)) real->GetUnit(), real->GetDisplayNotation();
  }

  std::map<std::string, EndlessPort> ports_;
  INodeMap* map_;
  std::vector<INode*> features_;
};

void sweep(const std::string& text) {
  for (const bool patterned : {false, true}) {
    SCOPED_TRACE(patterned ? "patterned memory" : "zero memory");
    Sweep features(text, patterned);
    features.run();
    features.run();
    EXPECT_TRUE(features.differences().empty()) << features.differences().front();
  }
}

}  // namespace

TEST(Sweep, ReadsEachPlaceOnceInACall) {
  sweep(description(
      reg("IntReg", "A", 0, 4) + reg("MaskedIntReg", "Bits", 0, 4, "<LSB>0</LSB><MSB>3</MSB>") +
      reg("IntReg", "Live", 4, 2, tag("Cachable", "NoCache")) +
      reg("MaskedIntReg", "LiveBits", 4, 2, "<LSB>0</LSB><MSB>3</MSB>" + tag("Cachable", "NoCache")) +
      "<Integer Name='OverLive'><pIsAvailable>LiveBits</pIsAvailable><pIsLocked>Live</pIsLocked><pValue>A</pValue>"
      "<pMax>Live</pMax></Integer><Integer Name='Guarded'><pIsAvailable>Live</pIsAvailable><pValue>Live</pValue>"
      "</Integer><Converter Name='C'><pVariable Name='L'>LiveBits</pVariable><FormulaTo>FROM</FormulaTo><FormulaFrom>"
      "TO+L</FormulaFrom><pValue>Live</pValue></Converter><Command Name='Go'><pIsLocked>Live</pIsLocked>"
      "<pValue>Live</pValue><CommandValue>1</CommandValue></Command><Enumeration Name='E'><EnumEntry Name='Once'>"
      "<Value>0</Value><IsSelfClearing>Yes</IsSelfClearing></EnumEntry><EnumEntry Name='More'><Value>1</Value>"
      "</EnumEntry><pValue>S</pValue></Enumeration>" +
      reg("IntReg", "S", 8, 1) +
      "<Integer Name='Table'><pIndex>LiveBits</pIndex><pValueIndexed Index='0'>Live</pValueIndexed><pValueDefault>E"
      "</pValueDefault></Integer><Category Name='Root'><pFeature>OverLive</pFeature><pFeature>Guarded</pFeature>"
      "<pFeature>C</pFeature><pFeature>Go</pFeature><pFeature>E</pFeature><pFeature>Table</pFeature></Category>"));
}

TEST(Sweep, OfRealDescriptions) {
  const char* folder = std::getenv("OXGENAPI_DESCRIPTIONS");
  if (!folder) GTEST_SKIP() << "set OXGENAPI_DESCRIPTIONS to a folder of camera descriptions";
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() != ".xml") continue;
    SCOPED_TRACE(entry.path().filename());
    std::ifstream file(entry.path(), std::ios::binary);
    sweep(std::string(std::istreambuf_iterator<char>(file), {}));
  }
}
