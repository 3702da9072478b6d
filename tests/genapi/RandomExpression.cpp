#include "RandomExpression.h"

#include <array>
#include <charconv>
#include <cmath>

namespace randomly {

namespace {

struct Sign {
  const char* text;
  int level;  // 1 binds most tightly
};

Sign signOf(Op op) {
  switch (op) {
    case Op::Literal:
    case Op::Name:
    case Op::Argument:
      return {"", 1};
    case Op::Power:
      return {"**", 2};
    case Op::Negative:
      return {"-", 3};
    case Op::Complement:
      return {"~", 3};
    case Op::Times:
      return {"*", 4};
    case Op::Divided:
      return {"/", 4};
    case Op::Modulo:
      return {"%", 4};
    case Op::Plus:
      return {"+", 5};
    case Op::Minus:
      return {"-", 5};
    case Op::ShiftLeft:
      return {"<<", 6};
    case Op::ShiftRight:
      return {">>", 6};
    case Op::Less:
      return {"<", 7};
    case Op::LessEqual:
      return {"<=", 7};
    case Op::Greater:
      return {">", 7};
    case Op::GreaterEqual:
      return {">=", 7};
    case Op::Equal:
      return {"=", 8};
    case Op::Different:
      return {"<>", 8};
    case Op::And:
      return {"&", 9};
    case Op::Xor:
      return {"^", 10};
    case Op::Or:
      return {"|", 11};
    case Op::Both:
      return {"&&", 12};
    case Op::Either:
      return {"||", 13};
    case Op::Choice:
      return {"?", 14};
    case Op::Sgn:
      return {"SGN", 0};
    case Op::Neg:
      return {"NEG", 0};
    case Op::Abs:
      return {"ABS", 0};
    case Op::Trunc:
      return {"TRUNC", 0};
    case Op::Floor:
      return {"FLOOR", 0};
    case Op::Ceil:
      return {"CEIL", 0};
    case Op::Round:
      return {"ROUND", 0};
    case Op::Frac:
      return {"FRAC", 0};
    case Op::RootOfAbs:
      return {"SQRT", 0};
  }
  return {"", 1};
}

std::string literalText(const Expression& expression, bool isInteger, Dice& dice) {
  std::array<char, 40> buffer;
  std::to_chars_result end{};
  if (!isInteger) {
    end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), expression.real);
    return {buffer.data(), end.ptr};
  }
  const bool hex = dice.chance(30);
  end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), expression.integer, hex ? 16 : 10);
  return (hex ? "0x" : "") + std::string(buffer.data(), end.ptr);
}

[[noreturn]] void undefined() {
  throw Refused{Why::Logical};
}

int64_t fitting(Wide value) {
  if (value < INT64_MIN || value > INT64_MAX) undefined();
  return static_cast<int64_t>(value);
}

int64_t powerOf(int64_t base, int64_t exponent) {
  if (exponent < 0) {
    if (base == 0) undefined();
    if (base == 1) return 1;
    if (base == -1) return exponent % 2 ? -1 : 1;
    return 0;
  }
  if (base == 0 || base == 1) return exponent == 0 ? 1 : base;
  if (base == -1) return exponent % 2 ? -1 : 1;
  Wide product = 1;
  for (int64_t i = 0; i < exponent; ++i) product = fitting(product * base);
  return static_cast<int64_t>(product);
}

int64_t binary(Op op, int64_t a, int64_t b) {
  const Wide wide = a;
  switch (op) {
    case Op::Power:
      return powerOf(a, b);
    case Op::Times:
      return fitting(wide * b);
    case Op::Divided:
      if (b == 0) undefined();
      return fitting(wide / b);
    case Op::Modulo:
      if (b == 0) undefined();
      return static_cast<int64_t>(wide % b);
    case Op::Plus:
      return fitting(wide + b);
    case Op::Minus:
      return fitting(wide - b);
    case Op::ShiftLeft:
      if (b < 0 || b > 63) undefined();
      return static_cast<int64_t>(static_cast<uint64_t>(a) << b);
    case Op::ShiftRight:
      if (b < 0 || b > 63) undefined();
      return a >> b;
    case Op::And:
      return a & b;
    case Op::Xor:
      return a ^ b;
    case Op::Or:
      return a | b;
    default:
      throw std::logic_error("no operator of two integers");
  }
}

