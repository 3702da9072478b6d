// What integer and float nodes have in common: a value between limits, computed and stored by the node's type.
#pragma once
#include <algorithm>
#include <limits>
#include <vector>

#include "GenApi/IFloat.h"
#include "GenApi/IInteger.h"
#include "formula/FormulaProgram.h"
#include "nodes/ValueNode.h"

namespace GENAPI_NAMESPACE {

// The two kinds of numbers, by one set of names.
template <class Number>
struct NumberTraits;

template <>
struct NumberTraits<int64_t> {
  using Interface = IInteger;
  static int64_t constant(const Property& from) { return from.integer; }
  static int64_t constant(const Slot& from) { return from.integer; }
  static int64_t& of(Slot& slot) { return slot.integer; }
  static int64_t read(const NodeBase& from, Reading how) { return from.readInteger(how); }
  static void write(const NodeBase& to, int64_t value, bool verify) { to.writeInteger(value, verify); }
  static int64_t min(const NodeBase& of) { return of.integerMin(); }
  static int64_t max(const NodeBase& of) { return of.integerMax(); }
  static int64_t increment(const NodeBase& of) { return of.integerIncrement(); }
  static std::vector<int64_t> valueSet(const NodeBase& of, bool bounded) { return of.integerValueSet(bounded); }
  static int64_t evaluate(const formula::FormulaProgram& program, formula::VariableSource& source, int64_t argument) {
    return program.evaluateInteger(source, argument);
  }
};

template <>
struct NumberTraits<double> {
  using Interface = IFloat;
  static double constant(const Property& from) { return from.real; }
  static double constant(const Slot& from) { return from.real; }
  static double& of(Slot& slot) { return slot.real; }
  static double read(const NodeBase& from, Reading how) { return from.readFloat(how); }
  static void write(const NodeBase& to, double value, bool verify) { to.writeFloat(value, verify); }
  static double min(const NodeBase& of) { return of.floatMin(); }
  static double max(const NodeBase& of) { return of.floatMax(); }
  static double increment(const NodeBase& of) { return of.floatIncrement(); }
  static std::vector<double> valueSet(const NodeBase& of, bool bounded) { return of.floatValueSet(bounded); }
  static double evaluate(const formula::FormulaProgram& program, formula::VariableSource& source, double argument) {
    return program.evaluateFloat(source, argument);
  }
};

template <class Number>
class NumberBase : public ValueNode<typename NumberTraits<Number>::Interface> {
 public:
  using Traits = NumberTraits<Number>;
  using ValueNode<typename Traits::Interface>::ValueNode;
  using NumberType = Number;
  static constexpr Number kLowest = std::numeric_limits<Number>::lowest();
  static constexpr Number kHighest = std::numeric_limits<Number>::max();

  // IInteger, IFloat
  void SetValue(Number Value, bool Verify) override {
    this->writing(Verify, [&] { writeNumber(Value, Verify); });
  }
  Number GetValue(bool Verify, bool IgnoreCache) override {
    return this->reading([&] { return readNumber({.verify = Verify, .ignoreCache = IgnoreCache}); });
  }
  Number GetMin() override {
    return this->asking([this] { return minimum(); });
  }
  Number GetMax() override {
    return this->asking([this] { return maximum(); });
  }
  Number GetInc() override {
    return this->asking([this] { return computeIncrement(); });
  }
  EIncMode GetIncMode() override {
    return this->asking([this] {
      if (this->hasValueSet()) return listIncrement;
      return this->hasFloatIncrement() ? fixedIncrement : noIncrement;
    });
  }
  const autovector<Number> GetListOfValidValues(bool bounded) override {
    return this->asking([&] { return autovector<Number>(Traits::valueSet(*this, bounded)); });
  }
  ERepresentation GetRepresentation() override {
    return this->asking([this] { return this->representation(); });
  }
  void ImposeMin(Number Value) override {
    this->impose([&](Imposed& imposed) {
      imposed.hasMin = true;
      Traits::of(imposed.min) = Value;
    });
  }
  void ImposeMax(Number Value) override {
    this->impose([&](Imposed& imposed) {
      imposed.hasMax = true;
      Traits::of(imposed.max) = Value;
    });
  }

  bool hasLimits() const override { return true; }

 protected:
  // The value from where it comes.
  virtual Number compute(Reading how) const = 0;
  // The value to where it goes; checked already.
  virtual void store(Number value, bool verify) const = 0;
  // Limits before anything imposed from outside.
  virtual Number computeMin() const { return kLowest; }
  virtual Number computeMax() const { return kHighest; }
  virtual Number computeIncrement() const = 0;
  // Whether there is an increment; integers have one in any case.
  virtual bool hasIncrement() const { return false; }
  // The valid value set, empty without one; bounded: only members inside the limits.
  virtual std::vector<Number> valueSet(bool) const { return {}; }
  // Throws OutOfRangeException for a value that the limits do not allow.
  virtual void check(Number value) const = 0;

  Number readNumber(Reading how) const {
    const Number number =
        this->evaluation().template answer<kValue, Number>(this->index(), how.ignoreCache, [this, how] {
          this->requireSound();
          return compute(how);
        });
    if (how.verify) check(number);
    return number;
  }
  void writeNumber(Number number, bool verify) const {
    this->write(
        verify, [&] { check(number); }, [&] { store(number, verify); });
  }
  Number minimum() const {
    return this->evaluation().template answer<kMin, Number, Lowest>(this->index(), false, [this] { return ownMin(); });
  }
  Number maximum() const {
    return this->evaluation().template answer<kMax, Number, Highest>(this->index(), false, [this] { return ownMax(); });
  }
  std::vector<Number> withinLimits(std::vector<Number> values) const {
    const Number min = minimum();
    const Number max = maximum();
    std::erase_if(values, [&](Number each) { return !(each >= min && each <= max); });
    return values;
  }

 private:
  // Two features may limit each other: from one that is being computed comes no restriction.
  struct Lowest {
    static constexpr Number kAnswer = kLowest;
  };
  struct Highest {
    static constexpr Number kAnswer = kHighest;
  };
  Number ownMin() const {
    this->requireSound();
    const Number own = computeMin();
    const Imposed* imposed = this->device().imposed(this->index());
    return imposed && imposed->hasMin ? std::max(own, Traits::constant(imposed->min)) : own;
  }
  Number ownMax() const {
    this->requireSound();
    const Number own = computeMax();
    const Imposed* imposed = this->device().imposed(this->index());
    return imposed && imposed->hasMax ? std::min(own, Traits::constant(imposed->max)) : own;
  }
};

}  // namespace GENAPI_NAMESPACE
