#include "text/NumberSyntax.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <random>

#include "text/Utf8.h"

using namespace GENAPI_NAMESPACE;
using namespace GENAPI_NAMESPACE::text;

TEST(NumberSyntax, ReadsIntegers) {
  const std::pair<std::string_view, int64_t> cases[] = {{"0", 0},
                                                        {"0815", 815},
                                                        {" -14\n", -14},
                                                        {"+7", 7},
                                                        {"0x10", 16},
                                                        {"0XfF", 255},
                                                        {"-0x10", -16},
                                                        {"9223372036854775807", INT64_MAX},
                                                        {"-9223372036854775808", INT64_MIN},
                                                        {"9007199254740993", 9007199254740993},
                                                        {"0x7fffffffffffffff", INT64_MAX},
                                                        {"0xFFFFFFFFFFFFFFFF", -1},
                                                        {"0x8000000000000000", INT64_MIN}};
  for (const auto& [text, value] : cases) EXPECT_EQ(value, parseInteger(text)) << text;
  for (std::string_view text : {"", " ", "-", "+-1", "- 1", "0x", "0x1 2", "1.5", "1e3", "abc", "&hFF", "12 3", "7z",
                                "9223372036854775808", "-9223372036854775809", "0x12345678901234567", "0x-1"})
    EXPECT_FALSE(parseInteger(text)) << text;
}

TEST(NumberSyntax, ReadsFloats) {
  const std::pair<std::string_view, double> cases[] = {{".5", 0.5},
                                                       {"1.", 1},
                                                       {"1e+06", 1e6},
                                                       {"-2E-3", -2e-3},
                                                       {" +12.5 ", 12.5},
                                                       {"0x10", 16},
                                                       {"18446744073709551616", 18446744073709551616.0},
                                                       {"1.7976931348623157e308", DBL_MAX},
                                                       {"4.9406564584124654e-324", 4.9406564584124654e-324},
                                                       {"1e-400", 0},
                                                       {"0.0000001e-400", 0},
                                                       {"0e999", 0},
                                                       {"INF", HUGE_VAL},
                                                       {"-INF", -HUGE_VAL}};
  for (const auto& [text, value] : cases) EXPECT_EQ(value, parseFloat(text)) << text;
  EXPECT_TRUE(std::isnan(parseFloat("NaN").value()));
  for (std::string_view text : {"", ".", "e5", "1e", "1e+", "1,5", "1.5.2", "abc", "inf", "nan", "infinity", "1e999",
                                "-1e999", "0x", "0x1.8p1", "1.5f", "--1", "1_0"})
    EXPECT_FALSE(parseFloat(text)) << text;
}

TEST(NumberSyntax, StepsARoundedNumberBackInsideItsLimits) {
  const std::tuple<double, double, double, EDisplayNotation, int64_t, std::string_view> cases[] = {
      // value, Min, Max, and how it is printed
      {3.14159, 0, 3.14159, fnFixed, 4, "3.1415"},
      {-3.14159, -3.14159, 0, fnFixed, 4, "-3.1415"},
      {3.14151, 3.14151, 9, fnFixed, 4, "3.1416"},
      {-3.14151, -9, -3.14151, fnFixed, 4, "-3.1416"},
      {12.996, 0, 12.996, fnAutomatic, 4, "12.99"},
      {9.9996, 0, 9.9996, fnAutomatic, 4, "9.999"},
      {9.9996, 0, 9.9996, fnScientific, 3, "9.999e+00"},
      {9.994, 9.994, 10, fnAutomatic, 3, "10"},
      {1.23456789, 0, 9, fnFixed, -1, "1.234568"},
      {0.7, 0, 0.7, fnFixed, 0, "0"},
      {0.3, 0.3, 1, fnFixed, 0, "1"},
      {DBL_MAX, 0, DBL_MAX, fnAutomatic, 3, "1.79e+308"},
      {2, 0, 3, fnFixed, 4, "2.0000"},
      {3.14159, 3.14158, 3.14159, fnFixed, 4, "3.1416"},  // none of four decimals lies inside
      {5, 0, 3, fnFixed, 4, "5.0000"}};                   // outside before it was rounded
  for (const auto& [value, min, max, notation, precision, text] : cases) {
    const std::string plain = printFloat(value, notation, precision);
    EXPECT_EQ(text, stepInsideLimits(plain, value, min, max, notation, precision)) << plain;
  }
}

TEST(NumberSyntax, ALimitPrintedWithAnyPrecisionStaysInside) {
  std::mt19937_64 random(7);
  std::uniform_real_distribution<double> mantissa(1, 10), exponent(-300, 300);
  for (int round = 0; round < 2000; ++round) {
    const double value = mantissa(random) * std::pow(10, std::round(exponent(random)));
    for (int64_t precision : {1, 6, 15, 16, 17}) {
      for (EDisplayNotation notation : {fnAutomatic, fnScientific}) {
        const std::string plain = printFloat(value, notation, precision);
        EXPECT_LE(parseFloat(stepInsideLimits(plain, value, -DBL_MAX, value, notation, precision)), value) << plain;
        EXPECT_GE(parseFloat(stepInsideLimits(plain, value, value, DBL_MAX, notation, precision)), value) << plain;
      }
    }
  }
}

TEST(NumberSyntax, IgnoresTheProcessLocale) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) GTEST_SKIP() << "no locale with a decimal comma is installed";
  char probe[8];
  std::snprintf(probe, sizeof probe, "%.1f", 1.5);
  const std::string text = printFloat(1234.5, fnFixed, 1);
  const std::optional<double> value = parseFloat("1.5"), comma = parseFloat("1,5");
  std::setlocale(LC_ALL, before.c_str());
  EXPECT_STREQ("1,5", probe);
  EXPECT_EQ("1234.5", text);
  EXPECT_EQ(1.5, value);
  EXPECT_FALSE(comma);
}

TEST(Utf8, FindsTheFirstMalformedByte) {
  const size_t valid = std::string_view::npos;
  const std::pair<std::string_view, size_t> cases[] = {{"plain", valid},
                                                       {"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", valid},
                                                       {"a\xC3", 1},
                                                       {"ab\x80", 2},
                                                       {"\xC0\x80", 0},
                                                       {"\xE0\x9F\xBF", 0},
                                                       {"\xED\xA0\x80", 0},
                                                       {"\xF0\x8F\xBF\xBF", 0},
                                                       {"\xF4\x90\x80\x80", 0},
                                                       {"\xF5\x80\x80\x80", 0},
                                                       {"x\xE2\x82y", 1}};
  for (const auto& [text, at] : cases) EXPECT_EQ(at, findMalformedUtf8(text)) << text;
  EXPECT_EQ("a\xC3\xA4", firstCharacters("a\xC3\xA4z", 2));
  EXPECT_EQ("a\xC3\xA4? ", excerpt("a\xC3\xA4\xFF\nz", 4));
}
