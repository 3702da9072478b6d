#include <ostream>

#include "Failure.h"
#include "NodeMapSerializer.h"
#include "SelectorCombinations.h"
#include "SettingsText.h"

namespace orxGenApi {

using namespace GENAPI_NAMESPACE;
using GENICAM_NAMESPACE::gcstring;

void NodeMapSerializer::requireWritable(const std::ostream& output) const {
  if (output.fail()) {
    problems_.note("NodeMapSerializer::SaveSet: Output stream not writable");
    throw orx_error(OXGENAPI_E_RUNTIME, "Error reading given stream");
  }
  if (nodeMap_ == nullptr) {
    problems_.note("NodeMapSerializer::SaveSet: No nodemap loaded.");
    throw orx_error(OXGENAPI_E_INVALID_STATE, "No nodemap loaded.");
  }
}

void NodeMapSerializer::SaveSet(const FeatureNames& names, std::ostream& output) {
  requireWritable(output);
  for (const gcstring& name : names) {
    if (output.fail()) return;
    saveFeature(name, nodeMap_->GetNode(name), output);
  }
}

void NodeMapSerializer::SaveSet(std::ostream& output) {
  requireWritable(output);
  NodeList_t nodes;
  nodeMap_->GetNodes(nodes);
  for (INode* node : nodes) {
    if (output.fail()) return;
    if (node->IsStreamable()) saveFeature(node->GetName(true), node, output);
  }
}

void NodeMapSerializer::saveFeature(const gcstring& name, INode* node, std::ostream& output) {
  IValue* value = dynamic_cast<IValue*>(node);
  if (value == nullptr) {
    report(nullptr, OXGENAPI_E_NOT_PRESENT, std::string(name.view()) + ": Node not present in node map");
    return;
  }
  try {
    writeLines(*node, *value, output);
  } catch (...) {
    reportCurrentException(node, node->GetName(true));
  }
}

void NodeMapSerializer::writeLines(INode& node, IValue& value, std::ostream& output) {
  SelectorCombinations combinations(node);
  const gcstring name = node.GetName(true);
  bool written = false;
  bool more = !combinations.empty();
  while (more && !output.fail()) {
    combinations.select();
    if (IsAvailable(value.GetAccessMode())) {
      const gcstring text = value.ToString(false, false);
      line_.assign(name.view());
      combinations.appendTo(line_);
      line_ += " = \"";
      appendEscapedValue(line_, text.view());
      line_ += "\"\n";
      output.write(line_.data(), static_cast<std::streamsize>(line_.size()));
      written = true;
    }
    more = combinations.advance();
  }
  if (written || output.fail()) return;
  throw orx_error(kSettingDoesNotHold, combinations.hasSelectors() ? "Node not available in any Selector-combination"
                                                                   : "Node not available");
}

}  // namespace orxGenApi
