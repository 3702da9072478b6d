// The functions and constants that every formula knows. Their names are not case-sensitive.
#pragma once

#include "formula/FormulaCode.h"

#include <optional>
#include <string_view>

namespace GENAPI_NAMESPACE::formula {

struct Function {
  std::string_view name;
  Operation operation;
  uint8_t minArguments;
  uint8_t maxArguments;
  double (*real)(double) = nullptr;  // what Operation::Call calls: these are functions of float formulas alone
};

// Null for an unknown name.
const Function* findFunction(std::string_view name) noexcept;

// "PI" and "E".
std::optional<double> findConstant(std::string_view name) noexcept;

}  // namespace GENAPI_NAMESPACE::formula
