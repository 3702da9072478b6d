// Random descriptions: whatever is written, or changes on the device, a map that remembers answers like one that has
// just been made over the same bytes.
#include <algorithm>
#include <random>

#include "TestMap.h"

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr unsigned kDescriptions = 40;
#else
constexpr unsigned kDescriptions = 300;
#endif
constexpr int kBytes = 48;

// Makes the text of a description node by node; links lead to earlier nodes. Nodes that hold a value are constants,
// because nothing but the bytes of the device passes from one map to the other.
class Maker {
 public:
  explicit Maker(unsigned seed) : dice_(seed) {
    for (int i = 0; i < 4; ++i) addRegister(i == 0);
    for (int count = 10 + below(22); count > 0; --count) add();
  }

  int below(int end) { return static_cast<int>(dice_() % static_cast<unsigned>(end)); }
  bool chance(int percent) { return below(100) < percent; }

  std::string xml;
  std::vector<std::string> names;

 private:
  static std::string number(int value) { return std::to_string(value); }
  const std::string& pick(const std::vector<std::string>& from) {
    return from[static_cast<size_t>(below(static_cast<int>(from.size())))];
  }

  // Addresses, lengths and tables are indexed with `small_`, numbers from 0 to 3. Guards and linked limits are
  // `steady_`: they depend on no register that is never remembered.
  std::string begin(const std::string& type) {
    name_ = "N" + number(static_cast<int>(names.size()));
    isSteady_ = true;
    return "<" + type + " Name='" + name_ + "'>";
  }
  std::string link(const std::string& element, const std::string& target) {
    isSteady_ = isSteady_ && std::find(steady_.begin(), steady_.end(), target) != steady_.end();
    return tag(element, target);
  }
  std::string guards() {
    std::string text;
    for (const char* guard : {"pIsImplemented", "pIsAvailable", "pIsLocked"})
      if (chance(6) && !steady_.empty()) text += link(guard, pick(steady_));
    return text;
  }
  void end(const std::string& text, const std::string& type, bool isNumber = true, bool isSmall = false) {
    xml += text + "</" + type + ">";
    names.push_back(name_);
    if (isNumber) numbers_.push_back(name_);
    if (isNumber && isSteady_) steady_.push_back(name_);
    if (isSmall) small_.push_back(name_);
  }

  void addRegister(bool isSmall) {
    static const char* const kTypes[] = {"IntReg", "MaskedIntReg", "FloatReg", "StringReg"};
    const std::string type = isSmall ? "MaskedIntReg" : kTypes[below(4)];
    const int length = type == "FloatReg" ? 4 : type == "StringReg" ? 1 + below(9) : 1 << below(4);
    std::string text = begin(type) + guards() + (chance(15) && !names.empty() ? link("pInvalidator", pick(names)) : "");
    text += tag("Address", number(isSmall ? 0 : below(kBytes - 24)));
    if (!isSmall && chance(25)) text += link("pAddress", pickOr(small_));
    if (!isSmall && chance(25)) {
      text += "<pIndex Offset=\"" + number(below(5)) + "\">" + pickOr(small_) + "</pIndex>";
      link("", pickOr(small_));
    }
    const int caching = below(4);
    const bool isNever = caching == 0;
    text += tag("Length", number(length)) +
            tag("AccessMode", chance(75)   ? "RW"
                              : chance(60) ? "RO"
                                           : "WO") +
            tag("pPort", "Device") +
            tag("Cachable", isNever        ? "NoCache"
                            : caching == 1 ? "WriteAround"
                                           : "WriteThrough");
    if (isNever) isSteady_ = false;
    if (type == "MaskedIntReg") {
      const int low = isSmall ? 0 : below(8 * length), high = isSmall ? 1 : low + below(8 * length - low);
      text += tag("LSB", number(low)) + tag("MSB", number(high)) +
              tag("Sign", isSmall || chance(60) ? "Unsigned" : "Signed");
    }
    if (type == "IntReg") text += tag("Sign", chance(60) ? "Unsigned" : "Signed");
    if (type == "IntReg" || type == "FloatReg") text += tag("Endianess", chance(50) ? "BigEndian" : "LittleEndian");
    end(text, type, type != "StringReg", isSmall);
  }
  const std::string& pickOr(const std::vector<std::string>& from) { return pick(from.empty() ? names : from); }

