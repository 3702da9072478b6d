#include "Base/GCException.h"
#include "formula/FormulaProgram.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <locale>
#include <map>
#include <sstream>

using namespace GENAPI_NAMESPACE;
using namespace GENAPI_NAMESPACE::formula;
using GENICAM_NAMESPACE::LogicalErrorException;

namespace {

// Variables with fixed values; notes which were asked for, in order.
class Values : public VariableSource {
 public:
  Values& add(std::string_view name, double value) {
    values_[names.size()] = value;
    return declare({name, DeclaredName::Kind::Variable, 0, 0, {}});
  }
  Values& declare(const DeclaredName& name) { return names.push_back(name), *this; }
  Values& integer(std::string_view name, int64_t value) {
    return declare({name, DeclaredName::Kind::IntegerConstant, value, 0, {}});
  }
  Values& real(std::string_view name, double value) {
    return declare({name, DeclaredName::Kind::FloatConstant, 0, value, {}});
  }
  Values& expression(std::string_view name, std::string_view text) {
    return declare({name, DeclaredName::Kind::Expression, 0, 0, text});
  }
  int64_t integerVariable(size_t index) override { return static_cast<int64_t>(floatVariable(index)); }
  double floatVariable(size_t index) override {
    asked += names[index].name;
    return values_.at(index);
  }

  std::vector<DeclaredName> names;
  std::string asked;

 private:
  std::map<size_t, double> values_;
};

Values letters() {
  Values values;
  values.add("A", 7).add("B", -3).add("Z", 0);
  return values;
}

// What a formula gives: its value, or the text of its defect or failure.
std::string integerResult(std::string_view text, Values values = letters(), bool foldCase = false,
                          std::string_view argument = "", int64_t argumentValue = 0) {
  const auto program = FormulaProgram::compile(text, Arithmetic::Integer, foldCase, values.names, argument);
  try {
    return std::to_string(program->evaluateInteger(values, argumentValue));
  } catch (const LogicalErrorException& error) {
    EXPECT_TRUE(program->ok() || program->defect() == error.what());
    return error.what();
  }
}

// As above; a value prints with 12 digits.
std::string floatResult(std::string_view text, Values values = letters(), bool foldCase = false,
                        std::string_view argument = "", double argumentValue = 0) {
  const auto program = FormulaProgram::compile(text, Arithmetic::Float, foldCase, values.names, argument);
  try {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream.precision(12);
    stream << program->evaluateFloat(values, argumentValue);
    return stream.str();
  } catch (const LogicalErrorException& error) {
    EXPECT_TRUE(program->ok() || program->defect() == error.what());
    return error.what();
  }
}

std::string repeated(std::string_view text, size_t count) {
  std::string result;
  for (size_t i = 0; i < count; ++i) result += text;
  return result;
}

// Each "formula -> result"; they are divided by semicolons and line ends. A failure is given without the formula that
// it quotes.
void expectResults(const std::function<std::string(std::string_view)>& evaluate, std::string_view cases) {
  const auto trimmed = [](std::string_view text) {
    const size_t first = std::min(text.find_first_not_of(' '), text.size());
    return text.substr(first, text.find_last_not_of(' ') + 1 - first);
  };
  while (!cases.empty()) {
    const size_t end = std::min(cases.find_first_of(";\n"), cases.size());
    const std::string_view line = trimmed(cases.substr(0, end));
    cases.remove_prefix(std::min(end + 1, cases.size()));
    if (line.empty()) continue;
    const size_t arrow = line.rfind("->");
    ASSERT_NE(arrow, std::string_view::npos) << line;
    const std::string_view formula = trimmed(line.substr(0, arrow));
    std::string expected(trimmed(line.substr(arrow + 2)));
    if (expected.find(" at column ") != std::string::npos) expected += " of '" + std::string(formula) + "'";
    EXPECT_EQ(expected, evaluate(formula)) << formula;
  }
}
void expectIntegers(std::string_view cases) {
  expectResults([](std::string_view formula) { return integerResult(formula); }, cases);
}
void expectFloats(std::string_view cases) {
  expectResults([](std::string_view formula) { return floatResult(formula); }, cases);
}

}  // namespace

