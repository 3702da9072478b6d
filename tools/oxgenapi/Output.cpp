#include "Output.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <iterator>

#include "Hexadecimal.h"
#include "TerminalText.h"

namespace tool {
namespace {

constexpr size_t kBytesPerLine = 16;
constexpr size_t kLabelWidth = 20;

// Where colours begin and end until a line is printed: bytes that no UTF-8 text has. From a device they colour a line.
constexpr char kPaint = '\xfe';
constexpr char kUnpaint = '\xff';
constexpr std::string_view kMarks = "\xfe\xff";

void print(std::string_view text, FILE* stream) { std::fwrite(text.data(), 1, text.size(), stream); }

bool wantsColours(Output::Colour colour) {
  if (colour != Output::Colour::automatic) return colour == Output::Colour::always;
  const char* noColour = std::getenv("NO_COLOR");
  return isatty(STDOUT_FILENO) == 1 && (noColour == nullptr || *noColour == '\0');
}

std::string dumped(const Json& json, int indent) {
  return terminalJson(json.dump(indent, ' ', false, Json::error_handler_t::replace));
}

}  // namespace

Output::Output(bool json, Colour colour) : json_(json), colours_(!json && wantsColours(colour)) {}

// The colours come into a line when it is printed, after the control characters in it have been escaped.
std::string Output::painted(char style, std::string_view text) const {
  return colours_ && !text.empty() ? std::string{kPaint, style} + std::string(text) + kUnpaint : std::string(text);
}

std::string Output::shown(std::string_view text) const {
  if (!colours_) return terminalText(text);
  std::string result;
  while (!text.empty()) {
    const size_t mark = std::min(text.find_first_of(kMarks), text.size());
    result += terminalText(text.substr(0, mark));
    text.remove_prefix(mark);
    if (text.size() > 1 && text.front() == kPaint) {
      result += text[1] == '1' ? "\x1b[1m" : text[1] == '2' ? "\x1b[2m" : text[1] == 'g' ? "\x1b[32m" : "\x1b[31m";
      text.remove_prefix(2);
    } else if (!text.empty()) {
      result += "\x1b[0m";
      text.remove_prefix(1);
    }
  }
  return result;
}

void Output::line(std::string_view text) const { print(shown(text) + '\n', stdout); }

void Output::data(std::string_view text) const {
  static const bool isTerminal = isatty(STDOUT_FILENO) == 1;
  print(isTerminal ? terminalText(text) : text, stdout);
}

void Output::field(std::string_view label, std::string_view value) const {
  const std::string text = std::string(label) + ":";
  line(name(text) + std::string(text.size() < kLabelWidth ? kLabelWidth - text.size() : 1, ' ') + std::string(value));
}

void Output::document(const Json& json) const { print(dumped(json, 2) + '\n', stdout); }

void Output::record(const Json& json) const {
  print(dumped(json, -1) + '\n', stdout);
  std::fflush(stdout);
}

void Output::failure(const Failure& failure) const {
  std::fflush(stdout);
  std::string text = "oxgenapi: ";
  // Most texts of the library begin with the feature's name themselves.
  if (!failure.feature().empty() && !std::string_view(failure.what()).starts_with(failure.feature()))
    text += failure.feature() + ": ";
  text += std::string(failure.what()) + " (" + codeText(failure.code()) + ")\n";
  print(terminalText(text), stderr);
}

void Output::note(std::string_view text) const { print(terminalText("oxgenapi: " + std::string(text) + "\n"), stderr); }

void Output::hint(std::string_view text) const { print(terminalText("  " + std::string(text) + "\n"), stderr); }

Json toJson(const Failure& failure) {
  Json json{{"code", codeText(failure.code())}, {"text", failure.what()}};
  if (!failure.feature().empty()) json["feature"] = failure.feature();
  return json;
}

std::string counted(size_t count, std::string_view thing) {
  return std::to_string(count) + " " + std::string(thing) + (count == 1 ? "" : "s");
}

std::string hexText(std::span<const std::byte> bytes) {
  std::string text;
  text.reserve(bytes.size() * 3);
  for (const std::byte byte : bytes) {
    if (!text.empty()) text += ' ';
    text += hexadecimal(std::to_integer<uint64_t>(byte), 2);
  }
  return text;
}

std::vector<std::byte> parseBytes(const std::vector<std::string>& words) {
  std::string digits;
  for (const std::string& word : words)
    std::copy_if(word.begin(), word.end(), std::back_inserter(digits), [](char character) { return character != ' '; });
  std::vector<std::byte> bytes;
  for (size_t start = 0; start < digits.size(); start += 2) {
    unsigned value = 0;
    const char* end = digits.data() + start + 2;
    if (start + 2 > digits.size() || std::from_chars(digits.data() + start, end, value, 16).ptr != end)
      throw UsageError("'" + digits + "' is not bytes of two hexadecimal digits each");
    bytes.push_back(static_cast<std::byte>(value));
  }
  return bytes;
}

std::string hexDump(int64_t address, std::span<const std::byte> bytes) {
  std::string text;
  for (size_t start = 0; start < bytes.size(); start += kBytesPerLine) {
    const auto row = bytes.subspan(start, std::min(kBytesPerLine, bytes.size() - start));
    text += start == 0 ? "" : "\n";
    text += hexadecimal(static_cast<uint64_t>(address) + start, 16);
    const std::string hex = hexText(row);
    text += "  " + hex + std::string(kBytesPerLine * 3 + 1 - hex.size(), ' ');
    for (const std::byte byte : row) {
      const auto character = std::to_integer<unsigned char>(byte);
      text += character >= 0x20 && character < 0x7f ? static_cast<char>(character) : '.';
    }
  }
  return text;
}

}  // namespace tool
