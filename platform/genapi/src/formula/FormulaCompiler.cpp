// Compiles a formula and the Expressions it uses into one program. Each Expression becomes code once, however often it
// is mentioned; none of the steps recurses, so long chains of Expressions cost no native stack.
#include "formula/FormulaFunctions.h"
#include "formula/FormulaParser.h"
#include "formula/FormulaProgram.h"
#include "formula/VariableName.h"
#include "text/Characters.h"
#include "text/Utf8.h"

#include <algorithm>
#include <cmath>

namespace GENAPI_NAMESPACE::formula {
namespace {

constexpr uint32_t kUnnumbered = UINT32_MAX;

std::string quotable(std::string_view formula) { return text::excerpt(formula, kMaxQuotedFormula); }

}  // namespace

std::string describeProblem(std::string_view what, size_t column, std::string_view quotedFormula) {
  std::string text(what);
  text += " at column ";
  text += std::to_string(column);
  text += " of '";
  text += quotedFormula;
  text += "'";
  return text;
}

class FormulaCompiler final : private NameScope {
 public:
  FormulaCompiler(Arithmetic arithmetic, bool foldCase, std::span<const DeclaredName> names,
                  std::string_view argumentName)
      : foldCase_(foldCase), names_(names), argumentName_(argumentName), numbers_(names.size(), kUnnumbered) {
    program_->arithmetic_ = arithmetic;
    order_.reserve(names.size());
    for (uint32_t i = 0; i < names.size(); ++i) order_.push_back(i);
    if (foldCase_)
      for (const DeclaredName& declared : names) folded_.push_back(text::upperCase(declared.name));
    // Stable: of names declared twice the first counts.
    std::stable_sort(order_.begin(), order_.end(), [&](uint32_t a, uint32_t b) { return key(a) < key(b); });
  }

  std::unique_ptr<const FormulaProgram> compile(std::string_view text) {
    texts_.push_back(text);
    // Parsing a part can add Expressions to the list.
    for (size_t part = 0; part < texts_.size(); ++part)
      if (!parsePart(part)) return std::move(program_);
    if (measure()) link();
    return std::move(program_);
  }

 private:
  std::string_view key(uint32_t declared) const { return foldCase_ ? folded_[declared] : names_[declared].name; }

  bool parsePart(size_t part) {
    const std::string_view text = texts_[part];
    if (text.size() > kMaxFormulaChars)
      return refuse("formula longer than " + std::to_string(kMaxFormulaChars) + " characters", 1, text);
    parts_.push_back(parseFormula(text, program_->arithmetic_, *this));
    const ParsedFormula& parsed = parts_.back();
    return parsed.complaint.empty() || refuse(parsed.complaint, parsed.complaintColumn, text);
  }

  bool refuse(std::string_view what, size_t column, std::string_view text) {
    program_->defect_ = describeProblem(what, column, quotable(text));
    return false;
  }

  Meaning meaningOf(std::string_view name) override {
    const std::string upper = foldCase_ ? text::upperCase(name) : std::string();
    const std::string_view wanted = foldCase_ ? std::string_view(upper) : name;
    const auto found =
        std::lower_bound(order_.begin(), order_.end(), wanted,
                         [&](uint32_t declared, std::string_view value) { return key(declared) < value; });
    if (found != order_.end() && key(*found) == wanted) return declaredMeaning(*found);
    if (!argumentName_.empty() && wanted == argumentName_) return {Meaning::Kind::Argument, 0, {}, {}};
    return {};
  }

  Meaning declaredMeaning(uint32_t declared) {
    const DeclaredName& name = names_[declared];
    switch (name.kind) {
      case DeclaredName::Kind::Variable: {
        if (!aspectOf(name.name, foldCase_)) return refused("unknown suffix of variable", name.name);
        if (numbers_[declared] == kUnnumbered) {
          numbers_[declared] = static_cast<uint32_t>(program_->variables_.size());
          program_->variables_.push_back(declared);
        }
        return {Meaning::Kind::Variable, numbers_[declared], {}, {}};
      }
      case DeclaredName::Kind::Expression:
        if (numbers_[declared] == kUnnumbered) {
          numbers_[declared] = static_cast<uint32_t>(texts_.size() - 1);
          texts_.push_back(name.expression);
          expressionNames_.push_back(declared);
        }
        return {Meaning::Kind::Expression, numbers_[declared], {}, {}};
      case DeclaredName::Kind::IntegerConstant:
        return constantMeaning(name.integerConstant, static_cast<double>(name.integerConstant));
      case DeclaredName::Kind::FloatConstant: break;
    }
    const double value = name.floatConstant;
    if (program_->arithmetic_ == Arithmetic::Float) return constantMeaning(0, value);
    if (value != std::trunc(value)) return refused("constant with a fraction in an integer formula:", name.name);
    if (!(value >= -0x1p63 && value < 0x1p63)) return refused("constant beyond 64-bit integers:", name.name);
    return constantMeaning(static_cast<int64_t>(value), 0);
  }

