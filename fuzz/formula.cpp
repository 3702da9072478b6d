// Formulas from arbitrary text, in both arithmetics. The first line is the formula, each further line the formula of an
// Expression, named P, Q, R, S. Variables are A, B and N.Max; the argument is FROM.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "Base/GCException.h"
#include "formula/FormulaProgram.h"

using namespace GENAPI_NAMESPACE::formula;

namespace {

// Checks that no variable is asked for twice.
class OnceEach : public VariableSource {
 public:
  explicit OnceEach(size_t count) : asked_(count, false) {}
  int64_t integerVariable(size_t index) override {
    require(!asked_.at(index));
    asked_[index] = true;
    return index == 0 ? INT64_MIN : 3;
  }
  double floatVariable(size_t index) override {
    require(!asked_.at(index));
    asked_[index] = true;
    return index == 0 ? -1e300 : 2.5;
  }

  static void require(bool holds) {
    if (!holds) std::abort();
  }

 private:
  std::vector<bool> asked_;
};

void evaluate(std::string_view formula, Arithmetic arithmetic, bool foldCase, const std::vector<DeclaredName>& names) {
  const auto program = FormulaProgram::compile(formula, arithmetic, foldCase, names, "FROM");
  for (size_t i = 0; i < program->variableCount(); ++i) OnceEach::require(program->declaredIndex(i) < names.size());
  OnceEach source(names.size());
  try {
    if (arithmetic == Arithmetic::Integer)
      program->evaluateInteger(source, 7);
    else
      OnceEach::require(std::isfinite(program->evaluateFloat(source, 7.5)));
    OnceEach::require(program->ok());
  } catch (const GENICAM_NAMESPACE::LogicalErrorException& error) {
    const std::string_view text = error.GetDescription();
    OnceEach::require(text.find(" at column ") != text.npos && text.find('\n') == text.npos);
    OnceEach::require(program->ok() || text == program->defect());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto takeLine = [&] {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(line.size() < text.size() ? line.size() + 1 : text.size());
    return line;
  };
  const std::string_view formula = takeLine();
  std::vector<DeclaredName> names(3);
  names[0].name = "A";
  names[1].name = "B";
  names[2].name = "N.Max";
  for (std::string_view name : {"P", "Q", "R", "S"})
    names.push_back({name, DeclaredName::Kind::Expression, 0, 0, takeLine()});
  evaluate(formula, Arithmetic::Integer, false, names);
  evaluate(formula, Arithmetic::Float, true, names);
  return 0;
}
