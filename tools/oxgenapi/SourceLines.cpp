#include "SourceLines.h"

#include <algorithm>
#include <cstddef>

namespace tool {
namespace {

constexpr std::string_view kBlank = " \t\r\n";

size_t after(std::string_view text, std::string_view end, size_t from) {
  const size_t found = text.find(end, from);
  return found == text.npos ? text.size() : found + end.size();
}

// The end of markup at `start` that is no start tag: comments and such may contain anything. `start` for a start tag.
size_t skipped(std::string_view text, size_t start) {
  const std::string_view rest = text.substr(start);
  if (rest.starts_with("<!--")) return after(text, "-->", start + 4);
  if (rest.starts_with("<![CDATA[")) return after(text, "]]>", start);
  if (rest.starts_with("</") || rest.starts_with("<!") || rest.starts_with("<?")) return after(text, ">", start);
  return start;
}

struct StartTag {
  std::string_view element;
  std::string_view name;  // value of the attribute Name
  size_t end;             // behind the tag
};

StartTag startTag(std::string_view text, size_t start) {
  size_t at = std::min(text.find_first_of(" \t\r\n/>", start), text.size());
  StartTag tag{text.substr(start + 1, at - start - 1), {}, text.size()};
  while (at < text.size()) {
    at = std::min(text.find_first_not_of(kBlank, at), text.size());
    const size_t end = text.find_first_of("=>", at);
    if (end == text.npos || text[end] == '>') {
      tag.end = end == text.npos ? text.size() : end + 1;
      break;
    }
    const size_t open = text.find_first_of("\"'", end);
    const size_t close = open == text.npos ? open : text.find(text[open], open + 1);
    if (close == text.npos) break;
    if (text.substr(at, std::min(text.find_first_of(" \t\r\n=", at), end) - at) == "Name")
      tag.name = text.substr(open + 1, close - open - 1);
    at = close + 1;
  }
  return tag;
}

}  // namespace

SourceLines::SourceLines(std::string_view text) {
  uint32_t line = 1;
  size_t counted = 0;
  std::string enumeration;
  for (size_t start = text.find('<'); start != text.npos;) {
    size_t end = skipped(text, start);
    if (end == start) {
      const StartTag tag = startTag(text, start);
      end = tag.end;
      if (!tag.name.empty()) {
        line += static_cast<uint32_t>(std::count(text.begin() + static_cast<ptrdiff_t>(counted),
                                                 text.begin() + static_cast<ptrdiff_t>(start), '\n'));
        counted = start;
        std::string name(tag.name);
        if (tag.element == "Enumeration")
          enumeration = name;
        else if (tag.element == "EnumEntry")
          name.insert(0, "EnumEntry_" + enumeration + "_");  // the name of an entry's node
        lines_.emplace(std::move(name), line);
      }
    }
    start = text.find('<', end);
  }
}

uint32_t SourceLines::of(const std::string& node) const {
  const auto found = lines_.find(node);
  return found == lines_.end() ? 0 : found->second;
}

}  // namespace tool
