#include "description/BuildFindings.h"

#include <algorithm>
#include <numeric>

#include "description/Limits.h"
#include "text/Utf8.h"

namespace GENAPI_NAMESPACE {

std::string quoted(std::string_view value) {
  constexpr size_t kShown = 40;
  const std::string_view shown = text::firstCharacters(value, kShown);
  std::string result = "'";
  for (char character : shown) result += static_cast<unsigned char>(character) < 0x20 ? ' ' : character;
  if (shown.size() < value.size()) result += "...";
  return result += '\'';
}

uint32_t lineAt(std::string_view text, size_t offset) {
  uint32_t line = 1;
  const std::string_view before = text.substr(0, offset);
  for (size_t at = before.find('\n'); at != before.npos; at = before.find('\n', at + 1)) ++line;
  return line;
}

std::string placedText(std::string_view nodeType, std::string_view node, std::string_view element,
                       std::string_view reason) {
  std::string text;
  if (!nodeType.empty()) {
    text += nodeType;
    if (!node.empty()) (text += ' ') += quoted(node);
    text += ": ";
  }
  if (!element.empty()) (text += element) += ": ";
  return text += reason;
}

void BuildFindings::note(size_t offset, NodeIndex node, std::string_view element, std::string reason) {
  if (notes_ == kMaxNotes) {
    ++skippedNotes_;
    return;
  }
  ++notes_;
  add(svNote, offset, node, element, std::move(reason));
}

void BuildFindings::defect(size_t offset, NodeIndex node, std::string_view element, std::string reason) {
  add(svDefect, offset, node, element, std::move(reason));
}

void BuildFindings::fatal(size_t offset, std::string_view reason, std::string_view nodeType, std::string_view node,
                          std::string_view element) const {
  throw LoadFault{offset == kNoOffset ? 0 : lineAt(text_, offset), std::string(reason), std::string(nodeType),
                  std::string(node), std::string(element)};
}

void BuildFindings::add(ESeverity severity, size_t offset, NodeIndex node, std::string_view element,
                        std::string reason) {
  offsets_.push_back(offset);
  records_.push_back({severity, 0, node, std::string(element), std::move(reason)});
}

void BuildFindings::assign(size_t first, NodeIndex node) {
  for (size_t i = first; i < records_.size(); ++i) records_[i].node = node;
}

std::vector<FindingRecord> BuildFindings::take() {
  std::vector<size_t> order(records_.size());
  std::iota(order.begin(), order.end(), size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) { return offsets_[a] < offsets_[b]; });
  uint32_t line = 1;
  size_t at = 0;
  for (size_t i : order) {
    if (offsets_[i] == kNoOffset) break;
    const size_t end = std::min(offsets_[i], text_.size());
    line += lineAt(text_.substr(at), end - at) - 1;
    at = end;
    records_[i].line = line;
  }
  if (skippedNotes_ != 0) add(svNote, kNoOffset, kNoNode, "", std::to_string(skippedNotes_) + " more notes left out");
  offsets_.clear();
  return std::move(records_);
}

}  // namespace GENAPI_NAMESPACE
