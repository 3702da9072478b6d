// Cuts a formula into tokens.
#pragma once

#include "formula/FormulaCode.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace GENAPI_NAMESPACE::formula {

enum class TokenKind : uint8_t {
  Number,     // decimal or hex integer, or a decimal with fraction or exponent
  Name,       // with any ".Word" parts
  Operator,   // of two operands; some of them may also stand before one
  Malformed,  // a number run into letters
  Unknown,    // a character that no token starts with
  End,
  Tilde,
  Question,
  Colon,
  Comma,
  Open,
  Close
};

// How tightly operators bind. What opens something (parenthesis, function, '?') binds not at all: only its own closing
// token ends it.
enum Precedence : uint8_t {
  kOpening = 0,
  kElse = 2,
  kLogicalOr,
  kLogicalAnd,
  kBitOr,
  kBitXor,
  kBitAnd,
  kEquality,
  kRelation,
  kShift,
  kSum,
  kProduct,
  kUnary,
  kPower
};

// What a token of punctuation is.
struct Symbol {
  std::string_view text;
  TokenKind kind;
  Operation operation{};  // of an Operator; of a short circuit: the jump between its sides
  Precedence precedence = kOpening;
};

struct Token {
  TokenKind kind = TokenKind::End;
  std::string_view text;           // empty at the end
  size_t offset = 0;               // of its first byte in the formula
  const Symbol* symbol = nullptr;  // of punctuation

  bool isOperator(Operation operation) const { return kind == TokenKind::Operator && symbol->operation == operation; }
};

class FormulaLexer {
 public:
  explicit FormulaLexer(std::string_view formula) noexcept : formula_(formula) {}

  Token next() noexcept;

 private:
  Token take(TokenKind kind, size_t length, const Symbol* symbol = nullptr) noexcept;
  Token number() noexcept;
  Token name() noexcept;
  bool startsWith(std::string_view text) const noexcept { return formula_.substr(at_).starts_with(text); }
  char peek(size_t ahead) const noexcept { return at_ + ahead < formula_.size() ? formula_[at_ + ahead] : '\0'; }

  std::string_view formula_;
  size_t at_ = 0;
};

}  // namespace GENAPI_NAMESPACE::formula
