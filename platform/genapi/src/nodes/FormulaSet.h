// The compiled formulas of a node and what their variables stand for; made once per description, at the first use.
#pragma once
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "description/Element.h"
#include "formula/FormulaProgram.h"
#include "formula/VariableName.h"
#include "nodes/NodeLayout.h"

namespace GENAPI_NAMESPACE {

class Description;
class NodeBase;

inline bool hasFormulas(NodeType type) {
  return type == NodeType::SwissKnife || type == NodeType::IntSwissKnife || type == NodeType::Converter ||
         type == NodeType::IntConverter;
}

class FormulaSet final : public Derived {
 public:
  FormulaSet(const Description& description, NodeIndex node);
  static const FormulaSet& of(const Description& description, NodeIndex node);
  static const FormulaSet* ifKnown(const Description& description, NodeIndex node);

  const formula::FormulaProgram& value() const { return *value_; }  // Formula of SwissKnifes, FormulaFrom of converters
  const formula::FormulaProgram& inverse() const { return *inverse_; }  // FormulaTo of converters
  // One line per formula that cannot be evaluated: "SwissKnife 'X': unknown name 'Z' at column 8 of 'FROM / Z'".
  const std::vector<std::string>& defects() const { return defects_; }

 private:
  friend class FormulaVariables;
  struct Variable {
    NodeIndex node = kNoNode;
    formula::VariableAspect asked;
  };
  std::unique_ptr<const formula::FormulaProgram> compile(std::string_view text, std::string_view argument);

  std::vector<formula::DeclaredName> names_;  // only while compiling
  std::vector<Variable> variables_;           // by declared index
  std::string title_;                         // "SwissKnife 'X'"
  std::string badVariable_;                   // why no formula of the node can be evaluated
  formula::Arithmetic arithmetic_;
  bool foldCase_;
  std::unique_ptr<const formula::FormulaProgram> value_, inverse_;
  std::vector<std::string> defects_;
};

// Gives a running formula the values of its variables.
class FormulaVariables final : public formula::VariableSource {
 public:
  // Throws LogicalErrorException when a variable is declared with an unknown suffix.
  FormulaVariables(const NodeBase& node, const FormulaSet& formulas);
  int64_t integerVariable(size_t declaredIndex) override;
  double floatVariable(size_t declaredIndex) override;
  void evaluationFailed(const std::string& reason) override;

 private:
  const NodeBase& node_;
  const FormulaSet& formulas_;
};

// Rights of a node by the variables of its formulas: NI if one is NI, NA if one cannot be read, else the given mode.
EAccessMode restrictedByVariables(const NodeBase& node, EAccessMode mode);

}  // namespace GENAPI_NAMESPACE
