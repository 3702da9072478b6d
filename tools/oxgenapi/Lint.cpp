#include "Lint.h"

#include <GenApi/Findings.h>
#include <GenApi/IFloat.h>
#include <GenApi/IInteger.h>
#include <GenApi/IValue.h>

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iterator>
#include <optional>
#include <unordered_set>

#include "Description.h"
#include "SourceLines.h"

namespace tool {
namespace {

using namespace GENAPI_NAMESPACE;

std::string contents(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

template <class Number>
std::optional<Number> parsed(const std::string& text) {
  Number number{};
  const char* end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stopped == end ? std::optional(number) : std::nullopt;
}

template <class Number>
std::optional<bool> isAbove(const std::string& left, const std::string& right) {
  const auto a = parsed<Number>(left);
  const auto b = parsed<Number>(right);
  return a && b ? std::optional(*a > *b) : std::nullopt;
}

Severity severityOf(ESeverity severity) {
  return severity == svNote ? Severity::note : severity == svDefect ? Severity::defect : Severity::fatal;
}

Problem problemOf(const Finding& finding) {
  return {severityOf(finding.Severity), finding.Line, textOf(finding.Node), textOf(finding.Element),
          textOf(finding.Reason)};
}

class Linter {
 public:
  Linter(INodeMap& map, const SourceLines& lines) : map_(map), lines_(lines) { map.GetNodes(nodes_); }

  std::vector<Problem> run() {
    addFindings();
    addUnreachable();
    for (INode* node : nodes_) {
      checkLimits(*node);
      checkTexts(*node);
    }
    return std::move(problems_);
  }

 private:
  void add(Severity severity, const INode& node, const char* element, std::string reason) {
    std::string name = textOf(node.GetName());
    const uint32_t line = lines_.of(name);
    problems_.push_back({severity, line, std::move(name), element, std::move(reason)});
  }

  void addFindings() {
    map_.ParseSwissKnifes();  // its defects are among the findings then
    std::vector<Finding> findings;
    if (const auto* source = dynamic_cast<const IFindings*>(&map_)) source->GetFindings(findings);
    for (const Finding& each : findings) problems_.push_back(problemOf(each));
  }

  // A program may still ask for such a node by name, so this is only a note.
  void addUnreachable() {
    INode* root = map_.GetNode("Root");
    if (root == nullptr) {
      problems_.push_back({Severity::defect, 0, "Root", {}, "there is no category Root, so nothing is a feature"});
      return;
    }
    std::unordered_set<const INode*> seen{root};
    std::vector<INode*> open{root};
    while (!open.empty()) {
      INode* node = open.back();
      open.pop_back();
      NodeList_t targets;
      node->GetChildren(targets, ctInvalidatingChildren);  // reading ones included
      for (const Link& link : linksOf(*node)) targets.push_back(map_.GetNode(link.target.c_str()));
      for (INode* target : targets)
        if (target != nullptr && seen.insert(target).second) open.push_back(target);
    }
    for (const INode* node : nodes_)
      if (!seen.contains(node)) add(Severity::note, *node, "", "cannot be reached from Root by any link");
  }

  void checkLimits(INode& node) {
    if (dynamic_cast<IInteger*>(&node) == nullptr && dynamic_cast<IFloat*>(&node) == nullptr) return;
    const std::string min = propertyText(node, "Min");
    const std::string max = min.empty() ? min : propertyText(node, "Max");
    const auto integers = isAbove<int64_t>(min, max);  // exact where both are integers
    if (integers ? *integers : isAbove<double>(min, max).value_or(false))
      add(Severity::defect, node, "Min", "the minimum " + min + " is above the maximum " + max);
  }

  void checkTexts(INode& node) {
    const EInterfaceType type = node.GetPrincipalInterfaceType();
    const bool hasValue = dynamic_cast<IValue*>(&node) != nullptr && type != intfICategory && type != intfIEnumEntry;
    if (hasValue && node.IsFeature() && node.GetToolTip().empty() && node.GetDescription().empty())
      add(Severity::note, node, "ToolTip", "the feature has neither ToolTip nor Description");
  }

  INodeMap& map_;
  const SourceLines& lines_;
  NodeList_t nodes_;
  std::vector<Problem> problems_;
};

template <class Load>
std::vector<Problem> problemsOf(std::string_view text, Load load) {
  std::vector<Problem> problems;
  try {
    const Description map = load();
    const SourceLines lines(text);
    problems = Linter(*map, lines).run();
  } catch (const DescriptionException& error) {
    problems.push_back(problemOf(error.GetFinding()));
  } catch (const std::exception& error) {
    problems.push_back({Severity::fatal, 0, {}, {}, error.what()});
  }
  std::stable_sort(problems.begin(), problems.end(),
                   [](const Problem& left, const Problem& right) { return left.line < right.line; });
  return problems;
}

}  // namespace

std::vector<Problem> lint(const std::string& path) {
  return problemsOf(contents(path), [&] { return loadDescriptionFile(path); });
}

std::vector<Problem> lintBytes(std::string_view description) {
  return problemsOf(description, [&] { return loadDescriptionBytes(description); });
}

}  // namespace tool
