#include "DescriptionUrl.h"

#include <charconv>
#include <stdexcept>

#include "DeviceText.h"

namespace ox::camera {
namespace {

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r' || text.back() == '\n'))
    text.remove_suffix(1);
  return text;
}

uint64_t hexadecimal(std::string_view text, std::string_view url) {
  text = trimmed(text);
  if (text.starts_with("0x") || text.starts_with("0X")) text.remove_prefix(2);
  uint64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  if (error != std::errc{} || end != text.data() + text.size() || text.empty())
    throw std::invalid_argument("'" + shown(text) + "' in the URL '" + shown(url) + "' is no hexadecimal number");
  return value;
}

int digit(char c) {
  return c >= '0' && c <= '9'   ? c - '0'
         : c >= 'a' && c <= 'f' ? c - 'a' + 10
         : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                : -1;
}

std::string percentDecoded(std::string_view text) {
  std::string result;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size() && digit(text[i + 1]) >= 0 && digit(text[i + 2]) >= 0) {
      result += static_cast<char>(digit(text[i + 1]) * 16 + digit(text[i + 2]));
      i += 2;
    } else {
      result += text[i];
    }
  }
  return result;
}

}  // namespace

DescriptionUrl parseDescriptionUrl(std::string_view url) {
  url = trimmed(url.substr(0, url.find('\0')));
  const size_t colon = url.find(':');
  if (url.empty() || colon == std::string_view::npos)
    throw std::invalid_argument("'" + shown(url) + "' is no URL of a description");
  const std::string_view scheme = url.substr(0, colon);
  std::string_view rest = url.substr(colon + 1);
  if (sameIgnoringCase(scheme, "http") || sameIgnoringCase(scheme, "https"))
    return {DescriptionUrl::Scheme::web, std::string(url)};
  rest = rest.substr(0, rest.find('?'));
  if (sameIgnoringCase(scheme, "file")) {
    if (rest.starts_with("//")) rest.remove_prefix(2);
    while (rest.starts_with("//")) rest.remove_prefix(1);
    const std::string path = percentDecoded(trimmed(rest));
    if (path.empty()) throw std::invalid_argument("The URL '" + shown(url) + "' names no file");
    return {DescriptionUrl::Scheme::file, path};
  }
  if (!sameIgnoringCase(scheme, "local"))
    throw std::invalid_argument("The URL '" + shown(url) + "' has an unknown scheme");
  while (rest.starts_with('/')) rest.remove_prefix(1);
  const size_t first = rest.find(';');
  const size_t second = first == std::string_view::npos ? first : rest.find(';', first + 1);
  if (second == std::string_view::npos)
    throw std::invalid_argument("The URL '" + shown(url) + "' lacks an address or a length");
  std::string_view length = rest.substr(second + 1);
  length = length.substr(0, length.find(';'));
  return {DescriptionUrl::Scheme::registers, std::string(trimmed(rest.substr(0, first))),
          hexadecimal(rest.substr(first + 1, second - first - 1), url), hexadecimal(length, url)};
}

}  // namespace ox::camera
