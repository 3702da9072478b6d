#include "SweepWalk.h"

#include <cmath>

INode& SweepWalk::node(NodeIndex index) const {
  return *oracle_.GetNode(gcstring(description_.node(index).name()));
}

namespace {

template <class Stop, class Question>
auto answered(Question&& question) {
  try {
    return question();
  } catch (const GenericException&) {
    throw Stop{};
  }
}

}  // namespace

bool SweepWalk::readable(NodeIndex index) const {
  return answered<Stop>([&] { return IsReadable(node(index).GetAccessMode()); });
}

int64_t SweepWalk::integer(NodeIndex index) const {
  return answered<Stop>([&] {
    if (auto* each = as<IInteger>(index)) return each->GetValue();
    if (auto* each = as<IBoolean>(index)) return int64_t{each->GetValue()};
    if (auto* each = as<IEnumeration>(index)) return each->GetIntValue();
    if (auto* each = as<IFloat>(index)) return static_cast<int64_t>(std::round(each->GetValue()));
    if (auto* each = as<IString>(index)) each->GetValue();
    return int64_t{0};
  });
}

double SweepWalk::real(NodeIndex index) const {
  auto* number = as<IFloat>(index);
  return number ? answered<Stop>([&] { return number->GetValue(); }) : static_cast<double>(integer(index));
}

double SweepWalk::limitOf(NodeIndex index, bool upper) const {
  return answered<Stop>([&] {
    if (auto* each = as<IFloat>(index)) return upper ? each->GetMax() : each->GetMin();
    auto* each = as<IInteger>(index);
    return static_cast<double>(upper ? each->GetMax() : each->GetMin());
  });
}

const Property* SweepWalk::cell(NodeIndex table) {
  const int64_t wanted = integer(description_.find(table, Element::pIndex)->target);
  const Property* found = nullptr;
  const auto all = description_.properties(table);
  for (size_t i = 0; i < all.size(); ++i) {
    const Element element = all[i].element;
    if (element == Element::ValueDefault || element == Element::pValueDefault) found = found ? found : &all[i];
    const bool isCell = element == Element::ValueIndexed || element == Element::pValueIndexed;
    if (isCell && all[i + 1].integer == wanted) return &all[i];
  }
  return found;
}

// --- what each question leads to ---

std::map<SweepWalk::Place, int> SweepWalk::sweep(const std::vector<NodeIndex>& features) {
  accesses_.clear();
  for (const NodeIndex each : features) {
    try {
      feature(each);
    } catch (const Stop&) {
    }
  }
  return std::exchange(accesses_, {});
}

void SweepWalk::feature(NodeIndex index) {
  mode(index);
  if (!readable(index)) return;
  mode(index);  // the read asks again
  if (type(index) == NodeType::Command) {
    const Property* source = description_.find(index, Element::pValue);
    mode(index);
    if (!source) return;
    mode(source->target);
    if (!readable(source->target)) return;
    value(source->target, true);
    if (const Property* command = description_.find(index, Element::pCommandValue)) value(command->target, true);
    return;
  }
  try {
    value(index);
  } catch (const Stop&) {  // the limits are asked for all the same
  }
  if (!as<IInteger>(index) && !as<IFloat>(index)) return;
  for (const bool upper : {false, true}) {
    try {
      limit(index, upper);
    } catch (const Stop&) {
    }
  }
}

void SweepWalk::mode(NodeIndex index) {
  if (known_[index].mode) return;
  bool implemented = true;
  for (const Element guard :
       {Element::pIsImplemented, Element::pIsAvailable, Element::pIsLocked, Element::pBlockPolling}) {
    const Property* given = description_.find(index, guard);
    if (!given) continue;
    mode(given->target);
    if (!readable(given->target)) break;
    if (guard == Element::pBlockPolling) continue;
    value(given->target);
    implemented = guard != Element::pIsImplemented || integer(given->target) != 0;
    if (!implemented) break;
  }
  if (implemented) modeOfType(index);
  known_[index].mode = node(index).IsAccessModeCacheable() == Yes && type(index) != NodeType::Port;
}

