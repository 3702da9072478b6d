#include "NearNames.h"

#include <algorithm>

namespace tool {
namespace {

constexpr size_t kMost = 3;

char lower(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character + ('a' - 'A')) : character;
}

// How many letters have to be put in, left out, exchanged or swapped with their neighbour.
size_t distance(std::string_view left, std::string_view right) {
  std::vector<size_t> beforeLast(right.size() + 1);
  std::vector<size_t> last(right.size() + 1);
  std::vector<size_t> row(right.size() + 1);
  for (size_t column = 0; column <= right.size(); ++column) {
    row[column] = column;
  }
  for (size_t line = 1; line <= left.size(); ++line) {
    std::swap(beforeLast, last);
    std::swap(last, row);
    row[0] = line;
    for (size_t column = 1; column <= right.size(); ++column) {
      const char a = lower(left[line - 1]);
      const char b = lower(right[column - 1]);
      row[column] = std::min({last[column] + 1, row[column - 1] + 1, last[column - 1] + (a == b ? 0 : 1)});
      if (line > 1 && column > 1 && a == lower(right[column - 2]) && b == lower(left[line - 2])) {
        row[column] = std::min(row[column], beforeLast[column - 2] + 1);
      }
    }
  }
  return row.back();
}

}  // namespace

std::vector<std::string> nearNames(std::string_view wanted, const std::vector<std::string>& names) {
  const size_t limit = std::max<size_t>(1, wanted.size() / 4);
  std::vector<std::pair<size_t, std::string>> found;
  for (const std::string& name : names) {
    const size_t difference = std::max(name.size(), wanted.size()) - std::min(name.size(), wanted.size());
    const size_t steps = difference > limit ? limit + 1 : distance(wanted, name);
    if (steps <= limit) {
      found.emplace_back(steps, name);
    }
  }
  std::sort(found.begin(), found.end());
  std::vector<std::string> nearest;
  for (size_t index = 0; index < std::min(kMost, found.size()); ++index) {
    nearest.push_back(found[index].second);
  }
  return nearest;
}

}  // namespace tool
