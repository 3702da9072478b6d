#include "formula/FormulaParser.h"

#include "formula/FormulaFunctions.h"
#include "formula/FormulaProgram.h"
#include "text/NumberSyntax.h"
#include "text/Utf8.h"

#include <algorithm>

namespace GENAPI_NAMESPACE::formula {
namespace {

// An operator or bracket whose end has not been reached yet.
struct Pending {
  enum class Kind : uint8_t { Parenthesis, Function, Unary, Binary, ShortCircuit, Then, Else };

  Kind kind;
  Precedence precedence;
  size_t offset;                       // of its token in the text
  Operation operation{};               // Unary, Binary
  size_t jump = 0;                     // ShortCircuit, Then, Else: the jump that ends where this ends
  const Function* function = nullptr;  // Function
  size_t arguments = 1;                // Function: those begun so far
};

// An integer formula's literal with point or exponent, without a detour through a double. Nothing when it has a
// fraction or does not fit.
struct IntegralDecimal {
  bool hasFraction = false;
  std::optional<int64_t> value;
};

IntegralDecimal parseIntegralDecimal(std::string_view text) {
  std::string digits;
  int64_t exponent = 0;
  size_t at = 0;
  bool fraction = false;
  for (; at < text.size() && text[at] != 'e' && text[at] != 'E'; ++at) {
    if (text[at] == '.') {
      fraction = true;
      continue;
    }
    digits += text[at];
    if (fraction) --exponent;
  }
  if (at < text.size()) {
    const bool negative = text[at + 1] == '-';
    int64_t written = 0;
    for (char character : text.substr(at + 1))
      if (character >= '0' && character <= '9' && written < 1000000) written = written * 10 + (character - '0');
    exponent += negative ? -written : written;
  }
  while (!digits.empty() && digits.back() == '0') {
    digits.pop_back();
    ++exponent;
  }
  digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size()));
  if (digits.empty()) return {false, 0};
  if (exponent < 0) return {true, std::nullopt};
  if (exponent > 18) return {};
  digits.append(static_cast<size_t>(exponent), '0');
  return {false, text::parseInteger(digits)};
}

class Parser {
 public:
  Parser(std::string_view text, Arithmetic arithmetic, NameScope& names)
      : text_(text),
        arithmetic_(arithmetic),
        names_(names),
        lexer_(text),
        token_(lexer_.next()),
        firstToken_(token_.offset) {}

  ParsedFormula parse() {
    if (token_.kind == TokenKind::End) complain(token_.offset, "empty formula");
    while (result_.complaint.empty() && !complete_)
      if (expectsOperand_)
        operand();
      else
        afterOperand();
    return std::move(result_);
  }

 private:
  void operand() {
    switch (token_.kind) {
      case TokenKind::Number: return literal();
      case TokenKind::Name: return name();
      case TokenKind::Open: return open({Pending::Kind::Parenthesis, kOpening, token_.offset});
      case TokenKind::Operator:
        if (token_.isOperator(Operation::Add)) return advance();
        if (token_.isOperator(Operation::Subtract)) return unary(Operation::Negate);
        return unexpected();
      case TokenKind::Tilde: return unary(Operation::Complement);
      case TokenKind::Close:
        if (!pending_.empty() && pending_.back().kind == Pending::Kind::Function && justOpened_) {
          pending_.back().arguments = 0;
          return complainAboutArguments(pending_.back());
        }
        return unexpected();
      default: return unexpected();
    }
  }

  void afterOperand() {
    switch (token_.kind) {
      case TokenKind::Question: return question();
      case TokenKind::Colon: return colon();
      case TokenKind::Comma: return comma();
      case TokenKind::Close: return close();
      case TokenKind::End: return end();
      case TokenKind::Operator: return binary(*token_.symbol);
      default: return unexpected();
    }
  }

  void binary(const Symbol& symbol) {
    // All levels but power associate to the left.
    reduce(symbol.precedence == kPower ? kPower + 1 : symbol.precedence);
    if (symbol.precedence == kLogicalAnd || symbol.precedence == kLogicalOr) {
      emit(symbol.operation, token_.offset, -1);
      push({Pending::Kind::ShortCircuit, symbol.precedence, token_.offset, {}, lastInstruction()});
    } else {
      push({Pending::Kind::Binary, symbol.precedence, token_.offset, symbol.operation});
    }
    advance();
    expectsOperand_ = true;
  }

