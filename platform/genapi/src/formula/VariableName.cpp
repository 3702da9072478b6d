#include "formula/VariableName.h"

#include "text/Characters.h"

namespace GENAPI_NAMESPACE::formula {

std::optional<VariableAspect> aspectOf(std::string_view variable, bool foldCase) noexcept {
  // In the order of Aspect.
  constexpr std::string_view kSuffixes[] = {"Value", "Min", "Max", "Inc", "AccessMode", "Visibility", "CachingMode"};
  constexpr std::string_view kEntry = "Entry.";
  const auto same = [&](std::string_view a, std::string_view b) {
    return foldCase ? text::equalsIgnoringCase(a, b) : a == b;
  };
  const size_t dot = variable.find('.');
  if (dot == std::string_view::npos) return VariableAspect{};
  const std::string_view suffix = variable.substr(dot + 1);
  for (size_t i = 0; i < std::size(kSuffixes); ++i)
    if (same(suffix, kSuffixes[i])) return VariableAspect{static_cast<Aspect>(i)};
  if (suffix.size() <= kEntry.size() || !same(suffix.substr(0, kEntry.size()), kEntry)) return std::nullopt;
  return VariableAspect{Aspect::Entry, suffix.substr(kEntry.size())};
}

}  // namespace GENAPI_NAMESPACE::formula