void SweepWalk::modeOfEntry(NodeIndex entry) {
  for (const Property& each : description_.properties(entry)) {
    if (kGuards.has(each.element)) return mode(entry);
  }
}

void SweepWalk::modeOfType(NodeIndex index) {
  const bool isTable = description_.find(index, Element::pIndex) && !kRegisterKinds.has(type(index));
  bool available = false;
  for (const Property& each : description_.properties(index)) {
    switch (each.element) {
      case Element::pIndex:
        if (!isTable) break;
        mode(each.target);
        if (!readable(each.target)) break;
        value(each.target);
        if (const Property* chosen = cell(index);
            chosen && chosen->element != Element::ValueIndexed && chosen->element != Element::ValueDefault) {
          mode(chosen->target);
        }
        break;
      case Element::pValue:
      case Element::pValueCopy:
      case Element::pCommandValue:
        mode(each.target);
        break;
      case Element::EnumEntry:
        if (available) break;
        modeOfEntry(each.target);
        available = IsAvailable(node(each.target).GetAccessMode());
        break;
      default:
        break;
    }
  }
  for (const Property& each : description_.properties(index)) {
    const bool needed = each.element == Element::pVariable || each.element == Element::pAddress ||
                        each.element == Element::IntSwissKnife || each.element == Element::pOffset ||
                        each.element == Element::pLength || (!isTable && each.element == Element::pIndex);
    if (!needed) continue;
    mode(each.target);
    if (!IsImplemented(&node(each.target))) return;  // which decides
  }
}

void SweepWalk::value(NodeIndex index, bool past) {
  Known& known = known_[index];
  past = past || known.clearing;
  if (known.value && !past) return;
  fetch(index, past);
  if (!as<IRegister>(index) || as<IInteger>(index) || as<IFloat>(index) || as<IString>(index)) integer(index);
  known.value = node(index).GetCachingMode() != NoCache;
  if (type(index) == NodeType::Enumeration) current(index);
}

// Which entry an enumeration has now: among several with one value, the first that is available.
void SweepWalk::current(NodeIndex enumeration) {
  const int64_t now = integer(enumeration);
  std::vector<NodeIndex> entries;
  for (const Property& each : description_.properties(enumeration)) {
    if (each.element != Element::EnumEntry) continue;
    const Property* value = description_.find(each.target, Element::Value);
    if (value && value->integer == now) entries.push_back(each.target);
  }
  for (const NodeIndex each : entries) {
    if (entries.size() < 2) break;
    modeOfEntry(each);
    if (IsAvailable(node(each).GetAccessMode())) break;
  }
  if (entries.empty() || !description_.find(enumeration, Element::pValue)) return;
  known_[enumeration].clearing = as<IEnumEntry>(entries[0])->IsSelfClearing();
}

void SweepWalk::fetch(NodeIndex index, bool past) {
  if (kRegisterKinds.has(type(index))) return access(index, past);
  if (const Property* source = description_.find(index, Element::pValue)) value(source->target, past);
  if (hasFormulas(type(index))) {
    const Property* source = description_.find(index, Element::pValue);
    return convert(index, source ? integer(source->target) : 0, source ? real(source->target) : 0);
  }
  if (!description_.find(index, Element::pIndex)) return;
  link(index, Element::pIndex);
  const Property* chosen = cell(index);
  if (!chosen) throw Stop{};
  const bool isLink = chosen->element == Element::pValueIndexed || chosen->element == Element::pValueDefault;
  if (isLink) value(chosen->target, past);
}

void SweepWalk::access(NodeIndex index, bool past) {
  length(index);
  auto* source = as<IRegister>(index);
  const int64_t bytes = answered<Stop>([&] { return source->GetLength(); });
  const bool isNumber = as<IInteger>(index) || as<IFloat>(index);
  if (isNumber && bytes > 8) throw Stop{};
  const auto all = description_.properties(index);
  for (size_t i = 0; i < all.size(); ++i) {
    const Element element = all[i].element;
    const bool isPart = element == Element::pAddress || element == Element::IntSwissKnife || element == Element::pIndex;
    if (!isPart && element != Element::pOffset) continue;
    value(all[i].target);
  }
  const int64_t address = answered<Stop>([&] { return source->GetAddress(); });
  const Place place{description_.find(index, Element::pPort)->target, {address, bytes}};
  const bool cached = node(index).GetCachingMode() != NoCache;
  if (cached && !past && remembered_.count(place)) return;
  ++accesses_[place];
  if (cached) remembered_.insert(place);
}