  void literal() {
    Value value{};
    if (arithmetic_ == Arithmetic::Float) {
      const std::optional<double> number = text::parseFloat(token_.text);
      if (!number) return complain(token_.offset, "number " + quoted(token_.text) + " does not fit a double");
      value.real = *number;
    } else {
      const bool hex = token_.text.size() > 1 && (token_.text[1] == 'x' || token_.text[1] == 'X');
      std::optional<int64_t> number = text::parseInteger(token_.text);
      if (!number && !hex) {
        const IntegralDecimal decimal = parseIntegralDecimal(token_.text);
        if (decimal.hasFraction)
          return complain(token_.offset, "number " + quoted(token_.text) + " has a fraction in an integer formula");
        number = decimal.value;
      }
      if (!number && isLowestInteger()) {
        // The magnitude alone does not fit, so the sign before it is part of the literal.
        pending_.pop_back();
        --pendingOperators_;
        number = INT64_MIN;
      }
      if (!number) return complain(token_.offset, "number " + quoted(token_.text) + " does not fit a 64-bit integer");
      value.integer = *number;
    }
    emit(Operation::PushConstant, token_.offset, +1, 0, value);
    advance();
    expectsOperand_ = false;
  }

  bool isLowestInteger() const {
    if (pending_.empty() || pending_.back().kind != Pending::Kind::Unary) return false;
    if (pending_.back().operation != Operation::Negate || tokenAfter().isOperator(Operation::Power)) return false;
    return text::parseInteger("-" + std::string(token_.text)) == INT64_MIN;
  }

  void name() {
    if (tokenAfter().kind == TokenKind::Open) {
      // No value can precede a parenthesis, so the function is meant even where a variable has its name.
      if (const Function* function = findFunction(token_.text)) return call(*function);
    }
    Meaning meaning = names_.meaningOf(token_.text);
    switch (meaning.kind) {
      case Meaning::Kind::Argument: emit(Operation::PushArgument, token_.offset, +1); break;
      case Meaning::Kind::Variable: emit(Operation::PushVariable, token_.offset, +1, meaning.number); break;
      case Meaning::Kind::Constant: emit(Operation::PushConstant, token_.offset, +1, 0, meaning.constant); break;
      case Meaning::Kind::Expression:
        emit(Operation::PushExpression, token_.offset, +1, meaning.number);
        result_.calls.push_back({meaning.number, result_.columns.back()});
        break;
      case Meaning::Kind::Refused: return complain(token_.offset, std::move(meaning.complaint));
      case Meaning::Kind::Unknown: {
        const std::optional<double> constant = findConstant(token_.text);
        if (!constant) {
          const bool asFunction = tokenAfter().kind == TokenKind::Open;
          return complain(token_.offset, (asFunction ? "unknown function " : "unknown name ") + quoted(token_.text));
        }
        if (arithmetic_ == Arithmetic::Integer) return complainAboutFloatOnly("constant ");
        Value value{};
        value.real = *constant;
        emit(Operation::PushConstant, token_.offset, +1, 0, value);
        break;
      }
    }
    advance();
    expectsOperand_ = false;
  }

  void call(const Function& function) {
    if (arithmetic_ == Arithmetic::Integer && function.real) return complainAboutFloatOnly("function ");
    const size_t offset = token_.offset;
    advance();
    open({Pending::Kind::Function, kOpening, offset, {}, 0, &function});
  }

  void open(Pending bracket) {
    push(bracket);
    advance();
    justOpened_ = true;
  }

  void unary(Operation operation) {
    push({Pending::Kind::Unary, kUnary, token_.offset, operation});
    advance();
  }

  void question() {
    reduce(kLogicalOr);
    emit(Operation::JumpIfZero, token_.offset, -1);
    push({Pending::Kind::Then, kOpening, token_.offset, {}, lastInstruction()});
    advance();
    expectsOperand_ = true;
  }

  void colon() {
    reduce(kElse);
    if (pending_.empty() || pending_.back().kind != Pending::Kind::Then) return unexpected();
    Pending& condition = pending_.back();
    // The value that the other side leaves takes the same place on the stack.
    emit(Operation::Jump, token_.offset, -1);
    land(condition.jump);
    condition.kind = Pending::Kind::Else;
    condition.precedence = kElse;
    condition.jump = lastInstruction();
    advance();
    expectsOperand_ = true;
  }

  void comma() {
    reduce(kElse);
    if (pending_.empty() || pending_.back().kind != Pending::Kind::Function) return unexpected();
    ++pending_.back().arguments;
    advance();
    expectsOperand_ = true;
  }

  void close() {
    reduce(kElse);
    if (pending_.empty()) return unexpected();
    const Pending bracket = pending_.back();
    if (bracket.kind == Pending::Kind::Then) return complain(bracket.offset, "'?' without ':'");
    if (bracket.kind == Pending::Kind::Function) {
      const Function& function = *bracket.function;
      if (bracket.arguments < function.minArguments || bracket.arguments > function.maxArguments)
        return complainAboutArguments(bracket);
      Value called{};
      called.function = function.real;
      const bool toPlaces = bracket.arguments == 2;  // only ROUND takes two
      emit(toPlaces ? Operation::RoundToPlaces : function.operation, bracket.offset, toPlaces ? -1 : 0, 0, called);
    }
    pending_.pop_back();
    --pendingBrackets_;
    advance();
  }

