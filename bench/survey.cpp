// What can be read of camera descriptions when the device behind them holds nothing but zeros, or a pattern: one line
// per file, then one per reason why features cannot be read.
//
//   survey FILE...      or, without any, every file of the folder in OXGENAPI_DESCRIPTIONS
#include <GenApi/GenApi.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <regex>
#include <string>
#include <vector>

using namespace GENAPI_NAMESPACE;
using namespace GENICAM_NAMESPACE;

namespace {

// Memory without end. The pattern follows from the address alone.
class EndlessPort final : public CPortImpl {
 public:
  explicit EndlessPort(bool patterned) : patterned_(patterned) {}
  EAccessMode GetAccessMode() const override { return RW; }
  void Read(void* buffer, int64_t address, int64_t length) override {
    for (int64_t i = 0; i < length; ++i) {
      const auto mixed = (static_cast<uint64_t>(address) + static_cast<uint64_t>(i)) * 0x9E3779B97F4A7C15;
      static_cast<uint8_t*>(buffer)[i] = patterned_ ? static_cast<uint8_t>(mixed >> 56) : uint8_t{0};
    }
  }
  void Write(const void*, int64_t, int64_t) override {}

 private:
  bool patterned_;
};

struct Outcome {
  int features = 0, readable = 0, unavailable = 0, writeOnly = 0, failed = 0;
};
using Reasons = std::map<std::string, std::pair<int, std::string>>;  // kind -> how often, the first feature's text

// The sentence without what differs from feature to feature.
std::string kindOf(const std::string& text) {
  const std::string reason = text.substr(text.find(": ") == text.npos ? 0 : text.find(": ") + 2);
  static const std::regex kNames("'[^']*'"), kNumbers("-?[0-9][0-9a-fx.e+]*");
  return std::regex_replace(std::regex_replace(reason, kNames, "'...'"), kNumbers, "N");
}

Outcome readAll(INodeMap& map, Reasons& reasons) {
  Outcome outcome;
  NodeList_t nodes;
  map.GetNodes(nodes);
  for (INode* node : nodes) {
    auto* value = dynamic_cast<IValue*>(node);
    if (!value || !node->IsFeature() || dynamic_cast<ICategory*>(node)) continue;
    ++outcome.features;
    try {
      const EAccessMode mode = node->GetAccessMode();
      if (!IsReadable(mode)) {
        ++(mode == WO ? outcome.writeOnly : outcome.unavailable);
        continue;
      }
      value->ToString();
      ++outcome.readable;
    } catch (const GenericException& refused) {
      ++outcome.failed;
      auto& [count, example] = reasons[kindOf(refused.what())];
      if (count++ == 0) example = refused.what();
    }
  }
  return outcome;
}

void survey(const std::string& file, Reasons& reasons) {
  const std::string name = std::filesystem::path(file).filename();
  try {
    CNodeMapFactory factory(ContentType_Auto, file.c_str());
    Outcome outcomes[2];
    uint64_t nodeCount = 0;
    for (const bool patterned : {false, true}) {
      std::vector<std::unique_ptr<EndlessPort>> ports;
      INodeMap* const map = factory.CreateNodeMap();
      NodeList_t nodes;
      map->GetNodes(nodes);
      nodeCount = map->GetNumNodes();
      for (INode* node : nodes) {
        if (node->GetPrincipalInterfaceType() != intfIPort) continue;
        ports.push_back(std::make_unique<EndlessPort>(patterned));
        map->Connect(ports.back().get(), node->GetName());
      }
      outcomes[patterned] = readAll(*map, reasons);
      dynamic_cast<IDestroy*>(map)->Destroy();
    }
    std::printf("%-34.34s yes %6lu %8d", name.c_str(), static_cast<unsigned long>(nodeCount), outcomes[0].features);
    for (const Outcome& each : outcomes)
      std::printf("  |%6d %6d %5d %5d", each.readable, each.unavailable, each.writeOnly, each.failed);
    std::printf("\n");
  } catch (const GenericException& refused) {
    std::printf("%-34.34s no: %s\n", name.c_str(), refused.what());
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> files;
  for (int i = 1; i < argc; ++i) files.emplace_back(argv[i]);
  if (const char* folder = std::getenv("OXGENAPI_DESCRIPTIONS"); folder && files.empty()) {
    for (const auto& entry : std::filesystem::directory_iterator(folder)) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
  }
  if (files.empty()) {
    std::printf("name description files, or set OXGENAPI_DESCRIPTIONS to a folder of them\n");
    return 0;
  }
  std::printf("%-34s %-3s %6s %8s  |%-26s|%s\n", "", "", "", "", " zero memory", " patterned memory");
  std::printf("%-34s %-3s %6s %8s", "file", "ok", "nodes", "features");
  for (int i = 0; i < 2; ++i) std::printf("  |%6s %6s %5s %5s", "read", "NA/NI", "WO", "fail");
  std::printf("\n");
  Reasons reasons;
  for (const std::string& file : files) survey(file, reasons);
  std::printf("\nwhy features cannot be read:\n");
  std::vector<std::pair<int, std::string>> sorted;
  for (const auto& [kind, seen] : reasons) sorted.emplace_back(seen.first, kind);
  std::sort(sorted.rbegin(), sorted.rend());
  for (const auto& [count, kind] : sorted)
    std::printf("%6d  %s\n        such as: %s\n", count, kind.c_str(), reasons[kind].second.c_str());
  return 0;
}
