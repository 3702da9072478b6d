// Formulas as trees, made by dice: written as text for the engine, computed here by their own rules.
#pragma once
#include <cstdint>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace randomly {

// Wide enough for every sum and product of two 64-bit integers.
__extension__ typedef __int128 Wide;

// The same throws on every machine.
class Dice {
 public:
  explicit Dice(uint64_t seed) : engine_(seed) {}
  int64_t below(int64_t count) { return static_cast<int64_t>(engine_() % static_cast<uint64_t>(count)); }
  bool chance(int percent) { return below(100) < percent; }
  uint64_t bits() { return engine_(); }
  template <class T>
  const T& pick(const std::vector<T>& from) {
    return from[static_cast<size_t>(below(static_cast<int64_t>(from.size())))];
  }

 private:
  std::mt19937_64 engine_;
};

// Why something gives no value, as the class of the exception tells it.
enum class Why { Access, Range, Argument, Logical, Runtime };
struct Refused {
  Why why;
};

enum class Op {
  Literal,
  Name,  // of a variable, a constant or an expression
  Argument,
  Power,
  Negative,
  Complement,
  Times,
  Divided,
  Modulo,
  Plus,
  Minus,
  ShiftLeft,
  ShiftRight,
  Less,
  LessEqual,
  Greater,
  GreaterEqual,
  Equal,
  Different,
  And,
  Xor,
  Or,
  Both,
  Either,
  Choice,
  Sgn,
  Neg,
  Abs,
  Trunc,
  Floor,
  Ceil,
  Round,
  Frac,
  RootOfAbs
};

struct Expression {
  Op op = Op::Literal;
  int64_t integer = 0;  // literal
  double real = 0;      // literal of a float formula
  size_t name = 0;      // index of the declared name
  std::vector<Expression> parts;
};

struct Shape {
  bool isInteger = true;
  size_t names = 0;  // declared names that may be used
  bool hasArgument = false;
  std::string argument;  // TO or FROM
};

Expression makeExpression(Dice& dice, const Shape& shape, int depth);
// With no more parentheses than the precedence of operators asks for, but for some extra ones.
std::string textOf(const Expression& expression, const Shape& shape, const std::vector<std::string>& names, Dice& dice);

// What declared names and the argument stand for.
template <class Number>
class Meaning {
 public:
  virtual Number named(size_t name) = 0;
  virtual Number argument() = 0;

 protected:
  ~Meaning() = default;
};
// Throw Refused{Logical} where the result is not defined.
int64_t valueOf(const Expression& expression, Meaning<int64_t>& meaning);
double valueOf(const Expression& expression, Meaning<double>& meaning);

}  // namespace randomly
