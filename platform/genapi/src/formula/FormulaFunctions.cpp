#include "formula/FormulaFunctions.h"

#include <algorithm>
#include <numbers>

namespace GENAPI_NAMESPACE::formula {
namespace {

char upper(char character) noexcept {
  return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A') : character;
}

constexpr Function kFunctions[] = {{"SGN", Operation::Sign, 1, 1, true},
                                   {"NEG", Operation::Negate, 1, 1, true},
                                   {"ABS", Operation::Absolute, 1, 1, true},
                                   {"SIN", Operation::Sine, 1, 1, false},
                                   {"COS", Operation::Cosine, 1, 1, false},
                                   {"TAN", Operation::Tangent, 1, 1, false},
                                   {"ASIN", Operation::ArcSine, 1, 1, false},
                                   {"ACOS", Operation::ArcCosine, 1, 1, false},
                                   {"ATAN", Operation::ArcTangent, 1, 1, false},
                                   {"EXP", Operation::Exponential, 1, 1, false},
                                   {"LN", Operation::NaturalLogarithm, 1, 1, false},
                                   {"LG", Operation::DecimalLogarithm, 1, 1, false},
                                   {"SQRT", Operation::SquareRoot, 1, 1, false},
                                   {"TRUNC", Operation::Truncate, 1, 1, false},
                                   {"FLOOR", Operation::Floor, 1, 1, false},
                                   {"CEIL", Operation::Ceiling, 1, 1, false},
                                   {"FRAC", Operation::Fraction, 1, 1, false},
                                   {"ROUND", Operation::Round, 1, 2, false}};

}  // namespace

const Function* findFunction(std::string_view name) noexcept {
  for (const Function& function : kFunctions) {
    if (equalsIgnoringCase(function.name, name)) return &function;
  }
  return nullptr;
}

std::optional<double> findConstant(std::string_view name) noexcept {
  if (equalsIgnoringCase(name, "PI")) return std::numbers::pi;
  if (equalsIgnoringCase(name, "E")) return std::numbers::e;
  return std::nullopt;
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) noexcept {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return upper(x) == upper(y); });
}

}  // namespace GENAPI_NAMESPACE::formula
