#include "description/DescriptionBuilder.h"

#include <algorithm>
#include <cstring>
#include <pugixml.hpp>

#include "description/DocumentAttributes.h"
#include "description/Limits.h"
#include "description/NodeReader.h"
#include "description/SourceText.h"
#include "text/Characters.h"

namespace GENAPI_NAMESPACE {
namespace {

// Texts directly inside their elements, which spares a DOM node each; comments, processing instructions and white space
// between elements are not kept. A document type is kept, to be refused.
constexpr unsigned kParseFlags = pugi::parse_escapes | pugi::parse_cdata | pugi::parse_eol |
                                 pugi::parse_wconv_attribute | pugi::parse_ws_pcdata_single | pugi::parse_embed_pcdata |
                                 pugi::parse_doctype;

pugi::xml_node rootOf(const pugi::xml_document& document, const DescriptionParts& parts) {
  pugi::xml_node root;
  for (const pugi::xml_node child : document.children()) {
    if (child.type() == pugi::node_doctype)
      parts.findings.fatal(parts.offsetOf(child.value(), kNoOffset), "a document type declaration is not allowed");
    if (child.type() != pugi::node_element) continue;
    if (root)
      parts.findings.fatal(parts.offsetOf(child.name(), kNoOffset), "not well-formed: more than one root element");
    root = child;
  }
  return root;
}

// Memory dumps of devices are padded with zeros. Other trailing text is refused here: the parser would ignore it.
size_t lengthWithoutFilling(std::string_view text, const BuildFindings& findings) {
  size_t size = text.size();
  while (size != 0 && (text[size - 1] == '\0' || text::isBlank(text[size - 1]))) --size;
  if (size == 0 || text[size - 1] != '>') findings.fatal(size, "not well-formed: the text does not end with a tag");
  return size;
}

}  // namespace

std::shared_ptr<const Description> DescriptionBuilder::build(HeldBytes&& source) {
  const auto result = std::make_shared<Description>();
  Description& description = *result;
  description.sourceText_ = source.view();
  description.memory_.provide(std::move(source));
  description.decodedText_ = decodedCopy(description.sourceText());
  const std::string_view text = description.lineText();
  BuildFindings findings(text);
  const SourceShape shape = examineSource(text, findings);
  const size_t size = lengthWithoutFilling(text, findings);

  // Every property has an opening tag and mostly a closing one; nodes have about seven properties.
  const size_t properties = shape.tags / 2 + 64, nodes = shape.tags / 12 + 64;
  // The parser's copy has some bytes more, so that names may be looked at in blocks.
  char* const buffer = static_cast<char*>(description.memory_.allocate(text.size() + kElementNamePadding, 1));
  std::memset(buffer + text.size(), 0, kElementNamePadding);
  description.properties_.reserve(properties);
  description.nodes_.reserve(nodes);
  std::memcpy(buffer, text.data(), text.size());
  pugi::xml_document document;
  const pugi::xml_parse_result parsed =
      document.load_buffer_inplace(buffer + shape.start, size - shape.start, kParseFlags, pugi::encoding_utf8);
  if (parsed.status == pugi::status_out_of_memory) throw std::bad_alloc();
  if (!parsed) {
    const size_t offset = shape.start + static_cast<size_t>(std::max<ptrdiff_t>(parsed.offset, 0));
    findings.fatal(offset, std::string("not well-formed: ") + parsed.description());
  }

  TextArena texts(description.moreText_);
  DescriptionParts parts{buffer,
                         text.size(),
                         text,
                         description.nodes_,
                         description.properties_,
                         description.device_,
                         description.chunkPorts_,
                         description.eventNodes_,
                         description.polledNodes_,
                         texts,
                         findings};
  const pugi::xml_node root = rootOf(document, parts);
  const DocumentKind kind = readDocumentAttributes(root, parts);
  description.schema10_ = kind.schema10;
  NodeReader(parts).readDocument(root, kind.prefix);
  fillNameTable(description, parts);
  refuseCycles(parts, resolveLinks(parts, description.names_), kind.schema10);
  if (shape.references) noteReferences(description, parts);
  noteSwappingPorts(description, parts);
  description.findings_ = findings.take();
  listDefects(description);
  return result;
}

void DescriptionBuilder::fillNameTable(Description& description, const DescriptionParts& parts) {
  const auto nameOf = [&](NodeIndex node) { return parts.nodes[node].name(); };
  description.names_.prepare(parts.nodes.size());
  for (NodeIndex node = 0; node < parts.nodes.size(); ++node) {
    const NodeIndex other = description.names_.add(node, nameOf);
    if (other == kNoNode) continue;
    const NodeRecord& first = parts.nodes[other];
    parts.fatal(parts.nodes[node].sourceOffset, parts.nodes[node], "Name",
                "already the name of the " + std::string(nodeTypeName(first.type)) + " in line " +
                    std::to_string(lineAt(description.lineText(), first.sourceOffset)));
  }
}

void DescriptionBuilder::noteReferences(const Description& description, const DescriptionParts& parts) {
  const std::vector<size_t> places = unknownReferences(description.lineText());
  if (places.empty()) return;
  std::vector<NodeIndex> order;
  for (NodeIndex node = 0; node < parts.nodes.size(); ++node) order.push_back(node);
  std::stable_sort(order.begin(), order.end(),
                   [&](NodeIndex a, NodeIndex b) { return parts.nodes[a].sourceOffset < parts.nodes[b].sourceOffset; });
  size_t next = 0;
  for (size_t place : places) {
    while (next < order.size() && parts.nodes[order[next]].sourceOffset < place) ++next;
    const std::string_view text = description.lineText().substr(place, 40);
    const size_t end = text.find_first_of(";< \t\r\n");
    const bool ended = end != std::string_view::npos && text[end] == ';';
    parts.findings.note(place, next == 0 ? kNoNode : order[next - 1], "",
                        "unknown reference " + quoted(text.substr(0, ended ? end + 1 : end)) + " stays as written");
  }
}

// GigE Vision fixes the byte order of its registers since schema 1.1.
void DescriptionBuilder::noteSwappingPorts(const Description& description, const DescriptionParts& parts) {
  if (description.isSchema10() || description.device().standardNameSpace != "GEV") return;
  for (NodeIndex node = 0; node < description.nodes_.size(); ++node) {
    if (description.node(node).type != NodeType::Port) continue;
    const Property* const swap = description.find(node, Element::SwapEndianess);
    if (swap == nullptr || swap->word != Yes) continue;
    parts.findings.note(parts.offsetOf(swap->valueData, description.node(node).sourceOffset), node, "SwapEndianess",
                        "not allowed for GEV, done all the same");
  }
}

void DescriptionBuilder::listDefects(Description& description) {
  std::vector<Description::NodeDefect>& defects = description.defects_;
  for (uint32_t i = 0; i < description.findings_.size(); ++i) {
    const FindingRecord& finding = description.findings_[i];
    if (finding.severity == svDefect && finding.node != kNoNode) defects.push_back({finding.node, i});
  }
  std::sort(defects.begin(), defects.end(),
            [](const auto& a, const auto& b) { return a.node != b.node ? a.node < b.node : a.finding < b.finding; });
  const auto sameNode = [](const auto& a, const auto& b) { return a.node == b.node; };
  defects.erase(std::unique(defects.begin(), defects.end(), sameNode), defects.end());
}

}  // namespace GENAPI_NAMESPACE