  void add() {
    const int kind = below(12);
    if (kind < 4) return addRegister(kind == 0);
    if (kind < 8) return addNumber(kind < 6 ? "Integer" : "Float");
    if (kind < 9) return addEntries();
    addFormula(kind == 9 ? "IntSwissKnife" : kind == 10 ? "IntConverter" : "Converter");
  }
  void addNumber(const std::string& type) {
    std::string text = begin(type) + guards();
    const int form = below(10);
    if (form == 0) {
      text += tag("ImposedAccessMode", "RO") + tag("Value", number(below(9)));
    } else if (form < 3) {
      text += link("pIndex", pickOr(small_));
      for (int index = 0; index < 3; ++index)
        text += "<pValueIndexed Index=\"" + number(index) + "\">" + pick(numbers_) + "</pValueIndexed>";
      text += tag("pValueDefault", pick(numbers_));
      isSteady_ = false;
    } else {
      text += link("pValue", pick(numbers_));
      if (type == "Integer" && chance(20)) text += link("pValueCopy", pick(numbers_));
    }
    if (chance(20))
      text += tag("Min", number(below(9) - 9));
    else if (chance(20) && !steady_.empty())
      text += link("pMin", pick(steady_));
    if (chance(20))
      text += tag("Max", number(below(200)));
    else if (chance(20) && !steady_.empty())
      text += link("pMax", pick(steady_));
    if (type == "Integer" && chance(15)) text += tag("Inc", number(1 + below(3)));
    end(text, type);
  }
  void addEntries() {
    std::string text = begin("Enumeration");
    for (int value = 0; value < 3; ++value) {
      text += "<EnumEntry Name='E" + number(value) + "'>" +
              (chance(40) && !steady_.empty() ? link("pIsAvailable", pick(steady_)) : "") +
              tag("Value", number(value)) + "</EnumEntry>";
    }
    end(text + link("pValue", pickOr(small_)), "Enumeration");
  }
  void addFormula(const std::string& type) {
    std::string text = begin(type) + guards();
    for (const char* variable : {"A", "B"}) {
      const std::string& source = pick(numbers_);
      link("", source);
      text += "<pVariable Name='" + std::string(variable) + "'>" + source + "</pVariable>";
    }
    static const char* const kFormulas[] = {"X + A", "X - B", "A > B ? X : A", "X * 2 + A % 7", "(A &amp; 3) + X"};
    std::string formula = kFormulas[below(5)];
    const bool converts = type != "IntSwissKnife";
    const auto of = [&](const std::string& x) {
      std::string made = formula;
      made.replace(made.find('X'), 1, x);
      return made;
    };
    if (converts)
      text += tag("FormulaTo", of("FROM")) + tag("FormulaFrom", of("TO")) + link("pValue", pick(numbers_));
    else
      text += tag("Formula", of("B"));
    end(text, type);
  }

  std::mt19937 dice_;
  std::string name_;
  bool isSteady_ = true;
  std::vector<std::string> numbers_, small_, steady_;
};

template <class Question>
std::string answer(Question&& question) {
  try {
    return question();
  } catch (const AccessException&) {
    return "no access";
  } catch (const OutOfRangeException&) {
    return "out of range";
  } catch (const GenericException&) {
    return "refused";
  }
}

// Everything a node says that depends on the device.
std::string answers(INode* node) {
  const auto text = [](auto number) { return std::to_string(number); };
  std::string all = answer([&] { return std::string(EAccessModeClass::ToString(node->GetAccessMode()).c_str()); });
  all += ", value " + answer([&] { return std::string(dynamic_cast<IValue&>(*node).ToString().c_str()); });
  const auto limits = [&](auto* number) {
    all += ", Min " + answer([&] { return text(number->GetMin()); });
    all += ", Max " + answer([&] { return text(number->GetMax()); });
    all += ", verified " + answer([&] { return text(number->GetValue(true)); });
  };
  if (auto* integer = dynamic_cast<IInteger*>(node)) limits(integer);
  if (auto* real = dynamic_cast<IFloat*>(node)) limits(real);
  return all;
}

class Trial {
 public:
  explicit Trial(unsigned seed) : made_(seed), map_(made_.xml), trail_("description " + std::to_string(seed)) {
    map_.port.memory.resize(kBytes);
    for (uint8_t& byte : map_.port.memory)
      byte = static_cast<uint8_t>(made_.chance(60) ? made_.below(4) : made_.below(256));
  }

  // False after a difference, which is reported.
  bool run() {
    for (int step = 0; step < 30; ++step) {
      made_.chance(60) ? write() : poke();
      const TestMap fresh(made_.xml);
      const_cast<TestMap&>(fresh).port.memory = map_.port.memory;
      const bool all = step % 6 == 5;
      for (size_t i = 0; i < (all ? made_.names.size() : 4); ++i) {
        const std::string name = all ? made_.names[i] : any();
        const std::string expected = answers(fresh.node(name)), actual = answers(map_.node(name));
        if (actual == expected) continue;
        ADD_FAILURE() << trail_ << ": " << name << " says " << actual << ", not " << expected << "\n" << made_.xml;
        return false;
      }
    }
    return true;
  }

 private:
  std::string any() { return made_.names[static_cast<size_t>(made_.below(static_cast<int>(made_.names.size())))]; }

  void write() {
    const std::string name = any();
    INode* node = map_.node(name);
    const int value = made_.below(60) - 8;
    trail_ += ", " + name + " := " + std::to_string(value);
    answer([&] {
      if (auto* integer = dynamic_cast<IInteger*>(node)) integer->SetValue(value);
      if (auto* real = dynamic_cast<IFloat*>(node)) real->SetValue(value / 4.0);
      if (auto* entries = dynamic_cast<IEnumeration*>(node)) entries->SetIntValue(value & 3);
      if (auto* text = dynamic_cast<IString*>(node))
        text->SetValue(std::string(static_cast<size_t>(value & 7), 'x').c_str());
      return "";
    });
  }

  // Changes bytes behind the map's back and invalidates the registers that hold one of them.
  void poke() {
    const int first = made_.below(kBytes - 4), length = 1 + made_.below(4);
    std::vector<INode*> concerned;
    for (const std::string& name : made_.names) {
      auto* place = dynamic_cast<IRegister*>(map_.node(name));
      if (!place) continue;
      answer([&] {
        const int64_t address = place->GetAddress();
        if (address < first + length && first < address + place->GetLength()) concerned.push_back(map_.node(name));
        return "";
      });
    }
    for (int i = first; i < first + length; ++i)
      map_.port.memory[static_cast<size_t>(i)] = static_cast<uint8_t>(made_.below(256));
    trail_ += ", bytes " + std::to_string(first) + " to " + std::to_string(first + length - 1);
    for (INode* each : concerned) each->InvalidateNode();
  }

  Maker made_;
  TestMap map_;
  std::string trail_;
};

TEST(Random, MapsThatRememberAnswerLikeNewOnes) {
  int faults = 0;
  for (unsigned seed = 0; seed < kDescriptions && faults < 3; ++seed) faults += !Trial(seed).run();
}

}  // namespace