TEST(IntegerFormula, ComputesOperators) {
  expectIntegers(R"(
    A+B*2 -> 1; A-B-1 -> 9; A/2 -> 3; B/2 -> -1; A%4 -> 3; B%2 -> -1; (1<<63)%-1 -> 0; -A -> -7; +-~A -> 8; 2*-3 -> -6; ~0 -> -1
    -2**2 -> -4; 2**3**2 -> 512; 2**-1 -> 0; 0**0 -> 1; 2**-1*8 -> 0; (-1)**-3 -> -1; (-2)**63 -> -9223372036854775808
    6&3|8^1 -> 11; 1|2^3 -> 1; 3^2|1 -> 1; 1<<4>>2 -> 4; 1<<63 -> -9223372036854775808; B>>63 -> -1; 3<<63 -> -9223372036854775808; 1+1<<2 -> 8
    A>B -> 1; A<=B -> 0; A>=7 -> 1; A<B=0 -> 1; A<>7 -> 0; A=7&1 -> 1; 1||0&&0 -> 1; 2&&B -> 1; Z||5 -> 1
    Z?1:B?2:3 -> 2; A?B?10:20:30 -> 10; A>3?A+1:A-1 -> 8; (A) -> 7; SGN(B) -> -1; ABS(B)+neg(-1) -> 4)");
  EXPECT_EQ("8", integerResult("A\n\t+ 1"));
}

TEST(IntegerFormula, ReadsLiteralsWithoutADouble) {
  expectIntegers(R"(
    010 -> 10; 0xe10a0 -> 921760; 0X1e5 -> 485; 0xFFFFFFFFFFFFFFFF -> -1; 1e6 -> 1000000; 4.0*A -> 28; 1.5E1 -> 15
    9223372036854775807 -> 9223372036854775807; -9223372036854775808 -> -9223372036854775808; 100e-2 -> 1
    9007199254740993.0 -> 9007199254740993; 0e999999999999 -> 0
    9223372036854775808 -> number '9223372036854775808' does not fit a 64-bit integer at column 1
    -9223372036854775808**1 -> number '9223372036854775808' does not fit a 64-bit integer at column 2
    0x10000000000000000 -> number '0x10000000000000000' does not fit a 64-bit integer at column 1
    1e19 -> number '1e19' does not fit a 64-bit integer at column 1
    A*.5 -> number '.5' has a fraction in an integer formula at column 3)");
}

TEST(IntegerFormula, FailsWhereNoIntegerIsTheAnswer) {
  expectIntegers(R"(
    A % 0 -> division by zero at column 3; A/Z -> division by zero at column 2; 2**63 -> overflow at column 2
    9223372036854775807+1 -> overflow at column 20; -9223372036854775807-2 -> overflow at column 21
    4611686018427387904*2 -> overflow at column 20; 3**9223372036854775807 -> overflow at column 2
    -9223372036854775808/-1 -> overflow at column 21
    -(1<<63) -> overflow at column 1; ABS(1<<63) -> overflow at column 1
    0**-1 -> zero to a negative power at column 2
    1<<64 -> shift count outside 0..63 at column 2; 1>>64 -> shift count outside 0..63 at column 2
    1>>B -> shift count outside 0..63 at column 2)");
}

TEST(FloatFormula, ComputesOperatorsAndFunctions) {
  expectFloats(R"(
    A/2 -> 3.5; 25.2 % 7 -> 4.2; B % 2 -> -1; 2**-1 -> 0.5; 2**0.5 -> 1.41421356237; -2**2 -> -4; ~0 -> -1; 1<<A -> 128
    6.9&3.9 -> 2; B|0 -> -3; 5^1 -> 4; -8.5>>1 -> -4; 0.1+0.2=0.3 -> 0; A>B&&0.5 -> 1; Z?1/Z:.5 -> 0.5
    (Z<>0)?(1/Z):0 -> 0; 0xFFFFFFFFFFFFFFFF -> -1; 18446744073709551616 -> 1.84467440737e+19; 1E+05+1. -> 100001
    PI*2 -> 6.28318530718; pi -> 3.14159265359; e -> 2.71828182846
    SGN(B)+SGN(0) -> -1; NEG(A) -> -7; abs(B) -> 3; SIN(PI/2)+COS(0) -> 2; TAN(0) -> 0; ASIN(1)*2-PI -> 0; ACOS(1) -> 0
    ATAN(1)*4-PI -> 0; EXP(0) -> 1; LN(E) -> 1; LG(1000) -> 3; SQRT(16) -> 4; TRUNC(-1.7) -> -1; FLOOR(-1.2) -> -2
    CEIL(1.2) -> 2; FRAC(-1.25) -> -0.25; ROUND(2.5) -> 3; ROUND(-2.5) -> -3; ROUND(1234.5678,2) -> 1234.57
    ROUND(.125,2) -> 0.13; ROUND(1250,-2) -> 1300; ROUND(12,400) -> 12; ROUND(12,-400) -> 0; Round( Sqrt(2) , 1+1 ) -> 1.41)");
}

