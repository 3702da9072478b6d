// Cuts a formula into tokens.
#pragma once

#include "Base/GCTypes.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace GENAPI_NAMESPACE::formula {

enum class TokenKind : uint8_t {
  Number,     // decimal or hex integer, or a decimal with fraction or exponent
  Name,       // with any ".Word" parts
  Malformed,  // a number run into letters
  Unknown,    // a character that no token starts with
  End,
  Plus,
  Minus,
  Times,
  Over,
  Percent,
  Power,
  Tilde,
  ShiftLeft,
  ShiftRight,
  Less,
  LessOrEqual,
  Greater,
  GreaterOrEqual,
  Equal,
  NotEqual,
  And,
  Or,
  Xor,
  AndAnd,
  OrOr,
  Question,
  Colon,
  Comma,
  Open,
  Close
};

struct Token {
  TokenKind kind = TokenKind::End;
  std::string_view text;  // empty at the end
  size_t offset = 0;      // of its first byte in the formula
};

class FormulaLexer {
 public:
  explicit FormulaLexer(std::string_view formula) noexcept : formula_(formula) {}

  Token next() noexcept;

 private:
  Token take(TokenKind kind, size_t length) noexcept;
  Token number() noexcept;
  Token name() noexcept;
  bool startsWith(std::string_view text) const noexcept { return formula_.substr(at_).starts_with(text); }
  char peek(size_t ahead) const noexcept { return at_ + ahead < formula_.size() ? formula_[at_ + ahead] : '\0'; }

  std::string_view formula_;
  size_t at_ = 0;
};

}  // namespace GENAPI_NAMESPACE::formula