int64_t cut(double value) {
  if (!(value >= -0x1p63 && value < 0x1p63)) undefined();
  return static_cast<int64_t>(value);
}

double binary(Op op, double a, double b) {
  switch (op) {
    case Op::Power: {
      const double power = std::pow(a, b);
      if (std::isnan(power)) undefined();
      return power;
    }
    case Op::Times:
      return a * b;
    case Op::Divided:
      if (b == 0) undefined();
      return a / b;
    case Op::Modulo:
      if (b == 0) undefined();
      return std::fmod(a, b);
    case Op::Plus:
      return a + b;
    case Op::Minus:
      return a - b;
    default: {
      const int64_t left = cut(a);
      return static_cast<double>(binary(op, left, cut(b)));
    }
  }
}

template <class Number>
bool holds(Op op, Number a, Number b) {
  switch (op) {
    case Op::Less:
      return a < b;
    case Op::LessEqual:
      return a <= b;
    case Op::Greater:
      return a > b;
    case Op::GreaterEqual:
      return a >= b;
    case Op::Equal:
      return a == b;
    default:
      return a != b;
  }
}

double functionOf(Op op, double x) {
  switch (op) {
    case Op::Trunc:
      return std::trunc(x);
    case Op::Floor:
      return std::floor(x);
    case Op::Ceil:
      return std::ceil(x);
    case Op::Round:
      return std::round(x);
    case Op::Frac:
      return x - std::trunc(x);
    default:
      return std::sqrt(std::fabs(x));
  }
}

template <class Number>
Number compute(const Expression& expression, Meaning<Number>& meaning) {
  constexpr bool kInteger = std::is_same_v<Number, int64_t>;
  const auto part = [&](size_t i) { return compute(expression.parts[i], meaning); };
  switch (expression.op) {
    case Op::Literal:
      if constexpr (kInteger) return expression.integer;
      return static_cast<Number>(expression.real);
    case Op::Name:
      return meaning.named(expression.name);
    case Op::Argument:
      return meaning.argument();
    case Op::Choice:
      return part(0) != 0 ? part(1) : part(2);
    case Op::Both:
      return part(0) != 0 && part(1) != 0;
    case Op::Either:
      return part(0) != 0 || part(1) != 0;
    case Op::Negative:
    case Op::Neg:
      if constexpr (kInteger) return fitting(-static_cast<Wide>(part(0)));
      return -part(0);
    case Op::Complement:
      if constexpr (kInteger) return ~part(0);
      return static_cast<Number>(~cut(static_cast<double>(part(0))));
    case Op::Sgn: {
      const Number x = part(0);
      return x > 0 ? 1 : x < 0 ? -1 : 0;
    }
    case Op::Abs: {
      const Number x = part(0);
      if constexpr (kInteger) return x < 0 ? fitting(-static_cast<Wide>(x)) : x;
      return static_cast<Number>(std::fabs(static_cast<double>(x)));
    }
    case Op::Less:
    case Op::LessEqual:
    case Op::Greater:
    case Op::GreaterEqual:
    case Op::Equal:
    case Op::Different: {
      const Number left = part(0);
      return holds(expression.op, left, part(1));
    }
    default:
      break;
  }
  const Number left = part(0);
  if (expression.parts.size() == 2) return binary(expression.op, left, part(1));
  const double result = functionOf(expression.op, static_cast<double>(left));
  if (std::isnan(result)) undefined();
  return static_cast<Number>(result);
}

}  // namespace

