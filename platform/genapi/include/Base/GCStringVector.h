// gcstring_vector: the list of strings of the GenApi programming interface.
#pragma once

#include <Base/GCString.h>

#include <vector>

namespace GENICAM_NAMESPACE {

// Members behave like those of std::vector; `at` throws std::out_of_range.
class gcstring_vector {
 public:
  using value_type = gcstring;
  using iterator = std::vector<gcstring>::iterator;
  using const_iterator = std::vector<gcstring>::const_iterator;

  gcstring_vector() noexcept = default;
  explicit gcstring_vector(size_t count) : strings_(count) {}
  gcstring_vector(size_t count, const gcstring& text) : strings_(count, text) {}

  size_t size() const noexcept { return strings_.size(); }
  size_t max_size() const noexcept { return strings_.max_size(); }
  bool empty() const noexcept { return strings_.empty(); }
  void resize(size_t count, const gcstring& text = gcstring()) { strings_.resize(count, text); }
  void reserve(size_t capacity) { strings_.reserve(capacity); }
  void clear() noexcept { strings_.clear(); }
  void swap(gcstring_vector& other) noexcept { strings_.swap(other.strings_); }

  gcstring& operator[](size_t index) { return strings_[index]; }
  const gcstring& operator[](size_t index) const { return strings_[index]; }
  gcstring& at(size_t index) { return strings_.at(index); }
  const gcstring& at(size_t index) const { return strings_.at(index); }
  gcstring& front() { return strings_.front(); }
  const gcstring& front() const { return strings_.front(); }
  gcstring& back() { return strings_.back(); }
  const gcstring& back() const { return strings_.back(); }

  void push_back(const gcstring& text) { strings_.push_back(text); }
  void push_back(gcstring&& text) { strings_.push_back(std::move(text)); }
  void pop_back() { strings_.pop_back(); }
  iterator insert(const_iterator before, const gcstring& text) { return strings_.insert(before, text); }
  void insert(const_iterator before, size_t count, const gcstring& text) { strings_.insert(before, count, text); }
  iterator erase(const_iterator at) { return strings_.erase(at); }
  iterator erase(const_iterator first, const_iterator last) { return strings_.erase(first, last); }

  iterator begin() noexcept { return strings_.begin(); }
  iterator end() noexcept { return strings_.end(); }
  const_iterator begin() const noexcept { return strings_.begin(); }
  const_iterator end() const noexcept { return strings_.end(); }

  bool operator==(const gcstring_vector& other) const noexcept { return strings_ == other.strings_; }

 private:
  std::vector<gcstring> strings_;
};

}  // namespace GENICAM_NAMESPACE
