// A description after loading: immutable, and shared by all node maps of one camera model.
//
// Everything is flat: one record per node in description order, one property per element in XML order, links already
// resolved to node indices. Texts point into the parsed buffer, which the description owns.
#pragma once
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Base/GCTypes.h"
#include "GenApi/Findings.h"
#include "GenApi/Types.h"
#include "description/DependencyGraph.h"
#include "description/Derivations.h"
#include "description/Element.h"
#include "description/MemoryBlock.h"
#include "description/NameTable.h"
#include "description/NodeIndex.h"

namespace GENAPI_NAMESPACE {

// One element of a node. Numbers were parsed and words recognised while loading, so a node that is not defective may
// use them without a check.
struct Property {
  Element element;
  uint8_t word;            // elements with a fixed vocabulary: the value of the enumeration (EYesNo, EVisibility, ...)
  uint16_t attributeSize;  // bytes
  uint32_t valueSize;      // bytes
  const char* valueData;
  const char* attributeData;  // Name of pVariable, Constant, Expression; else null
  union {
    NodeIndex target;  // links, and EnumEntry: the node
    int64_t integer;   // integer-valued elements; Constant of integer formulas
    double real;  // Value, Min, Max, Inc, ValueIndexed, ValueDefault of Float; NumericValue; Constant of float formulas
  };
  std::string_view value() const { return {valueData, valueSize}; }
  std::string_view attribute() const { return {attributeData, attributeSize}; }
};

struct NodeRecord {
  const char* nameData;
  uint32_t nameSize;       // bytes
  uint32_t firstProperty;  // index into the description's properties
  uint32_t propertyCount;
  uint32_t sourceOffset;  // byte offset of the element in the text, for line numbers
  NodeIndex owner;        // EnumEntry: its Enumeration; TextDesc, IntKey: the ConfRom; internal knife: the register
  NodeType type;
  uint8_t nameSpace;          // ENameSpace
  uint8_t visibility;         // EVisibility, own element
  uint8_t imposedAccessMode;  // EAccessMode, own element, RW without
  bool streamable, deprecated, exposeStatic;
  bool defective;  // the node reports NI; Description::defectText says why
  int8_t mergePriority;
  uint16_t entryNameOffset;  // EnumEntry: where in the name the entry's own name begins
  std::string_view name() const { return {nameData, nameSize}; }
};

struct DeviceTexts {
  std::string_view modelName, vendorName, toolTip, standardNameSpace, productGuid, versionGuid;
  GENICAM_NAMESPACE::Version_t schemaVersion{}, deviceVersion{};
};

// A finding without its file name, which belongs to the map that was loaded from the file.
struct FindingRecord {
  ESeverity severity;
  uint32_t line;   // 0 unknown
  NodeIndex node;  // kNoNode when none
  std::string element, reason;
};

class Description {
 public:
  Description();
  ~Description();
  Description(const Description&) = delete;
  Description& operator=(const Description&) = delete;

  size_t nodeCount() const { return nodes_.size(); }
  const NodeRecord& node(NodeIndex index) const { return nodes_[index]; }
  std::span<const Property> properties(NodeIndex index) const {
    const NodeRecord& record = nodes_[index];
    return {properties_.data() + record.firstProperty, record.propertyCount};
  }
  // The first property of that element, or null.
  const Property* find(NodeIndex index, Element element) const;

  // The name that an EnumEntry has inside its Enumeration; any other node's name.
  std::string_view entryName(NodeIndex index) const {
    return nodes_[index].name().substr(nodes_[index].entryNameOffset);
  }

  // By plain name; kNoNode when there is none.
  NodeIndex indexOf(std::string_view name) const;

  const DeviceTexts& device() const { return device_; }
  // Whether the rules of schema 1.0 hold; what the device texts report as the schema version may be missing.
  bool isSchema10() const { return schema10_; }

  // Notes and defects found by the load, in the order in which they were found.
  std::span<const FindingRecord> findings() const { return findings_; }
  // Why a defective node cannot be used: "<line>: <NodeType> '<Name>': <Element>: <reason>", or empty.
  std::string defectText(NodeIndex index) const;
  // "<line>: <NodeType> '<Name>': <Element>: <reason>"; leaves out what is unknown.
  std::string findingText(const FindingRecord& finding) const;
  uint32_t lineOf(NodeIndex index) const;

  // Computed at the first use, then shared; never null.
  const DependencyGraph& graph() const;

  // Ports that carry a chunk ID, and nodes with an EventID, in description order.
  std::span<const NodeIndex> chunkPorts() const { return chunkPorts_; }
  std::span<const NodeIndex> eventNodes() const { return eventNodes_; }
  // Nodes with a PollingTime (registers, commands, enumerations), in description order.
  std::span<const NodeIndex> polledNodes() const { return polledNodes_; }

  // The text as it came; what the description cache compares.
  std::string_view sourceText() const { return sourceText_; }

  // What is derived from the description once; later rooms add theirs.
  enum DerivedSlot : size_t { kFirstProperties, kGraph, kLayout, kDerivedSlots };
  const Derivations& derived() const { return derived_; }

 private:
  friend class DescriptionBuilder;
  // What lines are counted in.
  std::string_view lineText() const { return decodedText_.empty() ? sourceText() : decodedText_; }

  struct NodeDefect {
    NodeIndex node;
    uint32_t finding;
  };

  std::string_view sourceText_;
  std::string decodedText_;  // the same as UTF-8, if it came in another encoding
  // In here lie the text as it came, the copy that the XML parser worked in, to which most texts point, and the next
  // three.
  DescriptionMemory memory_;
  std::pmr::vector<NodeRecord> nodes_{&memory_};
  std::pmr::vector<Property> properties_{&memory_};
  NameTable names_{&memory_};
  std::vector<std::unique_ptr<char[]>> moreText_;  // texts that are not in one piece in the source
  DeviceTexts device_;
  bool schema10_ = false;
  std::vector<FindingRecord> findings_;
  std::vector<NodeDefect> defects_;  // the first defect of each defective node, by node
  std::vector<NodeIndex> chunkPorts_, eventNodes_, polledNodes_;
  Derivations derived_{kDerivedSlots};
};

}  // namespace GENAPI_NAMESPACE
