#include "nodes/NumberNode.h"

#include "Base/GCException.h"

namespace GENAPI_NAMESPACE {

template <class Face, class Number>
const Property* NumberNode<Face, Number>::selected() {
  const int64_t wanted = at(link_).readInteger({});
  const auto all = this->properties();
  const Property* byDefault = nullptr;
  for (size_t i = 0; i < all.size(); ++i) {
    const Property& each = all[i];
    if (each.element == Element::ValueDefault || each.element == Element::pValueDefault) {
      byDefault = &each;
    } else if ((each.element == Element::ValueIndexed || each.element == Element::pValueIndexed) &&
               i + 1 < all.size() && all[i + 1].element == Element::Index && all[i + 1].integer == wanted) {
      return &each;
    }
  }
  return byDefault;
}

template <class Face, class Number>
Number NumberNode<Face, Number>::fetch(Reading how) {
  const Reading ofSource{.ignoreCache = how.ignoreCache, .asSource = true};
  switch (form_) {
    case Form::Held:
      return held_;
    case Form::Forwarder:
      return numberOf(at(link_), ofSource);
    case Form::Table:
      break;
  }
  const Property* cell = selected();
  if (!cell) throw OUT_OF_RANGE_EXCEPTION("%s: the index selects no value", this->map().pathTo(*this).c_str());
  if (isLink(*cell)) return numberOf(at(cell->target), ofSource);
  if (cells_) {
    const auto written = cells_->find(cell);
    if (written != cells_->end()) return written->second;
  }
  return constant(*cell);
}

template <class Face, class Number>
void NumberNode<Face, Number>::store(Number value, bool verify) {
  if (form_ == Form::Held) {
    held_ = value;
    return;
  }
  if (form_ == Form::Forwarder) {
    if (!hasCopies_) return writeTo(at(link_), value, verify);
    forEachTarget([&](const Property& each) { writeTo(at(each.target), value, verify); });
    return;
  }
  const Property* cell = selected();
  if (!cell) throw OUT_OF_RANGE_EXCEPTION("%s: the index selects no value", this->map().pathTo(*this).c_str());
  if (isLink(*cell)) return writeTo(at(cell->target), value, verify);
  if (!cells_) cells_ = std::make_unique<std::map<const Property*, Number>>();
  (*cells_)[cell] = value;
}

template <class Face, class Number>
bool NumberNode<Face, Number>::copiesAgreeOnIncrement() {
  std::optional<int64_t> first;
  bool agree = true;
  forEachTarget([&](const Property& each) {
    const int64_t increment = this->ask(at(each.target), [](NodeBase& target) { return target.integerIncrement(); });
    if (!first) first = increment;
    agree = agree && increment == *first;
  });
  return agree;
}

template <class Face, class Number>
EAccessMode NumberNode<Face, Number>::typeMode() {
  if (form_ == Form::Held) return RW;
  if (form_ == Form::Table) {
    if (!IsReadable(at(link_).accessMode())) return NA;
    const Property* cell = selected();
    return cell && isLink(*cell) ? at(cell->target).accessMode() : RW;
  }
  EAccessMode mode = at(link_).accessMode();
  if (!hasCopies_) return mode;
  forEachTarget([&](const Property& each) {
    if (each.element != Element::pValueCopy) return;
    const EAccessMode copy = at(each.target).accessMode();
    // Whether a copy can be read does not matter: nobody reads it.
    mode = Combine(mode, copy == WO ? RW : copy);
  });
  if (IsWritable(mode) && !copiesAgreeOnIncrement()) mode = mode == RW ? RO : NA;
  return mode;
}

template <class Face, class Number>
Number NumberNode<Face, Number>::fetchMin() {
  if (const Property* own = this->find(Element::Min)) return constant(*own);
  if (const Property* link = this->find(Element::pMin)) return linkedNumber(*link);
  if (form_ == Form::Forwarder && hasCopies_) {
    Number highest = kLowest;
    forEachTarget([&](const Property& each) {
      NodeBase& target = at(each.target);
      if (target.hasLimits()) highest = std::max(highest, minOf(target));
    });
    return highest;
  }
  NodeBase* from = source();
  return from && from->hasLimits() ? minOf(*from) : kLowest;
}

template <class Face, class Number>
Number NumberNode<Face, Number>::fetchMax() {
  if (const Property* own = this->find(Element::Max)) return constant(*own);
  if (const Property* link = this->find(Element::pMax)) return linkedNumber(*link);
  if (form_ == Form::Forwarder && hasCopies_) {
    Number lowest = kHighest;
    forEachTarget([&](const Property& each) {
      NodeBase& target = at(each.target);
      if (target.hasLimits()) lowest = std::min(lowest, maxOf(target));
    });
    return lowest;
  }
  NodeBase* from = source();
  return from && from->hasLimits() ? maxOf(*from) : kHighest;
}

template <class Face, class Number>
int64_t NumberNode<Face, Number>::integerIncrement() {
  if constexpr (!kIsInteger) {
    return Face::integerIncrement();
  } else {
    if (const Property* own = this->find(Element::Inc)) return own->integer;
    if (const Property* link = this->find(Element::pInc)) return linkedNumber(*link);
    return ofSource(int64_t{1}, [](NodeBase& from) { return from.integerIncrement(); });
  }
}

template <class Face, class Number>
bool NumberNode<Face, Number>::hasFloatIncrement() {
  if constexpr (kIsInteger) {
    return true;
  } else {
    if (this->find(Element::Inc) || this->find(Element::pInc)) return true;
    return ofSource(false, [](NodeBase& from) { return from.hasFloatIncrement(); });
  }
}

template <class Face, class Number>
double NumberNode<Face, Number>::floatIncrement() {
  if constexpr (kIsInteger) {
    return static_cast<double>(integerIncrement());
  } else {
    if (const Property* own = this->find(Element::Inc)) return own->real;
    if (const Property* link = this->find(Element::pInc)) return linkedNumber(*link);
    NodeBase* from = source();
    return from ? this->ask(*from, [](NodeBase& other) { return other.floatIncrement(); }) : NodeBase::floatIncrement();
  }
}

namespace {
// "1;5;10": the loader has checked the numbers.
std::vector<int64_t> listedNumbers(std::string_view text) {
  std::vector<int64_t> values;
  while (!text.empty()) {
    const size_t end = std::min(text.find(';'), text.size());
    if (const auto number = text::parseInteger(text.substr(0, end))) values.push_back(*number);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return values;
}
}  // namespace

template <class Face, class Number>
bool NumberNode<Face, Number>::hasValueSet() {
  if (this->find(Element::ValidValueSet)) return true;
  if (form_ == Form::Held) return false;
  return ofSource(false, [](NodeBase& from) { return from.hasValueSet(); });
}

template <class Face, class Number>
std::vector<int64_t> NumberNode<Face, Number>::integerValueSet(bool bounded) {
  if constexpr (!kIsInteger) {
    return Face::integerValueSet(bounded);
  } else {
    std::vector<int64_t> values;
    if (const Property* own = this->find(Element::ValidValueSet)) {
      values = listedNumbers(own->value());
    } else {
      values = ofSource(std::move(values), [&](NodeBase& from) { return from.integerValueSet(bounded); });
    }
    return bounded && !values.empty() ? this->withinLimits(std::move(values)) : values;
  }
}

template <class Face, class Number>
std::vector<double> NumberNode<Face, Number>::floatValueSet(bool bounded) {
  if constexpr (kIsInteger) {
    return Face::floatValueSet(bounded);
  } else {
    std::vector<double> values =
        ofSource(std::vector<double>(), [&](NodeBase& from) { return from.floatValueSet(bounded); });
    return bounded && !values.empty() ? this->withinLimits(std::move(values)) : values;
  }
}

template <class Face, class Number>
std::string_view NumberNode<Face, Number>::unit() {
  if (const Property* own = this->find(Element::Unit)) return own->value();
  return shownBySource(std::string_view(), [](NodeBase& from) { return from.unit(); });
}

template <class Face, class Number>
ERepresentation NumberNode<Face, Number>::representation() {
  if (const Property* own = this->find(Element::Representation)) return static_cast<ERepresentation>(own->word);
  return shownBySource(PureNumber, [](NodeBase& from) { return from.representation(); });
}

template <class Face, class Number>
EDisplayNotation NumberNode<Face, Number>::displayNotation() {
  if (const Property* own = this->find(Element::DisplayNotation)) return static_cast<EDisplayNotation>(own->word);
  return shownBySource(fnAutomatic, [](NodeBase& from) { return from.displayNotation(); });
}

template <class Face, class Number>
int64_t NumberNode<Face, Number>::displayPrecision() {
  if (const Property* own = this->find(Element::DisplayPrecision)) return own->integer;
  return shownBySource(int64_t{6}, [](NodeBase& from) { return from.displayPrecision(); });
}

template class NumberNode<IntegerFace, int64_t>;
template class NumberNode<FloatFace, double>;

}  // namespace GENAPI_NAMESPACE
