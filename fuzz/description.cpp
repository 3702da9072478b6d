// Descriptions from arbitrary bytes: XML or zip. Whatever loads must be whole: links lead to nodes, names are found,
// the graph can be walked.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "Base/GCException.h"
#include "description/Description.h"
#include "description/DescriptionLoader.h"
#include "description/ElementRules.h"
#include "description/NodeTraits.h"

using namespace GENAPI_NAMESPACE;

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

void checkLinks(const Description& description, NodeIndex node) {
  for (const Property& property : description.properties(node)) {
    require(property.element != Element::Unknown);
    const bool child = property.element == Element::EnumEntry || property.element == Element::IntSwissKnife;
    if (!child && !kNamingLinks.has(property.element)) continue;
    require(property.target < description.nodeCount());
    require(description.node(property.target).name() == property.value());
  }
}

void checkGraph(const Description& description, NodeIndex node, WalkScratch& scratch) {
  const DependencyGraph& graph = description.graph();
  for (NodeIndex dependent : graph.dependents(node, scratch)) require(dependent < description.nodeCount());
  for (NodeIndex selected : graph.selected(node)) {
    bool back = false;
    for (NodeIndex selector : graph.selecting(selected)) back = back || selector == node;
    require(back);
  }
  require(IsCacheable(graph.traits().cachingMode(node)) || graph.traits().cachingMode(node) == NoCache);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  try {
    const LoadedDescription loaded = loadDescriptionText(bytes, ContentType_Auto);
    const Description& description = *loaded.description;
    WalkScratch scratch;
    for (NodeIndex node = 0; node < description.nodeCount(); ++node) {
      require(!description.node(node).name().empty());
      require(description.indexOf(description.node(node).name()) == node);
      require(description.node(node).defective != description.defectText(node).empty());
      require(description.lineOf(node) > 0);
      checkLinks(description, node);
      checkGraph(description, node, scratch);
    }
    for (const FindingRecord& finding : description.findings())
      require(finding.severity != svFatal && !description.findingText(finding).empty());
  } catch (const GENICAM_NAMESPACE::RuntimeException& error) {
    const std::string_view text = error.GetDescription();
    require(text.substr(0, 13) == "<description>" && text.find('\n') == text.npos);
  }
  return 0;
}
