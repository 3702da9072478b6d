// What a build notices: notes, defects of single nodes, and the fault that ends it. Places are byte offsets while the
// description is read; lines are counted at the end, and only if something was found.
#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "description/Description.h"

namespace GENAPI_NAMESPACE {

// Ends a load.
struct LoadFault {
  uint32_t line;  // 0 unknown
  std::string reason;
  std::string nodeType{}, node{}, element{};  // empty if the fault concerns no node or element
};

// The value in quotes, cut to 40 characters, without anything that would break the line.
std::string quoted(std::string_view value);
// The number of the line that holds the byte at `offset`, counted from 1.
uint32_t lineAt(std::string_view text, size_t offset);
// "<NodeType> '<Name>': <Element>: <reason>"; leaves out what is empty.
std::string placedText(std::string_view nodeType, std::string_view node, std::string_view element,
                       std::string_view reason);

inline constexpr size_t kNoOffset = ~size_t{0};

class BuildFindings {
 public:
  // `text` is what lines are counted in.
  explicit BuildFindings(std::string_view text) : text_(text) {}

  void note(size_t offset, NodeIndex node, std::string_view element, std::string reason);
  void defect(size_t offset, NodeIndex node, std::string_view element, std::string reason);
  [[noreturn]] void fatal(size_t offset, std::string_view reason, std::string_view nodeType = {},
                          std::string_view node = {}, std::string_view element = {}) const;

  size_t count() const { return records_.size(); }
  // Findings from number `first` on belong to `node`, whose index was not known when they were made.
  void assign(size_t first, NodeIndex node);
  // All findings with their lines.
  std::vector<FindingRecord> take();

 private:
  void add(ESeverity severity, size_t offset, NodeIndex node, std::string_view element, std::string reason);

  std::string_view text_;
  std::vector<FindingRecord> records_;
  std::vector<size_t> offsets_;  // parallel to records_
  size_t notes_ = 0, skippedNotes_ = 0;
};

}  // namespace GENAPI_NAMESPACE