Expression makeExpression(Dice& dice, const Shape& shape, int depth) {
  Expression made;
  if (depth <= 0 || dice.chance(15)) {
    const int64_t kind = dice.below(10);
    if (kind < 4 && shape.hasArgument) {
      made.op = Op::Argument;
    } else if (kind < 7 && shape.names > 0) {
      made.op = Op::Name;
      made.name = static_cast<size_t>(dice.below(static_cast<int64_t>(shape.names)));
    } else {
      made.integer = dice.chance(90) ? dice.below(12) : dice.below(INT64_MAX);
      made.real = dice.chance(50) ? static_cast<double>(dice.below(12)) : static_cast<double>(dice.below(4000)) / 256;
    }
    return made;
  }
  static const std::vector<Op> kCommon = {Op::Plus,         Op::Plus,       Op::Plus,      Op::Minus,      Op::Minus,
                                          Op::Times,        Op::Times,      Op::Divided,   Op::Less,       Op::Greater,
                                          Op::GreaterEqual, Op::Equal,      Op::Different, Op::Both,       Op::Either,
                                          Op::Choice,       Op::Sgn,        Op::Neg,       Op::Abs,        Op::And,
                                          Op::Or,           Op::Xor,        Op::Negative,  Op::Complement, Op::Modulo,
                                          Op::ShiftLeft,    Op::ShiftRight, Op::LessEqual, Op::Choice,     Op::Power};
  static const std::vector<Op> kFunctions = {Op::Trunc, Op::Floor, Op::Ceil, Op::Round, Op::Frac, Op::RootOfAbs};
  made.op = !shape.isInteger && dice.chance(20) ? dice.pick(kFunctions) : dice.pick(kCommon);
  size_t parts = 2;
  if (signOf(made.op).level == 0 || made.op == Op::Negative || made.op == Op::Complement) parts = 1;
  if (made.op == Op::Choice) parts = 3;
  for (size_t i = 0; i < parts; ++i) made.parts.push_back(makeExpression(dice, shape, depth - 1));
  const bool small = made.op == Op::Power || made.op == Op::ShiftLeft || made.op == Op::ShiftRight;
  if (small && dice.chance(90)) {  // else most would not be defined
    made.parts[1] = Expression{};
    made.parts[1].integer = dice.below(6);
    made.parts[1].real = static_cast<double>(made.parts[1].integer);
  }
  return made;
}

std::string textOf(const Expression& expression, const Shape& shape, const std::vector<std::string>& names,
                   Dice& dice) {
  const Sign sign = signOf(expression.op);
  const auto part = [&](size_t i, int level) {
    const Expression& inner = expression.parts[i];
    const std::string text = textOf(inner, shape, names, dice);
    return signOf(inner.op).level > level || dice.chance(10) ? "(" + text + ")" : text;
  };
  if (expression.op == Op::Literal) return literalText(expression, shape.isInteger, dice);
  if (expression.op == Op::Name) return names[expression.name];
  if (expression.op == Op::Argument) return shape.argument;
  if (expression.op == Op::RootOfAbs) return "SQRT(ABS(" + part(0, 14) + "))";
  if (sign.level == 0) return sign.text + ("(" + part(0, 14)) + ")";
  if (expression.op == Op::Choice)
    return part(0, 13) + " ? " + part(1, 14) + (dice.chance(50) ? ":" : " :\n") + part(2, 14);
  if (sign.level == 3) return sign.text + part(0, 3);
  if (expression.op == Op::Power) return part(0, 1) + "**" + part(1, 3);
  const std::string blank = dice.chance(50) ? " " : "";
  return part(0, sign.level) + blank + sign.text + blank + part(1, sign.level - 1);
}

int64_t valueOf(const Expression& expression, Meaning<int64_t>& meaning) {
  return compute(expression, meaning);
}

double valueOf(const Expression& expression, Meaning<double>& meaning) {
  const double value = compute(expression, meaning);
  if (!std::isfinite(value)) undefined();
  return value;
}

}  // namespace randomly
