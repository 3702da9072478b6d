#include "formula/FormulaLexer.h"

#include "text/Characters.h"
#include "text/Utf8.h"

namespace GENAPI_NAMESPACE::formula {
namespace {

bool beginsWord(char character) noexcept { return text::isLetter(character) || character == '_'; }

bool isWord(char character) noexcept { return beginsWord(character) || text::isDigit(character); }

// Two-character symbols come before the one-character symbols that they begin with.
constexpr Symbol kSymbols[] = {{"**", TokenKind::Operator, Operation::Power, kPower},
                               {"<<", TokenKind::Operator, Operation::ShiftLeft, kShift},
                               {"<=", TokenKind::Operator, Operation::LessOrEqual, kRelation},
                               {"<>", TokenKind::Operator, Operation::NotEqual, kEquality},
                               {"<", TokenKind::Operator, Operation::Less, kRelation},
                               {">>", TokenKind::Operator, Operation::ShiftRight, kShift},
                               {">=", TokenKind::Operator, Operation::GreaterOrEqual, kRelation},
                               {">", TokenKind::Operator, Operation::Greater, kRelation},
                               {"&&", TokenKind::Operator, Operation::JumpIfFalse, kLogicalAnd},
                               {"&", TokenKind::Operator, Operation::BitAnd, kBitAnd},
                               {"||", TokenKind::Operator, Operation::JumpIfTrue, kLogicalOr},
                               {"|", TokenKind::Operator, Operation::BitOr, kBitOr},
                               {"*", TokenKind::Operator, Operation::Multiply, kProduct},
                               {"+", TokenKind::Operator, Operation::Add, kSum},
                               {"-", TokenKind::Operator, Operation::Subtract, kSum},
                               {"/", TokenKind::Operator, Operation::Divide, kProduct},
                               {"%", TokenKind::Operator, Operation::Remainder, kProduct},
                               {"=", TokenKind::Operator, Operation::Equal, kEquality},
                               {"^", TokenKind::Operator, Operation::BitXor, kBitXor},
                               {"~", TokenKind::Tilde},
                               {"?", TokenKind::Question},
                               {":", TokenKind::Colon},
                               {",", TokenKind::Comma},
                               {"(", TokenKind::Open},
                               {")", TokenKind::Close}};

}  // namespace

Token FormulaLexer::take(TokenKind kind, size_t length, const Symbol* symbol) noexcept {
  const Token token{kind, formula_.substr(at_, length), at_, symbol};
  at_ += token.text.size();
  return token;
}

Token FormulaLexer::next() noexcept {
  while (at_ < formula_.size() && text::isBlank(formula_[at_])) ++at_;
  if (at_ == formula_.size()) return {TokenKind::End, {}, at_, nullptr};
  if (beginsWord(peek(0))) return name();
  if (text::isDigit(peek(0)) || (peek(0) == '.' && text::isDigit(peek(1)))) return number();
  for (const Symbol& symbol : kSymbols)
    if (startsWith(symbol.text)) return take(symbol.kind, symbol.text.size(), &symbol);
  return take(TokenKind::Unknown, text::firstCharacters(formula_.substr(at_), 1).size());
}

Token FormulaLexer::number() noexcept {
  size_t length = 0;
  const auto digits = [&] {
    while (text::isDigit(peek(length))) ++length;
  };
  bool complete = true;
  if (peek(0) == '0' && (peek(1) == 'x' || peek(1) == 'X')) {
    length = 2;
    while (text::hexDigit(peek(length)) >= 0) ++length;
    complete = length > 2;
  } else {
    digits();
    if (peek(length) == '.') {
      ++length;
      digits();
    }
    if (peek(length) == 'e' || peek(length) == 'E') {
      ++length;
      if (peek(length) == '+' || peek(length) == '-') ++length;
      complete = text::isDigit(peek(length));
      digits();
    }
  }
  if (complete && !isWord(peek(length)) && peek(length) != '.') return take(TokenKind::Number, length);
  while (isWord(peek(length)) || peek(length) == '.') ++length;
  return take(TokenKind::Malformed, length);
}

Token FormulaLexer::name() noexcept {
  size_t length = 0;
  while (isWord(peek(length))) ++length;
  while (peek(length) == '.' && isWord(peek(length + 1))) {
    ++length;
    while (isWord(peek(length))) ++length;
  }
  return take(TokenKind::Name, length);
}

}  // namespace GENAPI_NAMESPACE::formula
