// The evaluator: one loop over the instructions. Values already computed in this evaluation (variables, Expressions)
// are remembered, so each is fetched or computed at most once.
#include "formula/FormulaArithmetic.h"
#include "formula/FormulaProgram.h"
#include "text/Refusal.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

namespace GENAPI_NAMESPACE::formula {
namespace {

template <class Number>
Number& as(Value& value) noexcept {
  if constexpr (std::is_same_v<Number, int64_t>)
    return value.integer;
  else
    return value.real;
}

// One bit for each remembered value.
class KnownMarks {
 public:
  KnownMarks(Value* words, size_t count) noexcept : words_(words) { std::fill_n(words, count, Value{}); }
  bool has(size_t number) const noexcept { return (words_[number / 64].integer >> (number % 64) & 1) != 0; }
  void set(size_t number) noexcept {
    int64_t& word = words_[number / 64].integer;
    word = static_cast<int64_t>(static_cast<uint64_t>(word) | uint64_t{1} << (number % 64));
  }

 private:
  Value* words_;
};

size_t markWords(size_t count) noexcept { return (count + 63) / 64; }

}  // namespace

// Links between nodes recurse through here: the words that a formula works in are not on the stack.
template <class Number>
Number FormulaProgram::run(VariableSource& source, Number argument) const {
  namespace math = arithmetic;
  const Scratch::Words words(source.scratch(), neededWords_);
  Value* const scratch = words.start();
  // The parts of the scratch memory; an unused word below the stack lets an empty stack have a top.
  Value* top = scratch;
  Value* const remembered = scratch + 1 + stackWords_;
  KnownMarks known(remembered + rememberedWords_, markWords(rememberedWords_));
  Value* calls = remembered + rememberedWords_ + markWords(rememberedWords_);

  const Instruction* at = code_.data();
  const auto check = [&](math::Problem problem) {
    if (problem != nullptr) [[unlikely]]
      fail(source, static_cast<size_t>(at - code_.data()), problem);
  };
  const auto push = [&](Number value) { as<Number>(*++top) = value; };
  const auto unary = [&](auto operation) { check(operation(as<Number>(*top), as<Number>(*top))); };
  const auto binary = [&](auto operation) {
    --top;
    check(operation(as<Number>(top[0]), as<Number>(top[1]), as<Number>(top[0])));
  };
  const auto compare = [&](auto operation) {
    --top;
    as<Number>(top[0]) = operation(as<Number>(top[0]), as<Number>(top[1])) ? Number{1} : Number{0};
  };
  for (;; ++at) {
    switch (at->operation) {
      case Operation::PushConstant: *++top = at->constant; break;
      case Operation::PushArgument: push(argument); break;
      case Operation::PushVariable: {
        Value& value = remembered[at->operand];
        if (!known.has(at->operand)) {
          if constexpr (std::is_same_v<Number, int64_t>)
            value.integer = source.integerVariable(variables_[at->operand]);
          else
            value.real = source.floatVariable(variables_[at->operand]);
          known.set(at->operand);
        }
        *++top = value;
        break;
      }
      case Operation::PushExpression: {
        const size_t slot = variables_.size() + at->operand;
        if (known.has(slot)) {
          *++top = remembered[slot];
          break;
        }
        (calls++)->integer = at - code_.data();
        at = code_.data() + entryPoints_[at->operand] - 1;
        break;
      }
      case Operation::Return: {
        if (at->operand == kWholeFormula) {
          if constexpr (std::is_same_v<Number, double>) {
            if (!std::isfinite(top->real)) [[unlikely]]
              check("result is not a finite number");
          }
          return as<Number>(*top);
        }
        const size_t slot = variables_.size() + at->operand;
        remembered[slot] = *top;
        known.set(slot);
        at = code_.data() + (--calls)->integer;
        break;
      }
      case Operation::Jump: at += at->operand - 1; break;
      case Operation::JumpIfZero:
        if (as<Number>(*top--) == Number{0}) at += at->operand - 1;
        break;
      case Operation::JumpIfFalse:
        if (as<Number>(*top) == Number{0}) {
          as<Number>(*top) = Number{0};
          at += at->operand - 1;
        } else {
          --top;
        }
        break;
      case Operation::JumpIfTrue:
        if (as<Number>(*top) != Number{0}) {
          as<Number>(*top) = Number{1};
          at += at->operand - 1;
        } else {
          --top;
        }
        break;
      case Operation::MakeBoolean:
        as<Number>(*top) = as<Number>(*top) != Number{0} ? Number{1} : Number{0};
        break;
// clang-format off
#define GENAPI_BINARY(operation, function)                                                               \
      case Operation::operation:                                                                         \
        binary([](Number a, Number b, Number& result) { return math::function(a, b, result); });         \
        break;
#define GENAPI_UNARY(operation, function)                                                                \
      case Operation::operation:                                                                         \
        unary([](Number a, Number& result) { return math::function(a, result); });                       \
        break;
#define GENAPI_COMPARISON(operation, sign)                                                               \
      case Operation::operation:                                                                         \
        compare([](Number a, Number b) { return a sign b; });                                            \
        break;
      GENAPI_BINARY(Add, add)
      GENAPI_BINARY(Subtract, subtract)
      GENAPI_BINARY(Multiply, multiply)
      GENAPI_BINARY(Divide, divide)
      GENAPI_BINARY(Remainder, remainder)
      GENAPI_BINARY(Power, power)
      GENAPI_BINARY(ShiftLeft, shiftLeft)
      GENAPI_BINARY(ShiftRight, shiftRight)
      GENAPI_BINARY(BitAnd, bitAnd)
      GENAPI_BINARY(BitXor, bitXor)
      GENAPI_BINARY(BitOr, bitOr)
      GENAPI_UNARY(Negate, negate)
      GENAPI_UNARY(Complement, complement)
      GENAPI_UNARY(Absolute, absolute)
      GENAPI_COMPARISON(Less, <)
      GENAPI_COMPARISON(LessOrEqual, <=)
      GENAPI_COMPARISON(Greater, >)
      GENAPI_COMPARISON(GreaterOrEqual, >=)
      GENAPI_COMPARISON(Equal, ==)
      GENAPI_COMPARISON(NotEqual, !=)
#undef GENAPI_BINARY
#undef GENAPI_UNARY
#undef GENAPI_COMPARISON
        // clang-format on
      case Operation::Sign: {
        const Number value = as<Number>(*top);
        as<Number>(*top) = static_cast<Number>((value > Number{0}) - (value < Number{0}));
        break;
      }
      case Operation::Call: check(math::checked(at->constant.function(top->real), top->real)); break;
      case Operation::RoundToPlaces:
        --top;
        check(math::roundToPlaces(top->real, top[1].real, top->real));
        break;
    }
  }
}

int64_t FormulaProgram::evaluateInteger(VariableSource& source, int64_t argument) const {
  if (!ok()) fail(source, defect_);
  if (arithmetic_ != Arithmetic::Integer) fail(source, "a float formula cannot be evaluated in whole numbers");
  return run(source, argument);
}

double FormulaProgram::evaluateFloat(VariableSource& source, double argument) const {
  if (!ok()) fail(source, defect_);
  if (arithmetic_ != Arithmetic::Float) fail(source, "an integer formula cannot be evaluated in floating point");
  return run(source, argument);
}

void FormulaProgram::fail(VariableSource& source, size_t instruction, const char* what) const {
  const auto after = std::upper_bound(parts_.begin(), parts_.end(), instruction,
                                      [](size_t index, const Part& part) { return index < part.firstInstruction; });
  fail(source, describeProblem(what, columns_[instruction], std::prev(after)->quotedText));
}

void FormulaProgram::fail(VariableSource& source, const std::string& reason) const {
  source.evaluationFailed(reason);
  refuse<LogicalErrorException>("{}", reason);
}

void VariableSource::evaluationFailed(const std::string& reason) { refuse<LogicalErrorException>("{}", reason); }

Scratch& VariableSource::scratchOfThread() {
  thread_local Scratch ofThread;
  return ofThread;
}

}  // namespace GENAPI_NAMESPACE::formula
