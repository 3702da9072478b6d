#include "description/SourceText.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "description/Limits.h"
#include "text/Characters.h"
#include "text/Utf8.h"

namespace GENAPI_NAMESPACE {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

void appendUtf8(std::string& text, uint32_t code) {
  if (code < 0x80) {
    text += static_cast<char>(code);
    return;
  }
  if (code < 0x800) {
    text += static_cast<char>(0xC0 | code >> 6);
  } else {
    if (code < 0x10000) {
      text += static_cast<char>(0xE0 | code >> 12);
    } else {
      text += static_cast<char>(0xF0 | code >> 18);
      text += static_cast<char>(0x80 | (code >> 12 & 0x3F));
    }
    text += static_cast<char>(0x80 | (code >> 6 & 0x3F));
  }
  text += static_cast<char>(0x80 | (code & 0x3F));
}

std::string fromUtf16(std::string_view bytes, bool bigEndian) {
  constexpr uint32_t kReplacement = 0xFFFD;
  const auto unitAt = [&](size_t at) {
    const uint32_t first = static_cast<unsigned char>(bytes[at]);
    const uint32_t second = static_cast<unsigned char>(bytes[at + 1]);
    return bigEndian ? first << 8 | second : second << 8 | first;
  };
  std::string text;
  text.reserve(bytes.size() / 2);
  for (size_t at = 2; at + 1 < bytes.size(); at += 2) {
    uint32_t code = unitAt(at);
    if (code >= 0xDC00 && code < 0xE000) code = kReplacement;
    if (code >= 0xD800 && code < 0xDC00) {
      const uint32_t low = at + 3 < bytes.size() ? unitAt(at + 2) : 0;
      if (low >= 0xDC00 && low < 0xE000) {
        code = 0x10000 + ((code - 0xD800) << 10 | (low - 0xDC00));
        at += 2;
      } else {
        code = kReplacement;
      }
    }
    appendUtf8(text, code);
  }
  return text;
}

// The encoding that the XML declaration names, in capitals; empty without one.
std::string declaredEncoding(std::string_view text) {
  const size_t start = text.substr(0, kMaxLeadingText).find('<');
  if (start == std::string_view::npos || text.substr(start, 5) != "<?xml") return {};
  std::string_view declaration = text.substr(start, 256);
  declaration = declaration.substr(0, declaration.find("?>"));
  const size_t name = declaration.find("encoding");
  if (name == std::string_view::npos) return {};
  const size_t open = declaration.find_first_of("'\"", name);
  if (open == std::string_view::npos) return {};
  const size_t close = declaration.find(declaration[open], open + 1);
  if (close == std::string_view::npos) return {};
  return text::upperCase(declaration.substr(open + 1, close - open - 1));
}

bool isLatin1(std::string_view encoding) {
  return encoding == "ISO-8859-1" || encoding == "ISO8859-1" || encoding == "ISO_8859-1" || encoding == "LATIN1" ||
         encoding == "LATIN-1";
}

struct Counts {
  size_t tags = 0;
  bool references = false, ascii = true;
};

// Sixteen bytes that the compiler handles together; a comparison gives -1 in each byte where it holds.
using Bytes [[gnu::vector_size(16)]] = uint8_t;

size_t sumOf(Bytes bytes) {
  size_t sum = 0;
  for (size_t lane = 0; lane < sizeof bytes; ++lane) sum += bytes[lane];
  return sum;
}

// One pass over everything, sixteen bytes at a time: the first look at a description must cost next to nothing.
Counts countAll(std::string_view text) {
  Counts counts;
  Bytes all{}, references{};
  size_t at = 0;
  while (at + sizeof all <= text.size()) {
    // Each byte counts up to 255 tags before they are added up.
    const size_t stop = std::min(at + sizeof all * 255, text.size() - sizeof all + 1);
    Bytes tags{};
    for (; at < stop; at += sizeof all) {
      Bytes bytes;
      std::memcpy(&bytes, text.data() + at, sizeof bytes);
      tags -= reinterpret_cast<Bytes>(bytes == '<');
      references |= reinterpret_cast<Bytes>(bytes == '&');
      all |= bytes;
    }
    counts.tags += sumOf(tags);
  }
  for (; at < text.size(); ++at) {
    counts.tags += text[at] == '<';
    references[0] |= text[at] == '&';
    all[0] |= static_cast<uint8_t>(text[at]);
  }
  counts.references = sumOf(references) != 0;
  counts.ascii = sumOf(all & 0x80) == 0;
  return counts;
}

// The length of a reference at `at` that the parser resolves ("&amp;", "&#10;", "&#xA;"), or 0.
size_t knownReference(std::string_view text, size_t at) {
  const auto begins = [&](std::string_view known) { return text.substr(at, known.size()) == known; };
  switch (at + 1 < text.size() ? text[at + 1] : '\0') {
    case 'a': return begins("&amp;") ? 5 : begins("&apos;") ? 6 : 0;
    case 'l': return begins("&lt;") ? 4 : 0;
    case 'g': return begins("&gt;") ? 4 : 0;
    case 'q': return begins("&quot;") ? 6 : 0;
    case '#': break;
    default: return 0;
  }
  const bool hex = text.substr(at + 2, 1) == "x";
  const size_t first = at + (hex ? 3 : 2);
  const size_t end = text.find_first_not_of(hex ? "0123456789abcdefABCDEF" : "0123456789", first);
  return end != std::string_view::npos && end > first && text[end] == ';' ? end + 1 - at : 0;
}

}  // namespace

