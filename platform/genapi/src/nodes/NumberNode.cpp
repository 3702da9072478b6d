#include "nodes/NumberNode.h"

#include <algorithm>
#include <optional>

#include "text/NumberSyntax.h"

namespace GENAPI_NAMESPACE {

template <class Base>
NumberNode<Base>::NumberNode(Device& device, NodeIndex index)
    : Base(device, index),
      constant_(this->find(Element::Value)),
      link_(this->target(Element::pValue)),
      hasCopies_(this->find(Element::pValueCopy)),
      hasOwnSet_(this->find(Element::ValidValueSet)),
      hasOwnIncrement_(this->find(Element::Inc) || this->find(Element::pInc)) {
  if (link_ != kNoNode)
    form_ = Form::Forwarder;
  else if (link_ = this->target(Element::pIndex); link_ != kNoNode)
    form_ = Form::Table;
}

template <class Base>
const Property* NumberNode<Base>::selected() const {
  const int64_t wanted = this->other(link_).readInteger({});
  const auto all = this->properties();
  const Property* byDefault = nullptr;
  for (size_t i = 0; i < all.size(); ++i) {
    const Property& each = all[i];
    if (each.element == Element::ValueDefault || each.element == Element::pValueDefault)
      byDefault = &each;
    else if ((each.element == Element::ValueIndexed || each.element == Element::pValueIndexed) && i + 1 < all.size() &&
             all[i + 1].element == Element::Index && all[i + 1].integer == wanted)
      return &each;
  }
  return byDefault;
}

template <class Base>
const Property& NumberNode<Base>::requireSelected() const {
  const Property* cell = selected();
  if (!cell) refuse<OutOfRangeException>("{}: the index selects no value", this->path());
  return *cell;
}

template <class Base>
const NodeBase* NumberNode<Base>::valueSource() const {
  if (form_ == Form::Held) return nullptr;
  if (form_ == Form::Forwarder) return &this->other(link_);
  const Property* cell = selected();
  return cell && isLink(*cell) ? &this->other(cell->target) : nullptr;
}

template <class Base>
template <class Visit>
void NumberNode<Base>::forEachTarget(Visit&& visit) const {
  for (const Property& each : this->properties())
    if (each.element == Element::pValue || each.element == Element::pValueCopy) visit(each, this->other(each.target));
}

template <class Base>
auto NumberNode<Base>::compute(Reading how) const -> Number {
  const Reading ofSource{.ignoreCache = how.ignoreCache, .asSource = true};
  if (form_ == Form::Held)
    return this->evaluation().heldValue(this->index(), constant_ ? Traits::constant(*constant_) : Number{});
  if (form_ == Form::Forwarder) return Traits::read(this->other(link_), ofSource);
  const Property& cell = requireSelected();
  if (isLink(cell)) return Traits::read(this->other(cell.target), ofSource);
  auto& cells = this->device().state.cells;
  const auto written = cells.find(&cell);
  return written != cells.end() ? Traits::constant(written->second) : Traits::constant(cell);
}

template <class Base>
void NumberNode<Base>::store(Number value, bool verify) const {
  if (form_ == Form::Held) return this->evaluation().holdValue(this->index(), value);
  if (form_ == Form::Forwarder) {
    if (!hasCopies_) return Traits::write(this->other(link_), value, verify);
    return forEachTarget([&](const Property&, NodeBase& target) { Traits::write(target, value, verify); });
  }
  const Property& cell = requireSelected();
  if (isLink(cell)) return Traits::write(this->other(cell.target), value, verify);
  Traits::of(this->device().state.cells[&cell]) = value;
}

template <class Base>
bool NumberNode<Base>::copiesAgreeOnIncrement() const {
  std::optional<int64_t> first;
  bool agree = true;
  forEachTarget([&](const Property&, const NodeBase& target) {
    const int64_t increment = this->ask(target, [](const NodeBase& of) { return of.integerIncrement(); });
    if (!first) first = increment;
    agree = agree && increment == *first;
  });
  return agree;
}

template <class Base>
EAccessMode NumberNode<Base>::typeMode() const {
  if (form_ == Form::Held) return RW;
  if (form_ == Form::Table) {
    if (!IsReadable(this->other(link_).accessMode())) return NA;
    const Property* cell = selected();
    return cell && isLink(*cell) ? this->other(cell->target).accessMode() : RW;
  }
  EAccessMode mode = this->other(link_).accessMode();
  if (!hasCopies_) return mode;
  forEachTarget([&](const Property& link, const NodeBase& target) {
    if (link.element != Element::pValueCopy) return;
    const EAccessMode copy = target.accessMode();
    // Whether a copy can be read does not matter: nobody reads it.
    mode = Combine(mode, copy == WO ? RW : copy);
  });
  if (IsWritable(mode) && !copiesAgreeOnIncrement()) mode = mode == RW ? RO : NA;
  return mode;
}

template <class Base>
auto NumberNode<Base>::linkedNumber(const Property& link) const -> Number {
  const NodeBase& target = this->other(link.target);
  target.requireReadable();
  return Traits::read(target, {});
}

template <class Base>
template <class Of, class Narrower>
auto NumberNode<Base>::limit(Element constant, Element link, Number unlimited, Of&& of, Narrower&& narrower) const
    -> Number {
  if (const Property* own = this->find(constant)) return Traits::constant(*own);
  if (const Property* own = this->find(link)) return linkedNumber(*own);
  if (form_ == Form::Forwarder && hasCopies_) {
    Number narrowest = unlimited;
    forEachTarget([&](const Property&, const NodeBase& target) {
      if (target.hasLimits()) narrowest = narrower(narrowest, of(target));
    });
    return narrowest;
  }
  const NodeBase* from = valueSource();
  return from && from->hasLimits() ? of(*from) : unlimited;
}

template <class Base>
auto NumberNode<Base>::computeMin() const -> Number {
  return limit(Element::Min, Element::pMin, Base::kLowest, Traits::min,
               [](Number a, Number b) { return std::max(a, b); });
}

template <class Base>
auto NumberNode<Base>::computeMax() const -> Number {
  return limit(Element::Max, Element::pMax, Base::kHighest, Traits::max,
               [](Number a, Number b) { return std::min(a, b); });
}

template <class Base>
auto NumberNode<Base>::computeIncrement() const -> Number {
  if (hasOwnIncrement_) {
    const Property* const own = this->find(Element::Inc);
    return own ? Traits::constant(*own) : linkedNumber(*this->find(Element::pInc));
  }
  const NodeBase* from = valueSource();
  return from ? this->ask(*from, Traits::increment) : Base::computeIncrement();
}

template <class Base>
bool NumberNode<Base>::hasIncrement() const {
  if (hasOwnIncrement_) return true;
  return this->askSource(false, [](const NodeBase& from) { return from.hasFloatIncrement(); });
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

template <class Base>
bool NumberNode<Base>::hasValueSet() const {
  if (hasOwnSet_) return true;
  return this->askSource(false, [](const NodeBase& from) { return from.hasValueSet(); });
}

template <class Base>
auto NumberNode<Base>::valueSet(bool bounded) const -> std::vector<Number> {
  std::vector<Number> values;
  if (const Property* own = this->find(Element::ValidValueSet)) {
    const std::vector<int64_t> listed = listedNumbers(own->value());
    values.assign(listed.begin(), listed.end());
  } else {
    values = this->askSource(values, [&](const NodeBase& from) { return Traits::valueSet(from, bounded); });
  }
  return bounded && !values.empty() ? this->withinLimits(std::move(values)) : values;
}

template class NumberNode<IntegerBase>;
template class NumberNode<FloatBase>;

}  // namespace GENAPI_NAMESPACE
