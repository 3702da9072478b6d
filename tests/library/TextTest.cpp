// Conversions and the caller-buffer protocol.
#include "Text.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstring>

namespace orxGenApi {
namespace {

// As a caller gets it: asks for the size first.
std::wstring toWide(const std::string& text) {
  size_t size = 0;
  copyText(text, static_cast<wchar_t*>(nullptr), size);
  std::wstring wide(size, L'#');
  copyText(text, wide.data(), size);
  EXPECT_EQ(wide.back(), L'\0');
  wide.pop_back();
  return wide;
}

TEST(Text, WideTextHasOneCodePointPerElement) {
  const std::wstring wide = L"a\u00e9\u20ac\U0001F600";
  EXPECT_EQ(toNarrow(wide.c_str()), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
  EXPECT_EQ(toWide(toNarrow(wide.c_str())), wide);
  EXPECT_EQ(toNarrow(nullptr), "");
}

TEST(Text, MalformedSequencesBecomeOneReplacementEach) {
  const struct {
    const char* narrow;
    const wchar_t* wide;
  } cases[] = {
      {"a\x80z", L"a\uFFFDz"},                // a continuation byte that continues nothing
      {"a\xFFz", L"a\uFFFDz"},                // no lead byte
      {"\xE2\x28\xA1", L"\uFFFD(\uFFFD"},     // the character in the way stays
      {"\xE2\x82", L"\uFFFD"},                // cut at the end
      {"\xF0\x9F\x98z", L"\uFFFDz"},          // cut before another character
      {"\xF0\x9F\xC3\xA9", L"\uFFFD\u00e9"},  // cut before another sequence
  };
  for (const auto& c : cases) EXPECT_EQ(toWide(c.narrow), c.wide) << c.narrow;
}

TEST(Text, WideElementsThatAreNoCodePointsBecomeReplacements) {
  const wchar_t wide[] = {static_cast<wchar_t>(0x200000), static_cast<wchar_t>(-1), L'x', 0};
  EXPECT_EQ(toNarrow(wide), "\xEF\xBF\xBD\xEF\xBF\xBDx");
}

TEST(Text, BuffersAreFilledByTheirSize) {
  const struct {
    size_t size;
    const char* content;
  } cases[] = {{0, "####"}, {1, ""}, {3, "ab"}, {4, "abc"}, {9, "abc"}};
  for (const auto& c : cases) {
    char buffer[10] = "####";
    size_t size = c.size;
    copyText("abc", buffer, size);
    EXPECT_STREQ(buffer, c.content) << c.size;
    EXPECT_EQ(size, c.size);
    wchar_t wide[10] = L"####";
    copyText("abc", wide, size);
    EXPECT_EQ(std::wstring(wide), std::wstring(c.content, c.content + std::strlen(c.content)));
  }
  size_t size = 0;
  copyText("abc", static_cast<char*>(nullptr), size);
  EXPECT_EQ(size, 4u);
}

TEST(Text, NumbersDoNotDependOnTheLocale) {
  const std::string former = std::setlocale(LC_ALL, nullptr);
  std::setlocale(LC_ALL, "de_DE.UTF-8");
  EXPECT_EQ(realText(1234567.5), "1.23457e+06");
  EXPECT_EQ(realText(0.5), "0.5");
  EXPECT_EQ(integerText(INT64_MIN), "-9223372036854775808");
  std::setlocale(LC_ALL, former.c_str());
}

}  // namespace
}  // namespace orxGenApi
