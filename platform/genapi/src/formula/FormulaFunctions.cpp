#include "formula/FormulaFunctions.h"

#include "formula/FormulaArithmetic.h"
#include "text/Characters.h"

#include <cmath>
#include <numbers>

namespace GENAPI_NAMESPACE::formula {
namespace {

constexpr Function kFunctions[] = {{"SGN", Operation::Sign, 1, 1},
                                   {"NEG", Operation::Negate, 1, 1},
                                   {"ABS", Operation::Absolute, 1, 1},
                                   {"SIN", Operation::Call, 1, 1, std::sin},
                                   {"COS", Operation::Call, 1, 1, std::cos},
                                   {"TAN", Operation::Call, 1, 1, std::tan},
                                   {"ASIN", Operation::Call, 1, 1, std::asin},
                                   {"ACOS", Operation::Call, 1, 1, std::acos},
                                   {"ATAN", Operation::Call, 1, 1, std::atan},
                                   {"EXP", Operation::Call, 1, 1, std::exp},
                                   {"LN", Operation::Call, 1, 1, arithmetic::naturalLogarithm},
                                   {"LG", Operation::Call, 1, 1, arithmetic::decimalLogarithm},
                                   {"SQRT", Operation::Call, 1, 1, std::sqrt},
                                   {"TRUNC", Operation::Call, 1, 1, std::trunc},
                                   {"FLOOR", Operation::Call, 1, 1, std::floor},
                                   {"CEIL", Operation::Call, 1, 1, std::ceil},
                                   {"FRAC", Operation::Call, 1, 1, arithmetic::fraction},
                                   {"ROUND", Operation::Call, 1, 2, std::round}};

}  // namespace

const Function* findFunction(std::string_view name) noexcept {
  for (const Function& function : kFunctions)
    if (text::equalsIgnoringCase(function.name, name)) return &function;
  return nullptr;
}

std::optional<double> findConstant(std::string_view name) noexcept {
  if (text::equalsIgnoringCase(name, "PI")) return std::numbers::pi;
  if (text::equalsIgnoringCase(name, "E")) return std::numbers::e;
  return std::nullopt;
}

}  // namespace GENAPI_NAMESPACE::formula
