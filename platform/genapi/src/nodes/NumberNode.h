// Integer and Float: nodes that hold a number, forward to another node, or choose from a table by an index.
#pragma once
#include <algorithm>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <type_traits>
#include <vector>

#include "nodes/FloatFace.h"
#include "nodes/IntegerFace.h"
#include "text/NumberSyntax.h"

namespace GENAPI_NAMESPACE {

template <class Face, class Number>
class NumberNode final : public Face {
  static constexpr bool kIsInteger = std::is_integral_v<Number>;

 public:
  NumberNode(NodeMap& map, NodeIndex index) : Face(map, index) {
    for (const Property& each : this->properties()) {
      switch (each.element) {
        case Element::Value:
          held_ = constant(each);
          break;
        case Element::pValue:
          form_ = Form::Forwarder;
          link_ = each.target;
          break;
        case Element::pIndex:
          form_ = Form::Table;
          link_ = each.target;
          break;
        case Element::pValueCopy:
          hasCopies_ = true;
          break;
        default:
          break;
      }
    }
  }

  EAccessMode typeMode() override;
  int64_t integerIncrement() override;
  bool hasFloatIncrement() override;
  double floatIncrement() override;
  bool hasValueSet() override;
  std::vector<int64_t> integerValueSet(bool bounded) override;
  std::vector<double> floatValueSet(bool bounded) override;
  std::string_view unit() override;
  ERepresentation representation() override;
  EDisplayNotation displayNotation() override;
  int64_t displayPrecision() override;

 protected:
  Number fetch(Reading how) override;
  void store(Number value, bool verify) override;
  Number fetchMin() override;
  Number fetchMax() override;
  bool isFloating() const override { return form_ == Form::Held; }

 private:
  enum class Form : uint8_t { Held, Forwarder, Table };

  static Number constant(const Property& property) {
    if constexpr (kIsInteger) {
      return property.integer;
    } else {
      return property.real;
    }
  }
  static bool isLink(const Property& property) {
    return property.element == Element::pValueIndexed || property.element == Element::pValueDefault;
  }
  NodeBase& at(NodeIndex index) const { return this->map().node(index); }
  static Number numberOf(NodeBase& source, Reading how) {
    if constexpr (kIsInteger) {
      return source.readInteger(how);
    } else {
      return source.readFloat(how);
    }
  }
  static void writeTo(NodeBase& target, Number value, bool verify) {
    if constexpr (kIsInteger) {
      target.writeInteger(value, verify);
    } else {
      target.writeFloat(value, verify);
    }
  }
  static Number minOf(NodeBase& source) {
    if constexpr (kIsInteger) {
      return source.integerMin();
    } else {
      return source.floatMin();
    }
  }
  static Number maxOf(NodeBase& source) {
    if constexpr (kIsInteger) {
      return source.integerMax();
    } else {
      return source.floatMax();
    }
  }
  static constexpr Number kLowest = std::numeric_limits<Number>::lowest();
  static constexpr Number kHighest = std::numeric_limits<Number>::max();

  // The table's constant or link that the index selects now; null when the table has no default and no such entry.
  const Property* selected();
  // The node that the value comes from now; null for constants.
  NodeBase* source() {
    if (form_ == Form::Held) return nullptr;
    if (form_ == Form::Forwarder) return &at(link_);
    const Property* cell = selected();
    return cell && isLink(*cell) ? &at(cell->target) : nullptr;
  }
  // The source's answer to a question; `otherwise` where the value is the node's own.
  template <class Result, class Question>
  Result ofSource(Result otherwise, Question&& question) {
    NodeBase* from = source();
    return from ? this->ask(*from, question) : otherwise;
  }
  // The same for how values are shown: a table whose cells agree tells it without reading its index.
  template <class Result, class Question>
  Result shownBySource(Result otherwise, Question&& question) {
    if (form_ != Form::Table) return ofSource(otherwise, question);
    std::optional<Result> first;
    for (const Property& each : this->properties()) {
      const bool isCell =
          isLink(each) || each.element == Element::ValueIndexed || each.element == Element::ValueDefault;
      if (!isCell) continue;
      const Result answer = isLink(each) ? this->ask(at(each.target), question) : otherwise;
      if (first && *first != answer) return ofSource(otherwise, question);
      first = answer;
    }
    return first.value_or(otherwise);
  }
  // A number that the node's own link gives: limits and increments.
  Number linkedNumber(const Property& link) {
    NodeBase& target = at(link.target);
    target.requireReadable();
    return numberOf(target, {});
  }
  // Calls visit for pValue and the copies, in XML order.
  template <class Visit>
  void forEachTarget(Visit&& visit) {
    for (const Property& each : this->properties()) {
      if (each.element == Element::pValue || each.element == Element::pValueCopy) visit(each);
    }
  }
  bool copiesAgreeOnIncrement();

  Number held_{};
  NodeIndex link_ = kNoNode;  // pValue, or pIndex of a table
  Form form_ = Form::Held;
  bool hasCopies_ = false;
  // Constants of the table that were written, by the address of their property.
  std::unique_ptr<std::map<const Property*, Number>> cells_;
};

using IntegerNode = NumberNode<IntegerFace, int64_t>;
using FloatNode = NumberNode<FloatFace, double>;

extern template class NumberNode<IntegerFace, int64_t>;
extern template class NumberNode<FloatFace, double>;

}  // namespace GENAPI_NAMESPACE
