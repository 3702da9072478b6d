#include "Output.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <iterator>

namespace tool {
namespace {

constexpr std::string_view kDigits = "0123456789abcdef";
constexpr size_t kBytesPerLine = 16;
constexpr size_t kLabelWidth = 20;

bool wantsColours(Output::Colour colour) {
  if (colour != Output::Colour::automatic) {
    return colour == Output::Colour::always;
  }
  const char* noColour = std::getenv("NO_COLOR");
  return isatty(STDOUT_FILENO) == 1 && (noColour == nullptr || *noColour == '\0');
}

std::string dumped(const Json& json, int indent) {
  return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

void appendHex(std::string& text, uint64_t value, int digits) {
  for (int digit = digits - 1; digit >= 0; --digit) {
    text += kDigits[(value >> (4 * digit)) & 0xf];
  }
}

}  // namespace

Output::Output(bool json, Colour colour) : json_(json), colours_(!json && wantsColours(colour)) {}

std::string Output::painted(std::string_view code, std::string_view text) const {
  if (!colours_ || text.empty()) {
    return std::string(text);
  }
  return "\x1b[" + std::string(code) + "m" + std::string(text) + "\x1b[0m";
}

void Output::text(std::string_view text) const {
  std::fwrite(text.data(), 1, text.size(), stdout);
}

void Output::line(std::string_view text) const {
  this->text(text);
  std::fputc('\n', stdout);
}

void Output::field(std::string_view label, std::string_view value) const {
  const std::string text = std::string(label) + ":";
  line(name(text) + std::string(text.size() < kLabelWidth ? kLabelWidth - text.size() : 1, ' ') + std::string(value));
}

void Output::document(const Json& json) const {
  line(dumped(json, 2));
}

void Output::record(const Json& json) const {
  line(dumped(json, -1));
  std::fflush(stdout);
}

void Output::failure(const Failure& failure) const {
  std::fflush(stdout);
  std::string text = "oxgenapi: ";
  // Most texts of the library begin with the feature's name themselves.
  if (!failure.feature().empty() && !std::string_view(failure.what()).starts_with(failure.feature())) {
    text += failure.feature() + ": ";
  }
  text += std::string(failure.what()) + " (" + codeText(failure.code()) + ")\n";
  std::fwrite(text.data(), 1, text.size(), stderr);
}

void Output::hint(std::string_view text) const {
  const std::string line = "  " + std::string(text) + "\n";
  std::fwrite(line.data(), 1, line.size(), stderr);
}

Json toJson(const Failure& failure) {
  Json json{{"code", codeText(failure.code())}, {"text", failure.what()}};
  if (!failure.feature().empty()) {
    json["feature"] = failure.feature();
  }
  return json;
}

std::string counted(size_t count, std::string_view thing) {
  return std::to_string(count) + " " + std::string(thing) + (count == 1 ? "" : "s");
}

std::string hexText(std::span<const std::byte> bytes) {
  std::string text;
  text.reserve(bytes.size() * 3);
  for (const std::byte byte : bytes) {
    if (!text.empty()) {
      text += ' ';
    }
    appendHex(text, std::to_integer<uint64_t>(byte), 2);
  }
  return text;
}

std::vector<std::byte> parseBytes(const std::vector<std::string>& words) {
  std::string digits;
  for (const std::string& word : words) {
    std::copy_if(word.begin(), word.end(), std::back_inserter(digits), [](char character) { return character != ' '; });
  }
  std::vector<std::byte> bytes;
  for (size_t start = 0; start < digits.size(); start += 2) {
    unsigned value = 0;
    const char* end = digits.data() + start + 2;
    if (start + 2 > digits.size() || std::from_chars(digits.data() + start, end, value, 16).ptr != end) {
      throw UsageError("'" + digits + "' is not bytes of two hexadecimal digits each");
    }
    bytes.push_back(static_cast<std::byte>(value));
  }
  return bytes;
}

std::string hexDump(int64_t address, std::span<const std::byte> bytes) {
  std::string text;
  for (size_t start = 0; start < bytes.size(); start += kBytesPerLine) {
    const auto row = bytes.subspan(start, std::min(kBytesPerLine, bytes.size() - start));
    text += start == 0 ? "" : "\n";
    appendHex(text, static_cast<uint64_t>(address) + start, 16);
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