  Meaning constantMeaning(int64_t integer, double real) const {
    Meaning meaning{Meaning::Kind::Constant, 0, {}, {}};
    if (program_->arithmetic_ == Arithmetic::Integer)
      meaning.constant.integer = integer;
    else
      meaning.constant.real = real;
    return meaning;
  }

  static Meaning refused(std::string_view why, std::string_view name) {
    return {Meaning::Kind::Refused, 0, {}, std::string(why) + " '" + quotable(name) + "'"};
  }

  // Finds what an evaluation needs at most, and Expressions that lead back to themselves. A walk in depth with a list
  // of its own.
  bool measure() {
    enum class State : uint8_t { Untouched, Open, Done };
    struct Visit {
      size_t part;
      size_t nextCall;
    };
    std::vector<State> states(parts_.size(), State::Untouched);
    std::vector<uint32_t> stack(parts_.size()), calls(parts_.size());
    std::vector<Visit> visits{{0, 0}};
    states[0] = State::Open;
    while (!visits.empty()) {
      const size_t part = visits.back().part;
      const ParsedFormula& parsed = parts_[part];
      if (visits.back().nextCall < parsed.calls.size()) {
        const ParsedFormula::Call& call = parsed.calls[visits.back().nextCall++];
        const size_t callee = call.expression + size_t{1};
        if (states[callee] == State::Open) {
          return refuse(
              "Expression '" + quotable(names_[expressionNames_[call.expression]].name) + "' leads back to itself",
              call.column, texts_[part]);
        }
        if (states[callee] == State::Untouched) {
          states[callee] = State::Open;
          visits.push_back({callee, 0});
        }
        continue;
      }
      for (const ParsedFormula::Call& call : parsed.calls) {
        stack[part] = std::max(stack[part], stack[call.expression + size_t{1}]);
        calls[part] = std::max(calls[part], calls[call.expression + size_t{1}] + 1);
      }
      stack[part] += parsed.stackWords;
      states[part] = State::Done;
      visits.pop_back();
    }
    program_->stackWords_ = stack[0];
    program_->callWords_ = calls[0];
    program_->rememberedWords_ = static_cast<uint32_t>(program_->variables_.size() + parts_.size() - 1);
    const uint32_t markWords = (program_->rememberedWords_ + 63) / 64;
    program_->neededWords_ = 1 + stack[0] + program_->rememberedWords_ + markWords + calls[0];
    return true;
  }

  void link() {
    size_t instructions = parts_.size();
    for (const ParsedFormula& part : parts_) instructions += part.code.size();
    program_->code_.reserve(instructions);
    program_->columns_.reserve(instructions);
    program_->parts_.reserve(parts_.size());
    for (size_t i = 0; i < parts_.size(); ++i) {
      const ParsedFormula& part = parts_[i];
      const uint32_t first = static_cast<uint32_t>(program_->code_.size());
      if (i > 0) program_->entryPoints_.push_back(first);
      program_->parts_.push_back({first, quotable(texts_[i])});
      program_->code_.insert(program_->code_.end(), part.code.begin(), part.code.end());
      program_->columns_.insert(program_->columns_.end(), part.columns.begin(), part.columns.end());
      const uint32_t ended = i == 0 ? kWholeFormula : static_cast<uint32_t>(i - 1);
      program_->code_.push_back({Operation::Return, ended, Value{}});
      program_->columns_.push_back(1);
    }
  }

  bool foldCase_;
  std::span<const DeclaredName> names_;
  std::string_view argumentName_;
  std::vector<std::string> folded_;        // the names in upper case, if case does not count
  std::vector<uint32_t> order_;            // the names' indices, sorted by key
  std::vector<uint32_t> numbers_;          // of variables and of Expressions, given at their first mention
  std::vector<uint32_t> expressionNames_;  // index into names of each Expression mentioned
  std::vector<std::string_view> texts_;    // the formula, then the Expressions mentioned
  std::vector<ParsedFormula> parts_;       // what they parsed to
  std::unique_ptr<FormulaProgram> program_{new FormulaProgram()};
};

std::unique_ptr<const FormulaProgram> FormulaProgram::compile(std::string_view text, Arithmetic arithmetic,
                                                              bool foldCase, std::span<const DeclaredName> names,
                                                              std::string_view argumentName) {
  return FormulaCompiler(arithmetic, foldCase, names, argumentName).compile(text);
}

}  // namespace GENAPI_NAMESPACE::formula
