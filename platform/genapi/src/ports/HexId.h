// A chunk or event ID: hexadecimal text, compared as bytes without leading zeros.
#pragma once
#include <cstdint>
#include <string>
#include <string_view>

#include "text/Characters.h"

namespace GENAPI_NAMESPACE {

class HexId {
 public:
  // Two digits per byte, big end first, any case, odd counts allowed. False, and an ID that matches nothing, for an
  // empty text or other characters.
  bool parse(std::string_view text) {
    clear();
    if (text.empty()) return false;
    std::string bytes;
    size_t digitsLeft = text.size();
    unsigned byte = 0;
    for (const char c : text) {
      const int digit = text::hexDigit(c);
      if (digit < 0) return false;
      byte = (byte << 4) | static_cast<unsigned>(digit);
      if (--digitsLeft % 2 == 0) {
        if (byte != 0 || !bytes.empty()) bytes.push_back(static_cast<char>(byte));
        byte = 0;
      }
    }
    significant_.swap(bytes);
    for (const char c : significant_) number_ = (number_ << 8) | static_cast<uint8_t>(c);
    byteLength_ = static_cast<int>((text.size() + 1) / 2);
    return true;
  }
  void clear() {
    significant_.clear();
    number_ = 0;
    byteLength_ = 0;
  }

  bool readable() const { return byteLength_ != 0; }
  int byteLength() const { return byteLength_; }
  // The bytes from the first that is not zero: two readable IDs are equal exactly when these are.
  const std::string& significant() const { return significant_; }

  bool equals(const uint8_t* bytes, int length) const {
    if (!readable() || length < 0 || (!bytes && length > 0)) return false;
    if (length > 0 && bytes[length - 1] != static_cast<uint8_t>(number_)) return false;  // most differ here
    while (length > 0 && *bytes == 0) {
      ++bytes;
      --length;
    }
    if (length > static_cast<int>(sizeof(number_)))
      return significant_ == std::string_view(reinterpret_cast<const char*>(bytes), static_cast<size_t>(length));
    uint64_t other = 0;
    for (; length > 0; --length) other = (other << 8) | *bytes++;
    return equals(other);
  }
  bool equals(uint64_t number) const { return isNumber() && number_ == number; }
  // Whether number() says all of it.
  bool isNumber() const { return readable() && significant_.size() <= sizeof(number_); }
  uint64_t number() const { return number_; }

 private:
  std::string significant_;
  uint64_t number_ = 0;  // the last 64 bits
  int byteLength_ = 0;
};

}  // namespace GENAPI_NAMESPACE