TEST(FloatFormula, FailsWhereNoNumberIsTheAnswer) {
  expectFloats(R"(
    A/0 -> division by zero at column 2; A%Z -> division by zero at column 2
    1+SQRT(-1) -> argument outside the function's domain at column 3
    LN(0) -> argument outside the function's domain at column 1
    ASIN(2) -> argument outside the function's domain at column 1
    (-1)**.5 -> power of these operands is not a number at column 5
    2**1024 -> result is not a finite number at column 1; 1e308*10-1e308*10 -> result is not a finite number at column 1
    1e19|1 -> operand does not fit a 64-bit integer at column 5
    ~9223372036854775808 -> operand does not fit a 64-bit integer at column 1
    1<<64 -> shift count outside 0..63 at column 2; 1e999 -> number '1e999' does not fit a double at column 1
    ROUND(A,B,1) -> 'ROUND' takes 1 or 2 arguments, got 3 at column 1)");
}

TEST(Formula, NamesTheDefectAndItsColumn) {
  expectIntegers(R"(
    A / Q -> unknown name 'Q' at column 5; SGN -> unknown name 'SGN' at column 1
    1 2 -> unexpected '2' at column 3; A B -> unexpected 'B' at column 3; A==B -> unexpected '=' at column 3
    A!=B -> unexpected character '!' at column 2; A $ B -> unexpected character '$' at column 3
    A\B -> unexpected character '\' at column 2; A. -> unexpected character '.' at column 2
    0x -> malformed number '0x' at column 1; 12ms -> malformed number '12ms' at column 1
    1e+ -> malformed number '1e+' at column 1; 1.2.3 -> malformed number '1.2.3' at column 1
    A+ -> unexpected end at column 3; *A -> unexpected '*' at column 1; () -> unexpected ')' at column 2
    (A -> '(' without ')' at column 1; A) -> unexpected ')' at column 2
    A?B -> '?' without ':' at column 2; (A?B):1 -> '?' without ':' at column 3; A:B -> unexpected ':' at column 2
    A,B -> unexpected ',' at column 2; SGN((A,B)) -> unexpected ',' at column 7; A(1) -> unexpected '(' at column 2
    FOO(1) -> unknown function 'FOO' at column 1; SGN(A -> 'SGN' without ')' at column 1
    1+SGN() -> 'SGN' takes 1 argument, got 0 at column 3; SGN(A,B) -> 'SGN' takes 1 argument, got 2 at column 1
    1+Sin(A) -> function 'Sin' is not available in integer formulas at column 3
    PI -> constant 'PI' is not available in integer formulas at column 1)");
  EXPECT_EQ("empty formula at column 1 of ''", integerResult(""));
  EXPECT_EQ("empty formula at column 1 of '   '", integerResult(" \n "));
  EXPECT_EQ("unknown name 'FROM' at column 1 of ' FROM / Q '", integerResult(" FROM / Q "));
  EXPECT_EQ("unknown name 'Q' at column 5 of '  A / Q'", integerResult("  A / Q"));
  EXPECT_EQ("unexpected character '\xC3\xA4' at column 1 of '\xC3\xA4+$'", integerResult("\xC3\xA4+$"));
  EXPECT_EQ("unexpected character ' ' at column 2 of '1 +'", integerResult(std::string_view("1\0+", 3)));
  const std::string longName(70, 'N');
  EXPECT_EQ("unknown name '" + longName.substr(0, 40) + "' at column 1 of '" + longName.substr(0, 60) + "'",
            integerResult(longName));
}

TEST(Formula, ShowsOnlyTheArgumentOfItsDirection) {
  EXPECT_EQ("6", integerResult("FROM*2", letters(), false, "FROM", 3));
  EXPECT_EQ("unknown name 'TO' at column 1 of 'TO'", integerResult("TO", letters(), false, "FROM", 3));
  EXPECT_EQ("unknown name 'to' at column 1 of 'to'", floatResult("to", letters(), false, "TO", 3));
  EXPECT_EQ("1.5", floatResult("TO/2", letters(), false, "TO", 3));
}

TEST(Formula, DeclaredNamesWinOverBuiltInOnes) {
  Values values;
  values.add("E", 1).add("PI", 2).add("TO", 3).add("SIN", 0).add("GAIN.Max", 5).add("GAIN", 6);
  EXPECT_EQ("6", floatResult("E+PI+TO", values, false, "TO", 100));
  EXPECT_EQ("0", floatResult("SIN(SIN)+SIN", values));
  EXPECT_EQ("11", floatResult("GAIN.Max+GAIN", values));
  values.add("PI", 20);
  EXPECT_EQ("2", floatResult("PI", values)) << "the first of one name counts";
  EXPECT_EQ("unknown name 'GAIN.Min' at column 1 of 'GAIN.Min'", floatResult("GAIN.Min", values));
}

TEST(Formula, RefusesAVariableSuffixOnlyWhereItIsUsed) {
  Values values;
  values.add("G.Max", 1).add("G.Entry.12bit", 2).add("G.AccessMode", 4).add("G.Maximum", 8);
  EXPECT_EQ("7", integerResult("G.Max+G.Entry.12bit+G.AccessMode", values));
  EXPECT_EQ("unknown suffix of variable 'G.Maximum' at column 3 of '1+G.Maximum'",
            integerResult("1+G.Maximum", values));
}

TEST(Formula, FoldsCaseOnlyWhenAsked) {
  Values values;
  values.add("gainRaw", 4).add("Speed.Max", 5);
  EXPECT_EQ("unknown name 'GainRaw' at column 1 of 'GainRaw'", integerResult("GainRaw", values));
  EXPECT_EQ("12", integerResult("GAINraw+from+SPEED.max", values, true, "FROM", 3));
}

TEST(Formula, TakesConstantsOfBothArithmetics) {
  Values values;
  values.integer("I", 9007199254740993).real("WHOLE", 4).real("HALF", 0.5).real("HUGE", 0x1p63);
  EXPECT_EQ("9007199254740997", integerResult("I+WHOLE", values));
  EXPECT_EQ("constant with a fraction in an integer formula: 'HALF' at column 1 of 'HALF'",
            integerResult("HALF", values));
  EXPECT_EQ("constant beyond 64-bit integers: 'HUGE' at column 1 of 'HUGE'", integerResult("HUGE", values));
  EXPECT_EQ("4.5", floatResult("WHOLE+HALF", values));
}

TEST(Formula, FetchesEachNeededVariableOnceAndNoOther) {
  const auto asked = [](std::string_view formula) {
    Values values = letters();
    values.expression("SQUARE", "A*A").expression("OTHER", "B");
    const auto program = FormulaProgram::compile(formula, Arithmetic::Integer, false, values.names, "");
    EXPECT_EQ("", program->defect());
    program->evaluateInteger(values);
    return values.asked;
  };
  expectResults(asked, R"(
    A+A*A -> A; Z&&A/Z -> Z; A||B -> A; A?Z:B -> AZ; Z?A:B -> ZB; Z&&A||B -> ZB; SQUARE+SQUARE*SQUARE+A -> A
    Z?SQUARE:OTHER -> ZB; 1?2:SQUARE ->)");
}

TEST(Formula, ListsTheVariablesItMentions) {
  Values values = letters();
  values.expression("X", "Z+B");
  const auto program = FormulaProgram::compile("B*X", Arithmetic::Float, false, values.names, "");
  ASSERT_EQ(2u, program->variableCount());
  EXPECT_EQ(1u, program->declaredIndex(0));
  EXPECT_EQ(2u, program->declaredIndex(1));
}

TEST(Expressions, MayNameOthersAndTheArgument) {
  Values values = letters();
  values.expression("HALF", "TO/2").expression("SUM", "HALF + A").expression("BAD", "A/Z").expression("BROKEN", "((");
  EXPECT_EQ("18", floatResult("SUM*2", values, false, "TO", 4));
  EXPECT_EQ("unknown name 'TO' at column 1 of 'TO/2'", floatResult("SUM", values, false, "FROM", 4));
  EXPECT_EQ("division by zero at column 2 of 'A/Z'", floatResult("1+BAD", values));
  EXPECT_EQ("unexpected end at column 3 of '(('", floatResult("BROKEN", values));
}

TEST(Expressions, ThatLeadBackToThemselvesAreADefect) {
  Values values = letters();
  values.expression("P", "A ? 1 : Q").expression("Q", "R + 1").expression("R", "P").expression("SELF", "SELF");
  EXPECT_EQ("Expression 'P' leads back to itself at column 1 of 'P'", integerResult("P", values));
  EXPECT_EQ("Expression 'SELF' leads back to itself at column 1 of 'SELF'", integerResult("A+SELF", values));
  EXPECT_EQ("7", integerResult("A", values));
}

TEST(Expressions, CostEachOnceHoweverOftenTheyAreNamed) {
  // Written out this is 2^5000 additions, and a chain 5000 deep.
  constexpr size_t kLevels = 5000;
  std::vector<std::string> names, texts;
  for (size_t i = 0; i < kLevels; ++i) {
    names.push_back("X" + std::to_string(i));
    texts.push_back(i + 1 < kLevels ? "(X" + std::to_string(i + 1) + "+X" + std::to_string(i + 1) + ") % 1000003"
                                    : "1");
  }
  Values values;
  for (size_t i = 0; i < kLevels; ++i) values.expression(names[i], texts[i]);
  int64_t expected = 1;
  for (size_t i = 1; i < kLevels; ++i) expected = expected * 2 % 1000003;
  EXPECT_EQ(std::to_string(expected), integerResult("X0", values));
}

TEST(Formula, NestsToItsLimitAndNoFurther) {
  const auto inParentheses = [](size_t count) { return repeated("(A+", count) + "1" + repeated(")", count); };
  EXPECT_EQ("3585", integerResult(inParentheses(kMaxFormulaDepth)));
  EXPECT_EQ("nested deeper than 512 levels at column 1537 of '" + inParentheses(20).substr(0, 60) + "'",
            integerResult(inParentheses(kMaxFormulaDepth + 1)));
  EXPECT_EQ("1", integerResult(repeated("-", kMaxFormulaDepth) + "1"));
  EXPECT_EQ("nested deeper than 512 levels at column 513 of '" + repeated("-", 60) + "'",
            integerResult(repeated("-", kMaxFormulaDepth + 1) + "1"));
  EXPECT_EQ("42", integerResult(repeated("(Z?1:", 128) + "42" + repeated(")", 128)));
  EXPECT_EQ("10000", integerResult(repeated("1+", 9999) + "1"));
}

TEST(Formula, IsLimitedInLength) {
  EXPECT_EQ("1", integerResult("1" + std::string(kMaxFormulaChars - 1, ' ')));
  EXPECT_EQ("formula longer than 65536 characters at column 1 of '" + std::string(60, '1') + "'",
            integerResult(std::string(kMaxFormulaChars + 1, '1')));
}

TEST(Formula, LetsTheSourceWordItsFailuresAndPassesItsExceptions) {
  struct Failing : VariableSource {
    int64_t integerVariable(size_t) override { throw 5; }
    double floatVariable(size_t) override { return std::numeric_limits<double>::quiet_NaN(); }
    void evaluationFailed(const std::string& reason) override { throw std::runtime_error("Node 'X': " + reason); }
  } failing;
  const std::vector<DeclaredName> names{{"A", DeclaredName::Kind::Variable, 0, 0, {}}};
  EXPECT_THROW(FormulaProgram::compile("A", Arithmetic::Integer, false, names, "")->evaluateInteger(failing), int);
  try {
    FormulaProgram::compile("A", Arithmetic::Float, false, names, "")->evaluateFloat(failing);
    FAIL();
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ("Node 'X': result is not a finite number at column 1 of 'A'", error.what());
  }
}