std::string decodedCopy(std::string_view bytes) {
  if (bytes.substr(0, 2) == "\xFF\xFE") return fromUtf16(bytes, false);
  if (bytes.substr(0, 2) == "\xFE\xFF") return fromUtf16(bytes, true);
  if (bytes.substr(0, 3) == kUtf8Mark || !isLatin1(declaredEncoding(bytes)) || countAll(bytes).ascii) return {};
  std::string text;
  text.reserve(bytes.size() + bytes.size() / 8);
  for (char byte : bytes) appendUtf8(text, static_cast<unsigned char>(byte));
  return text;
}

SourceShape examineSource(std::string_view text, BuildFindings& findings) {
  const size_t mark = text.substr(0, 3) == kUtf8Mark ? 3 : 0;
  const size_t start = text.substr(0, mark + kMaxLeadingText + 1).find('<', mark);
  if (start == std::string_view::npos) {
    const std::string_view rest = text.substr(mark);
    if (rest.empty()) findings.fatal(kNoOffset, "neither XML nor zip: the text is empty");
    findings.fatal(kNoOffset, "neither XML nor zip: the text begins with " + quoted(rest));
  }
  const std::string_view leading = text.substr(mark, start - mark);
  if (!text::isBlank(leading))
    findings.note(mark, kNoNode, "", "text before the first tag is skipped: " + quoted(leading));
  const Counts counts = countAll(text);
  if (counts.tags > kMaxXmlTags)
    findings.fatal(kNoOffset, std::to_string(counts.tags) + " tags, more than " + std::to_string(kMaxXmlTags));
  if (!counts.ascii) {
    const size_t malformed = text::findMalformedUtf8(text);
    if (malformed != std::string_view::npos)
      findings.note(malformed, kNoNode, "", "bytes that are not UTF-8 are kept as they are");
  }
  const std::string encoding = declaredEncoding(text);
  if (!encoding.empty() && encoding != "UTF-8" && encoding != "UTF8" && encoding != "US-ASCII" && encoding != "ASCII" &&
      encoding != "UTF-16" && !isLatin1(encoding))
    findings.note(start, kNoNode, "", "unknown encoding " + quoted(encoding) + ", read as UTF-8");
  return {start, counts.tags, counts.references};
}

// The next comment or CDATA section, in which '&' is just a character.
struct LiteralText {
  size_t start = 0, end = 0;

  void findNext(std::string_view text) {
    for (size_t mark = text.find('!', end + 1); mark != std::string_view::npos; mark = text.find('!', mark + 1)) {
      start = mark - 1;
      if (text.substr(start, 4) == "<!--") return endAt(text, "-->");
      if (text.substr(start, 9) == "<![CDATA[") return endAt(text, "]]>");
    }
    start = end = text.size();
  }

 private:
  void endAt(std::string_view text, std::string_view mark) {
    const size_t found = text.find(mark, start + 2);
    end = found == std::string_view::npos ? text.size() : found + mark.size();
  }
};

std::vector<size_t> unknownReferences(std::string_view text) {
  std::vector<size_t> unknown;
  LiteralText literal;
  size_t at = text.find('&');
  while (at != std::string_view::npos && unknown.size() < kMaxNotes) {
    const size_t length = knownReference(text, at);
    if (length == 0) {
      while (literal.end <= at && literal.start < text.size()) literal.findNext(text);
      if (literal.start < at) {
        at = text.find('&', literal.end);
        continue;
      }
      unknown.push_back(at);
    }
    at = text.find('&', at + std::max<size_t>(length, 1));
  }
  return unknown;
}

}  // namespace GENAPI_NAMESPACE
