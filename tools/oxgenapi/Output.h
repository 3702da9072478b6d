// Where commands write: text for people, coloured on a terminal, or one JSON document for scripts.
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Failure.h"

namespace tool {

// Members keep the order in which they were added, so that documents read like the text output.
using Json = nlohmann::ordered_json;

class Output {
 public:
  enum class Colour { automatic, always, never };

  Output(bool json, Colour colour);

  // True where the command shall print JSON and nothing else on standard output.
  bool json() const { return json_; }

  std::string name(std::string_view text) const { return painted('1', text); }
  std::string dim(std::string_view text) const { return painted('2', text); }
  std::string good(std::string_view text) const { return painted('g', text); }
  std::string bad(std::string_view text) const { return painted('r', text); }

  // Text for people, and a line feed; control characters from a device are escaped.
  void line(std::string_view text) const;
  // What a program reads (a value, a table, a file), as it is; only on a terminal as line() shows it.
  void data(std::string_view text) const;
  // "Label:       value", the values of successive calls under each other.
  void field(std::string_view label, std::string_view value) const;
  // One document, indented; invalid UTF-8 in a device's text is replaced, never an error.
  void document(const Json& json) const;
  // One document on one line, flushed: for commands that report while they run.
  void record(const Json& json) const;
  // "oxgenapi: ExposureTime: text (0x8000000c)" on standard error.
  void failure(const Failure& failure) const;
  // "oxgenapi: text" on standard error: what is worth knowing and fails nothing.
  void note(std::string_view text) const;
  // Advice that goes with a failure, on standard error.
  void hint(std::string_view text) const;

 private:
  std::string painted(char style, std::string_view text) const;
  std::string shown(std::string_view text) const;

  bool json_;
  bool colours_;
};

Json toJson(const Failure& failure);

// "1 line", "2 lines"
std::string counted(size_t count, std::string_view thing);
// "01 0a ff"
std::string hexText(std::span<const std::byte> bytes);
// The bytes that words such as "0a ff 01" or "0aff01" stand for: two digits a byte. Throws UsageError.
std::vector<std::byte> parseBytes(const std::vector<std::string>& words);
// Sixteen bytes a line: address, bytes, printable characters.
std::string hexDump(int64_t address, std::span<const std::byte> bytes);

}  // namespace tool
