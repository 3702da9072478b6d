// A description as the engine loads it, without a device: for commands that ask how its nodes hang together.
#pragma once

#include <GenApi/INode.h>
#include <GenApi/INodeMap.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

inline std::string textOf(const GENAPI_NAMESPACE::gcstring& text) { return std::string(text.view()); }

struct EndNodeMap {
  void operator()(GENAPI_NAMESPACE::INodeMap* map) const;
};
using Description = std::unique_ptr<GENAPI_NAMESPACE::INodeMap, EndNodeMap>;

class Session;

// All load XML or a zip archive with it: from a file, from memory, from a file or, if its name is empty, the device.
// Throw GENICAM_NAMESPACE::GenericException for one that does not load.
Description loadDescriptionFile(const std::string& path);
Description loadDescriptionBytes(std::string_view bytes);
Description loadDescription(Session& session, const std::string& path);

// The value of a property, several values separated by tabs; empty when the node has none of that name.
std::string propertyText(GENAPI_NAMESPACE::INode& node, const char* name);

// The values of a property that has several: what stands between the tabs.
std::vector<std::string> words(const std::string& text);

// One element of a node that names another node.
struct Link {
  std::string element;  // "pValue"
  std::string target;   // name of the node
};

// Every link that the node's description writes down, in the order of the elements' names.
std::vector<Link> linksOf(GENAPI_NAMESPACE::INode& node);

}  // namespace tool
