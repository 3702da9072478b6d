// The instructions that formulas are compiled to. They work on a stack of numbers; both arithmetics share one list.
#pragma once

#include "Base/GCTypes.h"

#include <cstdint>

namespace GENAPI_NAMESPACE::formula {

enum class Arithmetic : uint8_t { Integer, Float };

enum class Operation : uint8_t {
  PushConstant,    // constant
  PushArgument,    // what TO or FROM stands for
  PushVariable,    // operand: number of the variable
  PushExpression,  // operand: number of the Expression; calls it unless its value is remembered
  Return,          // operand: number of the Expression that ends here, or kWholeFormula

  // Jumps go forward by `operand` instructions.
  Jump,
  JumpIfZero,   // takes the top
  JumpIfFalse,  // top is zero: makes it 0 and jumps; else takes it
  JumpIfTrue,   // top is not zero: makes it 1 and jumps; else takes it
  MakeBoolean,  // top becomes 0 or 1

  Add,
  Subtract,
  Multiply,
  Divide,
  Remainder,
  Power,
  ShiftLeft,
  ShiftRight,
  Less,
  LessOrEqual,
  Greater,
  GreaterOrEqual,
  Equal,
  NotEqual,
  BitAnd,
  BitXor,
  BitOr,

  Negate,
  Complement,
  Sign,
  Absolute,

  // Float formulas only.
  Call,          // constant: the function
  RoundToPlaces  // takes value and number of decimals
};

// A number of the program's arithmetic, or what an instruction calls.
union Value {
  int64_t integer;
  double real;
  double (*function)(double);
};

struct Instruction {
  Operation operation;
  uint32_t operand;
  Value constant;
};

// Operand of the Return that ends the formula itself.
inline constexpr uint32_t kWholeFormula = UINT32_MAX;

}  // namespace GENAPI_NAMESPACE::formula
