#include "nodes/FormulaSet.h"

#include "nodes/EnumerationNode.h"

namespace GENAPI_NAMESPACE {

using formula::Arithmetic;
using formula::Aspect;
using formula::DeclaredName;
using formula::FormulaProgram;

FormulaSet::FormulaSet(const Description& description, NodeIndex node) {
  const NodeRecord& record = description.node(node);
  title_ = std::string(nodeTypeName(record.type)) + " '" + std::string(record.name()) + "'";
  const bool isInteger = record.type == NodeType::IntSwissKnife || record.type == NodeType::IntConverter;
  arithmetic_ = isInteger ? Arithmetic::Integer : Arithmetic::Float;
  foldCase_ = description.isSchema10();

  std::string_view value, inverse;
  for (const Property& each : description.properties(node)) {
    DeclaredName name;
    name.name = each.attribute();
    Variable variable;
    switch (each.element) {
      case Element::pVariable:
        name.kind = DeclaredName::Kind::Variable;
        variable.node = each.target;
        if (const auto asked = formula::aspectOf(name.name, foldCase_))
          variable.asked = *asked;
        else if (badVariable_.empty())
          badVariable_ = "variable '" + std::string(name.name) + "' has an unknown suffix";
        break;
      case Element::Constant:
        name.kind = isInteger ? DeclaredName::Kind::IntegerConstant : DeclaredName::Kind::FloatConstant;
        if (isInteger)
          name.integerConstant = each.integer;
        else
          name.floatConstant = each.real;
        break;
      case Element::Expression:
        name.kind = DeclaredName::Kind::Expression;
        name.expression = each.value();
        break;
      case Element::Formula:
      case Element::FormulaFrom: value = each.value(); continue;
      case Element::FormulaTo: inverse = each.value(); continue;
      default: continue;
    }
    names_.push_back(name);
    variables_.push_back(variable);
  }
  if (!badVariable_.empty()) defects_.push_back(title_ + ": " + badVariable_);
  const bool isConverter = record.type == NodeType::Converter || record.type == NodeType::IntConverter;
  if (!record.defective) {
    value_ = compile(value, isConverter ? "TO" : "");
    if (isConverter) inverse_ = compile(inverse, "FROM");
  }
  std::vector<DeclaredName>().swap(names_);
}

std::unique_ptr<const FormulaProgram> FormulaSet::compile(std::string_view text, std::string_view argument) {
  auto program = FormulaProgram::compile(text, arithmetic_, foldCase_, names_, argument);
  if (!program->ok()) defects_.push_back(title_ + ": " + program->defect());
  return program;
}

const FormulaSet& FormulaSet::of(const Description& description, NodeIndex node) {
  return NodeLayout::of(description).derived().get<FormulaSet>(node, [&] {
    return std::make_unique<const FormulaSet>(description, node);
  });
}

const FormulaSet* FormulaSet::ifKnown(const Description& description, NodeIndex node) {
  return static_cast<const FormulaSet*>(NodeLayout::of(description).derived().known(node));
}

FormulaVariables::FormulaVariables(const NodeBase& node, const FormulaSet& formulas)
    : VariableSource(node.device().formulaScratch), node_(node), formulas_(formulas) {
  if (!formulas.badVariable_.empty()) refuse<LogicalErrorException>("{}: {}", formulas.title_, formulas.badVariable_);
}

int64_t FormulaVariables::integerVariable(size_t declaredIndex) {
  const FormulaSet::Variable& variable = formulas_.variables_[declaredIndex];
  const NodeBase& node = node_.other(variable.node);
  switch (variable.asked.aspect) {
    case Aspect::Value: return node.readInteger({});
    case Aspect::Min: return node.integerMin();
    case Aspect::Max: return node.integerMax();
    case Aspect::Increment: return node.integerIncrement();
    case Aspect::AccessMode: return node.accessMode();
    case Aspect::Visibility: return node.GetVisibility();
    case Aspect::CachingMode: return node.GetCachingMode();
    case Aspect::Entry:
      if (node.record().type == NodeType::Enumeration)
        return static_cast<const EnumerationNode&>(node).entryValue(variable.asked.entry);
      refuse<RuntimeException>("{}: '{}' is no enumeration and has no entry '{}'", node_.path(), node.name(),
                               variable.asked.entry);
  }
  __builtin_unreachable();
}

double FormulaVariables::floatVariable(size_t declaredIndex) {
  const FormulaSet::Variable& variable = formulas_.variables_[declaredIndex];
  const NodeBase& node = node_.other(variable.node);
  switch (variable.asked.aspect) {
    case Aspect::Value: return node.readFloat({});
    case Aspect::Min: return node.floatMin();
    case Aspect::Max: return node.floatMax();
    case Aspect::Increment: return node.floatIncrement();
    default: return static_cast<double>(integerVariable(declaredIndex));
  }
}

void FormulaVariables::evaluationFailed(const std::string& reason) {
  refuse<LogicalErrorException>("{}: {}", formulas_.title_, reason);
}

EAccessMode restrictedByVariables(const NodeBase& node, EAccessMode mode) {
  for (const Property& each : node.properties()) {
    if (each.element != Element::pVariable) continue;
    const EAccessMode variable = node.other(each.target).accessMode();
    if (variable == NI) return NI;
    if (!IsReadable(variable)) mode = Combine(mode, NA);
  }
  return mode;
}

}  // namespace GENAPI_NAMESPACE
