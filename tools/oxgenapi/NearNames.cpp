#include "NearNames.h"

#include <algorithm>

namespace tool {
namespace {

constexpr size_t kMost = 3;
constexpr size_t kShortestPart = 3;  // fewer letters are in too many names

char lower(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character + ('a' - 'A')) : character;
}

std::string lower(std::string_view text) {
  std::string result;
  for (const char character : text) result += lower(character);
  return result;
}

// How many letters have to be put in, left out, exchanged or swapped with their neighbour.
size_t distance(std::string_view left, std::string_view right) {
  std::vector<size_t> beforeLast(right.size() + 1);
  std::vector<size_t> last(right.size() + 1);
  std::vector<size_t> row(right.size() + 1);
  for (size_t column = 0; column <= right.size(); ++column) row[column] = column;
  for (size_t line = 1; line <= left.size(); ++line) {
    std::swap(beforeLast, last);
    std::swap(last, row);
    row[0] = line;
    for (size_t column = 1; column <= right.size(); ++column) {
      const char a = lower(left[line - 1]);
      const char b = lower(right[column - 1]);
      row[column] = std::min({last[column] + 1, row[column - 1] + 1, last[column - 1] + (a == b ? 0 : 1)});
      if (line > 1 && column > 1 && a == lower(right[column - 2]) && b == lower(left[line - 2]))
        row[column] = std::min(row[column], beforeLast[column - 2] + 1);
    }
  }
  return row.back();
}

}  // namespace

std::vector<std::string> nearNames(std::string_view wanted, const std::vector<std::string>& names) {
  const size_t limit = std::max<size_t>(1, wanted.size() / 4);
  std::vector<std::pair<size_t, std::string>> close;
  std::vector<std::pair<size_t, std::string>> containing;
  for (const std::string& name : names) {
    const size_t difference = std::max(name.size(), wanted.size()) - std::min(name.size(), wanted.size());
    const size_t steps = difference > limit ? limit + 1 : distance(wanted, name);
    const size_t place = lower(name).find(lower(wanted));
    if (steps <= limit)
      close.emplace_back(steps, name);
    else if (wanted.size() >= kShortestPart && place != std::string::npos)
      containing.emplace_back(place, name);
  }
  std::vector<std::pair<size_t, std::string>>& found = close.empty() ? containing : close;
  std::stable_sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<std::string> nearest;
  for (size_t index = 0; index < std::min(kMost, found.size()); ++index) nearest.push_back(found[index].second);
  return nearest;
}

std::string question(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names)
    text += (text.empty() ? "Did you mean " : &name == &names.back() ? " or " : ", ") + name;
  return text.empty() ? text : text + "?";
}

}  // namespace tool
