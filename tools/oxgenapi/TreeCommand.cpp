#include <algorithm>
#include <map>
#include <memory>

#include "Checks.h"
#include "Commands.h"
#include "Value.h"

namespace tool {
namespace {

constexpr size_t kLongestValue = 60;  // a tree is read line by line: longer values are cut

struct TreeOptions {
  int depth = 0;  // 0: all levels
  int visibility = 2;
  bool values = false;
  std::string root = "Root";
};

class Tree {
 public:
  Tree(Session& session, const TreeOptions& options) : session_(session), options_(options) {}

  Json show(const std::string& name, int level) {
    const Node node = session_.map().node(name);
    Json json{{"name", name}, {"type", typeName(node.type())}, {"access", accessName(node.access())}};
    std::string line = std::string(static_cast<size_t>(level) * 2, ' ');
    if (node.type() == NT_Category)
      line += output().name(name);
    else
      line += name + output().dim("  " + typeName(node.type()) + " " + accessName(node.access()));
    if (options_.values && hasValue(node.type()) && node.readable()) line += addValue(node, json);
    if (!output().json()) output().line(line);
    if (node.type() == NT_Category && (options_.depth == 0 || level < options_.depth))
      json["features"] = children(node, level + 1);
    return json;
  }

 private:
  const Output& output() const { return session_.output(); }

  // A value that cannot be read spoils its own line, not the tree.
  std::string addValue(const Node& node, Json& json) {
    try {
      json["value"] = valueJson(node);
      std::string value = valueText(node);
      if (value.size() > kLongestValue) value = value.substr(0, kLongestValue) + "...";
      return " = " + output().good(value);
    } catch (const Failure& failure) {
      json["error"] = toJson(failure);
      return " = " + output().bad(std::string(failure.what()) + " (" + codeText(failure.code()) + ")");
    }
  }

  Json children(const Node& category, int level) {
    Json features = Json::array();
    if (std::find(path_.begin(), path_.end(), category.name()) != path_.end())
      return features;  // a category below itself
    path_.push_back(category.name());
    for (const std::string& name : category.list(NL_Children)) {
      try {
        const int64_t visibility = session_.map().node(name).infoInteger(NI_Visibility);
        if (visibility >= 0 && visibility <= options_.visibility) features.push_back(show(name, level));
      } catch (const Failure& failure) {
        session_.report(failure);
      }
    }
    path_.pop_back();
    return features;
  }

  Session& session_;
  const TreeOptions& options_;
  std::vector<std::string> path_;
};

void run(Session& session, const TreeOptions& options) {
  const Json tree = Tree(session, options).show(options.root, 0);
  if (session.output().json()) session.output().document(tree);
}

}  // namespace

void addTree(const Command& program) {
  auto options = std::make_shared<TreeOptions>();
  const Command command = program.subcommand("tree", "Show the categories and their features");
  command.option("category", options->root, "Category to start at").type("CATEGORY").showDefault();
  command.option("-d,--depth", options->depth, "Levels below the start; 0: all").check(atLeast(0)).showDefault();
  command.option("-v,--visibility", options->visibility, "Highest visibility shown (default: guru)")
      .type("beginner|expert|guru")
      .check(numberFor({{"beginner", 0}, {"expert", 1}, {"guru", 2}}));
  command.flag("--values", options->values, "Read and show the values");
  command.footer("Example:\n  oxgenapi tree --visibility beginner --values");
  command.runs([options](Session& session) { run(session, *options); });
}

}  // namespace tool
