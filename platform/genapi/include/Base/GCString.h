// gcstring: the string type of the GenApi programming interface. A value type over one byte string; the engine keeps
// UTF-8 in it. All members offer the guarantees of the std::string members of the same name; allocation failure is
// std::bad_alloc, a position past the end std::out_of_range.
#pragma once

#include <Base/GCTypes.h>

#include <compare>
#include <istream>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

namespace GENICAM_NAMESPACE {

class gcstring {
 public:
  gcstring() noexcept = default;
  // A null pointer gives the empty string.
  gcstring(const char* text) : text_(viewOf(text)) {}  // NOLINT: implicit by contract
  // Copies `count` bytes, embedded NULs included. `text` may be null when `count` is 0.
  gcstring(const char* text, size_t count) : text_(count == 0 ? std::string_view() : std::string_view(text, count)) {}
  gcstring(size_t count, char character) : text_(count, character) {}
  explicit gcstring(std::string_view text) : text_(text) {}
  // Takes over the bytes of a std::string without a copy.
  explicit gcstring(std::string&& text) noexcept : text_(std::move(text)) {}

  gcstring& operator=(const char* text) { return assign(text); }
  gcstring& operator=(char character) {
    text_ = character;
    return *this;
  }
  gcstring& operator=(std::string_view text) {
    text_ = text;
    return *this;
  }

  gcstring& assign(const gcstring& text) {
    text_ = text.text_;
    return *this;
  }
  gcstring& assign(const char* text) {
    text_.assign(viewOf(text));
    return *this;
  }
  gcstring& assign(const char* text, size_t count) { return *this = gcstring(text, count); }
  gcstring& assign(size_t count, char character) {
    text_.assign(count, character);
    return *this;
  }

  gcstring& append(const gcstring& text) {
    text_ += text.text_;
    return *this;
  }
  gcstring& append(const char* text) {
    text_ += viewOf(text);
    return *this;
  }
  gcstring& append(std::string_view text) {
    text_ += text;
    return *this;
  }
  gcstring& append(size_t count, char character) {
    text_.append(count, character);
    return *this;
  }
  gcstring& operator+=(const gcstring& text) { return append(text); }
  gcstring& operator+=(const char* text) { return append(text); }
  gcstring& operator+=(std::string_view text) { return append(text); }
  gcstring& operator+=(char character) { return append(1, character); }

  const char* c_str() const noexcept { return text_.c_str(); }
  operator const char*() const noexcept { return text_.c_str(); }  // NOLINT: implicit by contract
  // The bytes without a copy; valid until this string changes or ends.
  std::string_view view() const noexcept { return text_; }

  size_t size() const noexcept { return text_.size(); }
  size_t length() const noexcept { return text_.size(); }
  size_t max_size() const noexcept { return text_.max_size(); }
  bool empty() const noexcept { return text_.empty(); }
  void resize(size_t count) { text_.resize(count); }
  void resize(size_t count, char character) { text_.resize(count, character); }
  void reserve(size_t capacity) { text_.reserve(capacity); }
  void clear() noexcept { text_.clear(); }
  void swap(gcstring& other) noexcept { text_.swap(other.text_); }

  char& operator[](size_t index) { return text_[index]; }
  const char& operator[](size_t index) const { return text_[index]; }
  char& at(size_t index) { return text_.at(index); }
  const char& at(size_t index) const { return text_.at(index); }

  // Searches answer _npos() when nothing is found.
  static size_t _npos() noexcept { return std::string::npos; }
  size_t find(char character, size_t from = 0) const noexcept { return text_.find(character, from); }
  size_t find(const gcstring& text, size_t from = 0) const noexcept { return text_.find(text.text_, from); }
  size_t find(const char* text, size_t from = 0) const noexcept { return text_.find(viewOf(text), from); }
  size_t find(const gcstring& text, size_t from, size_t count) const { return text_.find(head(text, count), from); }
  size_t find_first_of(const gcstring& set, size_t from = 0) const noexcept {
    return text_.find_first_of(set.text_, from);
  }
  size_t find_first_of(const gcstring& set, size_t from, size_t count) const {
    return text_.find_first_of(head(set, count), from);
  }
  size_t find_first_not_of(const gcstring& set, size_t from = 0) const noexcept {
    return text_.find_first_not_of(set.text_, from);
  }
  size_t find_first_not_of(const gcstring& set, size_t from, size_t count) const {
    return text_.find_first_not_of(head(set, count), from);
  }

  gcstring substr(size_t from = 0, size_t count = std::string::npos) const {
    return gcstring(text_.substr(from, count));
  }
  gcstring& replace(size_t from, size_t count, const gcstring& text) {
    text_.replace(from, count, text.text_);
    return *this;
  }
  gcstring& erase(size_t from = 0, size_t count = std::string::npos) {
    text_.erase(from, count);
    return *this;
  }
  // Below, at or above zero as this string orders before, equals or follows `other`, compared by unsigned bytes.
  int compare(const gcstring& other) const noexcept { return text_.compare(other.text_); }

  // The bytes up to a null pointer's empty text; what the operators below use for a plain C string.
  static std::string_view viewOf(const char* text) noexcept {
    return text == nullptr ? std::string_view() : std::string_view(text);
  }

 private:
  static std::string_view head(const gcstring& text, size_t count) { return text.view().substr(0, count); }

  std::string text_;
};

// Ordering is by unsigned bytes. The overloads for C strings keep a comparison from falling back to pointers.
inline bool operator==(const gcstring& a, const gcstring& b) noexcept { return a.view() == b.view(); }
inline bool operator==(const gcstring& a, const char* b) noexcept { return a.view() == gcstring::viewOf(b); }
inline bool operator==(const gcstring& a, std::string_view b) noexcept { return a.view() == b; }
inline std::strong_ordering operator<=>(const gcstring& a, const gcstring& b) noexcept { return a.view() <=> b.view(); }
inline std::strong_ordering operator<=>(const gcstring& a, const char* b) noexcept {
  return a.view() <=> gcstring::viewOf(b);
}
inline std::strong_ordering operator<=>(const gcstring& a, std::string_view b) noexcept { return a.view() <=> b; }

inline gcstring operator+(gcstring a, const gcstring& b) { return std::move(a.append(b)); }
inline gcstring operator+(gcstring a, const char* b) { return std::move(a.append(b)); }
inline gcstring operator+(gcstring a, char b) { return std::move(a.append(1, b)); }
inline gcstring operator+(const char* a, const gcstring& b) { return std::move(gcstring(a).append(b)); }

inline std::ostream& operator<<(std::ostream& stream, const gcstring& text) { return stream << text.view(); }
// Reads one word, as for a std::string.
inline std::istream& operator>>(std::istream& stream, gcstring& text) {
  std::string word;
  stream >> word;
  text = gcstring(std::move(word));
  return stream;
}
// Reads up to `delimiter`, which is taken from the stream and not kept.
inline std::istream& getline(std::istream& stream, gcstring& text, char delimiter = '\n') {
  std::string line;
  std::getline(stream, line, delimiter);
  text = gcstring(std::move(line));
  return stream;
}

}  // namespace GENICAM_NAMESPACE
