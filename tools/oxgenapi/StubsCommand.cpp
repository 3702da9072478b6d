#include <Base/GCException.h>

#include <memory>
#include <set>

#include "Checks.h"
#include "Commands.h"
#include "Description.h"
#include "FeatureReference.h"
#include "FileReplacement.h"

namespace tool {
namespace {

struct StubsOptions {
  std::string description;
  std::string file;
};

// What is an attribute of the package's node maps, or no name in Python, is reached as cam["poll"] only.
bool isAttribute(const std::string& name) {
  static const std::set<std::string> kTaken{"attach_chunks",
                                            "close",
                                            "connect",
                                            "deliver_event",
                                            "download",
                                            "download_file",
                                            "feature_names",
                                            "features",
                                            "load_file",
                                            "load_settings",
                                            "load_settings_text",
                                            "load_text",
                                            "model",
                                            "node_names",
                                            "of",
                                            "poll",
                                            "save_settings",
                                            "settings",
                                            "to_json",
                                            "upload",
                                            "upload_file",
                                            "vendor",
                                            "and",
                                            "as",
                                            "assert",
                                            "async",
                                            "await",
                                            "break",
                                            "class",
                                            "continue",
                                            "def",
                                            "del",
                                            "elif",
                                            "else",
                                            "except",
                                            "False",
                                            "finally",
                                            "for",
                                            "from",
                                            "global",
                                            "if",
                                            "import",
                                            "in",
                                            "is",
                                            "lambda",
                                            "None",
                                            "nonlocal",
                                            "not",
                                            "or",
                                            "pass",
                                            "raise",
                                            "return",
                                            "True",
                                            "try",
                                            "while",
                                            "with",
                                            "yield"};
  return !kTaken.contains(name) && !name.starts_with("_");
}

// Text between three quotes, on one line.
std::string docString(const Json& node) {
  std::string text = node.value("description", node.value("toolTip", std::string()));
  for (char& character : text)
    character = character == '"' || character == '\\' || static_cast<unsigned char>(character) < ' ' ? '\'' : character;
  return text;
}

std::string classOf(const Json& node) {
  const std::string kind = node.at("kind").get<std::string>();
  if (kind == "enumeration" && !node.at("entries").empty()) {
    std::string entries;
    for (const Json& entry : node.at("entries"))
      entries += (entries.empty() ? "\"" : ", \"") + entry[0].get<std::string>() + "\"";
    return "oxgenapi.Enumeration[Literal[" + entries + "]]";
  }
  static const std::map<std::string, std::string> kClasses{
      {"integer", "Integer"}, {"float", "Float"},     {"boolean", "Boolean"},   {"enumeration", "Enumeration[str]"},
      {"string", "String"},   {"command", "Command"}, {"register", "Register"}, {"port", "Port"}};
  const auto found = kClasses.find(kind);
  return "oxgenapi." + (found == kClasses.end() ? std::string("Node") : found->second);
}

// The features below a category, each once, in the order of the description.
void collect(const Json& nodes, const std::string& category, std::set<std::string>& known,
             std::vector<std::string>& features) {
  const auto found = nodes.find(category);
  if (found == nodes.end() || !found->contains("features") || !known.insert(category).second) return;
  for (const Json& feature : found->at("features")) {
    const std::string name = feature.get<std::string>();
    const auto node = nodes.find(name);
    if (node != nodes.end() && node->at("kind") == "category")
      collect(nodes, name, known, features);
    else if (node != nodes.end() && known.insert(name).second)
      features.push_back(name);
  }
}

std::string stubs(const Json& reference) {
  const Json& nodes = reference.at("nodes");
  std::set<std::string> known;
  std::vector<std::string> features;
  collect(nodes, "Root", known, features);
  const std::string device = reference.at("vendor").get<std::string>() + " " + reference.at("model").get<std::string>();
  std::string text = "\"\"\"The features of " + docString({{"toolTip", device}}) +
                     ", for editors and type checkers.\n\n"
                     "As camera.py:   from camera import Camera; cam = Camera.of(device)\n"
                     "As camera.pyi:  if TYPE_CHECKING: from camera import Camera; cam = cast(\"Camera\", "
                     "oxgenapi.NodeMap.of(device))\n"
                     "\"\"\"\n\n"
                     "from __future__ import annotations\n\n"
                     "from typing import Literal\n\n"
                     "import oxgenapi\n\n\n"
                     "class Camera(oxgenapi.NodeMap):\n";
  for (const std::string& name : features) {
    if (isAttribute(name)) {
      const Json& node = nodes.at(name);
      text += "    " + name + ": " + classOf(node) + "\n";
      if (const std::string about = docString(node); !about.empty()) text += "    \"\"\"" + about + "\"\"\"\n";
    }
  }
  return features.empty() ? text + "    pass\n" : text;
}

void run(Session& session, const StubsOptions& options) {
  std::string text;
  try {
    text = stubs(featureReference(*loadDescription(session, options.description)));
  } catch (const GENICAM_NAMESPACE::GenericException& error) {
    throw Failure(kFileFailed, error.what());
  }
  if (options.file.empty()) {
    session.output().data(text);
    return;
  }
  FileReplacement file(options.file);
  file.write(text);
  file.commit();
}

}  // namespace

void addStubs(const Command& program) {
  auto options = std::make_shared<StubsOptions>();
  const Command command =
      program.subcommand("stubs", "Write the types of a camera's features for Python editors and type checkers");
  command.option("description", options->description, "Description, XML or zip (default: the device's)")
      .type("FILE")
      .check(existingFile());
  command.option("-o,--output", options->file, "The file, a module or a stub (default: standard output)").type("FILE");
  command.footer("Example:\n  oxgenapi stubs camera.xml -o camera.pyi");
  command.runs([options](Session& session) { run(session, *options); });
}

}  // namespace tool
