// Makes a Description of a text: parse, walk the elements once and emit flat arrays, resolve links, look for cycles.
#pragma once
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "description/BuildFindings.h"
#include "description/Description.h"
#include "description/TextArena.h"

namespace GENAPI_NAMESPACE {

// What the steps of a build work on: the parts of the description that comes into being.
struct DescriptionParts {
  const char* buffer;  // what the parser works in; offsets in it are offsets in the text
  size_t bufferSize;
  std::string_view source;  // the text as it was before the parser worked in it
  std::pmr::vector<NodeRecord>& nodes;
  std::pmr::vector<Property>& properties;
  DeviceTexts& device;
  std::vector<NodeIndex>& chunkPorts;
  std::vector<NodeIndex>& eventNodes;
  std::vector<NodeIndex>& polledNodes;
  TextArena& texts;
  BuildFindings& findings;

  // The offset of a text that points into the buffer; `otherwise` for one that was put together.
  size_t offsetOf(const char* text, size_t otherwise) const {
    return text >= buffer && text < buffer + bufferSize ? static_cast<size_t>(text - buffer) : otherwise;
  }
  // A fault of one node, with what is known of it.
  [[noreturn]] void fatal(size_t offset, const NodeRecord& node, std::string_view element,
                          std::string_view reason) const {
    findings.fatal(offset, reason, nodeTypeName(node.type), node.name(), element);
  }
};

class DescriptionBuilder {
 public:
  // Throws LoadFault, and std::bad_alloc when memory ran out.
  static std::shared_ptr<const Description> build(HeldBytes&& source);

 private:
  static void fillNameTable(Description& description, const DescriptionParts& parts);
  static void noteReferences(const Description& description, const DescriptionParts& parts);
  static void noteSwappingPorts(const Description& description, const DescriptionParts& parts);
  static void listDefects(Description& description);
};

// The steps, each in its own file.

// The kinds of links that must not form cycles. A node has a bit for each kind that leads out of it.
enum LinkKind : uint8_t { kSelects = 1, kLists = 2, kWrites = 4, kReads = 8 };
using LinkKinds = std::vector<uint8_t>;

// Replaces names, of which the properties hold the hash, by indices, in the order of nodes and properties; leaves out
// descriptive links that lead nowhere.
LinkKinds resolveLinks(DescriptionParts& parts, const NameTable& names);
// Fatal for cycles of links that must not have any.
void refuseCycles(const DescriptionParts& parts, const LinkKinds& kinds, bool isSchema10);

}  // namespace GENAPI_NAMESPACE
