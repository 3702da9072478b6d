// Turns one formula text into instructions. Operators that wait for their right side stand on a list of the parser's
// own, so nesting costs no native stack.
#pragma once

#include "formula/FormulaCode.h"
#include "formula/FormulaLexer.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace GENAPI_NAMESPACE::formula {

// What a name in a formula stands for.
struct Meaning {
  enum class Kind : uint8_t { Unknown, Refused, Argument, Variable, Constant, Expression };

  Kind kind = Kind::Unknown;
  uint32_t number = 0;    // of the variable or Expression
  Value constant{};       // of the program's arithmetic
  std::string complaint;  // why the name is refused
};

// Where the parser asks for names.
class NameScope {
 public:
  virtual Meaning meaningOf(std::string_view name) = 0;

 protected:
  ~NameScope() = default;
};

// The instructions of one text, without the Return at their end.
struct ParsedFormula {
  struct Call {
    uint32_t expression;
    uint32_t column;
  };

  std::vector<Instruction> code;
  std::vector<uint32_t> columns;  // of each instruction, from 1 at the first character that is not blank
  std::vector<Call> calls;        // Expressions mentioned, each mention
  uint32_t stackWords = 0;        // most intermediate values alive at once
  std::string complaint;          // empty when the text is a formula
  uint32_t complaintColumn = 0;
};

ParsedFormula parseFormula(std::string_view text, Arithmetic arithmetic, NameScope& names);

}  // namespace GENAPI_NAMESPACE::formula