  void end() {
    reduce(kElse);
    if (pending_.empty()) {
      complete_ = true;
    } else if (pending_.back().kind == Pending::Kind::Then) {
      complain(pending_.back().offset, "'?' without ':'");
    } else {
      complain(pending_.back().offset, pending_.back().kind == Pending::Kind::Function
                                           ? quoted(pending_.back().function->name) + " without ')'"
                                           : "'(' without ')'");
    }
  }

  // Ends all pending operators that bind at least as tightly.
  void reduce(int precedence) {
    while (!pending_.empty() && pending_.back().precedence >= precedence) {
      const Pending ended = pending_.back();
      pending_.pop_back();
      --pendingOperators_;
      switch (ended.kind) {
        case Pending::Kind::Unary: emit(ended.operation, ended.offset, 0); break;
        case Pending::Kind::Binary: emit(ended.operation, ended.offset, -1); break;
        case Pending::Kind::ShortCircuit:
          emit(Operation::MakeBoolean, ended.offset, 0);
          land(ended.jump);
          break;
        default: land(ended.jump);
      }
    }
  }

  void push(const Pending& pending) {
    const bool bracket = pending.kind == Pending::Kind::Parenthesis || pending.kind == Pending::Kind::Function;
    size_t& count = bracket ? pendingBrackets_ : pendingOperators_;
    if (++count > kMaxFormulaDepth)
      return complain(pending.offset, "nested deeper than " + std::to_string(kMaxFormulaDepth) + " levels");
    pending_.push_back(pending);
  }

  // `growth` is what the instruction does to the number of values on the stack.
  void emit(Operation operation, size_t offset, int growth, uint32_t number = 0, Value constant = Value{}) {
    result_.code.push_back({operation, number, constant});
    result_.columns.push_back(columnAt(offset));
    stackWords_ = static_cast<uint32_t>(static_cast<int64_t>(stackWords_) + growth);
    result_.stackWords = std::max(result_.stackWords, stackWords_);
  }

  size_t lastInstruction() const { return result_.code.size() - 1; }

  // Makes a jump end at the next instruction.
  void land(size_t jump) { result_.code[jump].operand = static_cast<uint32_t>(result_.code.size() - jump); }

  void advance() {
    token_ = lexer_.next();
    justOpened_ = false;
  }

  Token tokenAfter() const {
    FormulaLexer ahead = lexer_;
    return ahead.next();
  }

  // Counts from 1, leading blanks left out. Nothing but ASCII stands before a token: the first other character ends the
  // parse. So bytes are characters.
  uint32_t columnAt(size_t offset) const { return static_cast<uint32_t>(offset - std::min(offset, firstToken_) + 1); }

  void complain(size_t offset, std::string what) {
    if (!result_.complaint.empty()) return;
    result_.complaint = std::move(what);
    result_.complaintColumn = columnAt(offset);
  }

  void unexpected() {
    switch (token_.kind) {
      case TokenKind::End: return complain(token_.offset, "unexpected end");
      case TokenKind::Unknown: return complain(token_.offset, "unexpected character " + quoted(token_.text));
      case TokenKind::Malformed: return complain(token_.offset, "malformed number " + quoted(token_.text));
      default: return complain(token_.offset, "unexpected " + quoted(token_.text));
    }
  }

  void complainAboutArguments(const Pending& call) {
    const Function& function = *call.function;
    std::string takes = std::to_string(function.minArguments);
    if (function.maxArguments != function.minArguments) takes += " or " + std::to_string(function.maxArguments);
    complain(call.offset, quoted(function.name) + " takes " + takes + (takes == "1" ? " argument" : " arguments") +
                              ", got " + std::to_string(call.arguments));
  }

  void complainAboutFloatOnly(std::string_view what) {
    complain(token_.offset, std::string(what) + quoted(token_.text) + " is not available in integer formulas");
  }

  static std::string quoted(std::string_view text) {
    constexpr size_t kMaxQuotedToken = 40;
    return "'" + text::excerpt(text, kMaxQuotedToken) + "'";
  }

  std::string_view text_;
  Arithmetic arithmetic_;
  NameScope& names_;
  FormulaLexer lexer_;
  Token token_;
  size_t firstToken_;
  bool expectsOperand_ = true;
  bool justOpened_ = false;  // the token before this one opened a bracket
  bool complete_ = false;
  std::vector<Pending> pending_;
  size_t pendingBrackets_ = 0;
  size_t pendingOperators_ = 0;
  uint32_t stackWords_ = 0;
  ParsedFormula result_;
};

}  // namespace

ParsedFormula parseFormula(std::string_view text, Arithmetic arithmetic, NameScope& names) {
  return Parser(text, arithmetic, names).parse();
}

}  // namespace GENAPI_NAMESPACE::formula
