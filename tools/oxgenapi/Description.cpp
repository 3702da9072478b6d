#include "Description.h"

#include <GenApi/IDestroy.h>
#include <GenApi/NodeMapFactory.h>

#include <algorithm>

#include "Session.h"

namespace tool {
namespace {

using namespace GENAPI_NAMESPACE;

// Names of links are "p" and the name of what they give: pValue, p1212Parser. Some properties look alike but are
// computed from other nodes' links.
bool isLink(std::string_view property) {
  constexpr std::string_view kComputed[] = {"pDependent", "pSelecting", "pTerminal"};
  return property.size() > 1 && property[0] == 'p' && (property[1] < 'a' || property[1] > 'z') &&
         std::find(std::begin(kComputed), std::end(kComputed), property) == std::end(kComputed);
}

}  // namespace

void EndNodeMap::operator()(INodeMap* map) const {
  if (auto* end = dynamic_cast<IDestroy*>(map)) end->Destroy();
}

Description loadDescriptionFile(const std::string& path) {
  return Description(CNodeMapFactory(ContentType_Auto, gcstring(path.c_str())).CreateNodeMap());
}

Description loadDescriptionBytes(std::string_view bytes) {
  return Description(CNodeMapFactory(ContentType_Auto, bytes.data(), bytes.size()).CreateNodeMap());
}

Description loadDescription(Session& session, const std::string& path) {
  return path.empty() ? loadDescriptionBytes(session.device().description()) : loadDescriptionFile(path);
}

std::string propertyText(INode& node, const char* name) {
  gcstring value;
  gcstring attribute;
  node.GetProperty(name, value, attribute);
  return std::string(value.view());
}

std::vector<std::string> words(const std::string& text) {
  std::vector<std::string> found;
  for (size_t start = 0; start < text.size();) {
    const size_t end = std::min(text.find('\t', start), text.size());
    found.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return found;
}

std::vector<Link> linksOf(INode& node) {
  std::vector<Link> links;
  gcstring_vector properties;
  node.GetPropertyNames(properties);
  for (const gcstring& property : properties) {
    if (!isLink(property.view())) continue;
    for (std::string& target : words(propertyText(node, property.c_str())))
      links.push_back({std::string(property.view()), std::move(target)});
  }
  return links;
}

}  // namespace tool
