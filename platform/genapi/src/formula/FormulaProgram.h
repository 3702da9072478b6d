// A formula, compiled once into a flat list of instructions and then evaluated as often as needed, in whole numbers or
// in floating point. Programs do not change after they are made: any number of threads may evaluate one.
#pragma once

#include "GenApi/Types.h"
#include "formula/FormulaCode.h"
#include "formula/FormulaScratch.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace GENAPI_NAMESPACE::formula {

// Longest formula text, in bytes. The longest in real descriptions has about 2,000.
inline constexpr size_t kMaxFormulaChars = 64 * 1024;

// Most parentheses (those of functions included) and most operators that may be open at one place. Real formulas
// reach 23; the limit keeps what one formula can ask for small.
inline constexpr size_t kMaxFormulaDepth = 512;

// Most characters of a formula that an error text quotes.
inline constexpr size_t kMaxQuotedFormula = 60;

// A name that a node declares for its formulas.
struct DeclaredName {
  enum class Kind : uint8_t { Variable, IntegerConstant, FloatConstant, Expression };

  std::string_view name;  // as declared, with the suffix that variables may carry: "GAIN.Max"
  Kind kind = Kind::Variable;
  int64_t integerConstant = 0;
  double floatConstant = 0;
  std::string_view expression{};  // the formula that an Expression stands for
};

// Where an evaluation gets the values of variables from, and where it reports that it cannot go on.
class VariableSource {
 public:
  // The value of names[declaredIndex] as given to compile; asked at most once per variable and evaluation, and only
  // when the result depends on it. What these throw leaves the evaluation unchanged.
  virtual int64_t integerVariable(size_t declaredIndex) = 0;
  virtual double floatVariable(size_t declaredIndex) = 0;

  // Must throw. `reason` reads "division by zero at column 3 of 'A % 0'"; throws LogicalErrorException with it.
  // Override to put a path in front.
  virtual void evaluationFailed(const std::string& reason);

  // Where evaluations work. Those inside each other share it; by default, those of one thread.
  Scratch& scratch() { return scratch_ ? *scratch_ : scratchOfThread(); }

  VariableSource() = default;
  virtual ~VariableSource() = default;

 protected:
  explicit VariableSource(Scratch& scratch) : scratch_(&scratch) {}

 private:
  static Scratch& scratchOfThread();
  Scratch* const scratch_ = nullptr;
};

// "<what> at column <n> of '<formula>'".
std::string describeProblem(std::string_view what, size_t column, std::string_view quotedFormula);

class FormulaProgram {
 public:
  // Compiles `text`. `argumentName` is "TO", "FROM", or "" for a formula that takes no value in. With `foldCase`, names
  // are compared in upper case. Throws nothing but std::bad_alloc: a formula that is not one yields a program that
  // holds the reason. Nothing of the arguments is referred to afterwards.
  static std::unique_ptr<const FormulaProgram> compile(std::string_view text, Arithmetic arithmetic, bool foldCase,
                                                       std::span<const DeclaredName> names,
                                                       std::string_view argumentName);

  bool ok() const noexcept { return defect_.empty(); }
  // Why the formula cannot be evaluated, "unknown name 'Z' at column 8 of 'FROM / Z'"; empty when it can. Columns count
  // from 1 at the first character that is not blank.
  const std::string& defect() const noexcept { return defect_; }

  // The variables that the formula (its Expressions included) mentions, each once, in order of first mention.
  size_t variableCount() const noexcept { return variables_.size(); }
  // Index into the names given to compile.
  size_t declaredIndex(size_t variable) const { return variables_[variable]; }

  // The formula's value. `argument` is what TO or FROM stands for. Reports division by zero, overflow, domain errors,
  // shift counts outside 0..63, results that are not finite, and a defective formula through
  // VariableSource::evaluationFailed. Call the one that the program was compiled for.
  int64_t evaluateInteger(VariableSource& source, int64_t argument = 0) const;
  double evaluateFloat(VariableSource& source, double argument = 0) const;

 private:
  friend class FormulaCompiler;
  FormulaProgram() = default;

  // A stretch of code and the text it was made from.
  struct Part {
    uint32_t firstInstruction;
    std::string quotedText;
  };

  template <class Number>
  Number run(VariableSource& source, Number argument) const;
  [[noreturn, gnu::cold, gnu::noinline]] void fail(VariableSource& source, size_t instruction, const char* what) const;
  [[noreturn, gnu::cold, gnu::noinline]] void fail(VariableSource& source, const std::string& reason) const;

  std::vector<Instruction> code_;      // the formula, then the Expressions it uses
  std::vector<uint32_t> columns_;      // of each instruction, in the text of its part
  std::vector<Part> parts_;            // in order of their code
  std::vector<uint32_t> entryPoints_;  // of each Expression used
  std::vector<uint32_t> variables_;
  // What an evaluation needs, counted in 64-bit words: intermediate values, remembered values, return addresses.
  uint32_t stackWords_ = 0;
  uint32_t rememberedWords_ = 0;
  uint32_t callWords_ = 0;
  uint32_t neededWords_ = 0;  // all of them together
  Arithmetic arithmetic_ = Arithmetic::Integer;
  std::string defect_;
};

}  // namespace GENAPI_NAMESPACE::formula
