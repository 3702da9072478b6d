// Conversions and the caller-buffer protocol.
#include "Text.h"

#include <gtest/gtest.h>

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
  const wchar_t none[] = {static_cast<wchar_t>(0x200000), static_cast<wchar_t>(-1), L'x', 0};  // no code points
  EXPECT_EQ(toNarrow(none), "\xEF\xBF\xBD\xEF\xBF\xBDx");
}

TEST(Text, MalformedSequencesBecomeOneReplacementEach) {
  const std::pair<const char*, const wchar_t*> cases[] = {
      {"a\x80z", L"a\uFFFDz"},                // a continuation byte that continues nothing
      {"a\xFFz", L"a\uFFFDz"},                // no lead byte
      {"\xE2\x28\xA1", L"\uFFFD(\uFFFD"},     // the character in the way stays
      {"\xE2\x82", L"\uFFFD"},                // cut at the end
      {"\xF0\x9F\x98z", L"\uFFFDz"},          // cut before another character
      {"\xF0\x9F\xC3\xA9", L"\uFFFD\u00e9"},  // cut before another sequence
  };
  for (const auto& [narrow, wide] : cases) EXPECT_EQ(toWide(narrow), wide) << narrow;
}

TEST(Text, BuffersAreFilledByTheirSize) {
  for (const auto& [room, content] : {std::pair{0, "####"}, {1, ""}, {3, "ab"}, {4, "abc"}, {9, "abc"}}) {
    char buffer[10] = "####";
    size_t size = static_cast<size_t>(room);
    copyText("abc", buffer, size);
    EXPECT_STREQ(buffer, content) << room;
    EXPECT_EQ(size, static_cast<size_t>(room));
    wchar_t wide[10] = L"####";
    copyText("abc", wide, size);
    EXPECT_EQ(std::wstring(wide), std::wstring(content, content + std::strlen(content)));
  }
  size_t size = 0;
  copyText("abc", static_cast<char*>(nullptr), size);
  EXPECT_EQ(size, 4u);
}

}  // namespace
}  // namespace orxGenApi