// Reads what a formula turns out to need.
struct SweepWalk::Variables final : formula::VariableSource {
  Variables(SweepWalk& theWalk, NodeIndex node) : walk(theWalk) {
    for (const Property& each : walk.description_.properties(node)) {
      const bool declares = each.element == Element::pVariable || each.element == Element::Constant ||
                            each.element == Element::Expression;
      if (declares) declared.push_back(&each);
    }
  }
  int64_t integerVariable(size_t index) override {
    if (isLimit(index)) return static_cast<int64_t>(limited(index));
    walk.value(declared[index]->target);
    return walk.integer(declared[index]->target);
  }
  double floatVariable(size_t index) override {
    if (isLimit(index)) return limited(index);
    walk.value(declared[index]->target);
    return walk.real(declared[index]->target);
  }
  bool isLimit(size_t index) const {
    const std::string_view name = declared[index]->attribute();
    return name.ends_with(".Min") || name.ends_with(".Max");
  }
  double limited(size_t index) {
    const bool upper = declared[index]->attribute().ends_with(".Max");
    walk.limit(declared[index]->target, upper);
    return walk.limitOf(declared[index]->target, upper);
  }

  SweepWalk& walk;
  std::vector<const Property*> declared;
};

void SweepWalk::convert(NodeIndex index, int64_t integer, double real) {
  Variables variables(*this, index);
  const formula::FormulaProgram& program = FormulaSet::of(description_, index).value();
  const bool whole = type(index) == NodeType::IntSwissKnife || type(index) == NodeType::IntConverter;
  answered<Stop>([&] {
    return whole ? program.evaluateInteger(variables, integer) : (program.evaluateFloat(variables, real), 0);
  });
}

void SweepWalk::limit(NodeIndex index, bool upper) {
  bool& known = upper ? known_[index].max : known_[index].min;
  if (known) return;
  const Property* source = description_.find(index, Element::pValue);
  if (kRegisterKinds.has(type(index))) {
    length(index);
  } else if (hasFormulas(type(index))) {
    const Property* given = description_.find(index, Element::Slope);
    const int slope = given ? static_cast<int>(given->word) : static_cast<int>(Automatic);
    if (source && slope != Varying && hasLimits(source->target)) {
      limit(source->target, false);
      limit(source->target, true);
      try {
        for (const bool end : {false, true}) {
          if (slope != Automatic && ((slope == Increasing) == upper) != end) continue;
          const double at = limitOf(source->target, end);
          auto* number = as<IInteger>(source->target);
          convert(index, number ? (end ? number->GetMax() : number->GetMin()) : static_cast<int64_t>(at), at);
        }
      } catch (const Stop&) {  // no end of the range, then
      }
    }
  } else if (type(index) == NodeType::Integer || type(index) == NodeType::Float) {
    const Property* own = description_.find(index, upper ? Element::pMax : Element::pMin);
    if (own) {
      mode(own->target);
      if (!readable(own->target)) throw Stop{};
      value(own->target);
    } else if (!description_.find(index, upper ? Element::Max : Element::Min)) {
      if (description_.find(index, Element::pIndex)) {
        link(index, Element::pIndex);
        const Property* chosen = cell(index);
        const bool isLink =
            chosen && (chosen->element == Element::pValueIndexed || chosen->element == Element::pValueDefault);
        if (isLink && hasLimits(chosen->target)) limit(chosen->target, upper);
      }
      for (const Property& each : description_.properties(index)) {
        const bool counts = each.element == Element::pValue || each.element == Element::pValueCopy;
        if (counts && hasLimits(each.target)) limit(each.target, upper);
      }
    }
  }
  limitOf(index, upper);
  known = node(index).GetCachingMode() != NoCache;
}
