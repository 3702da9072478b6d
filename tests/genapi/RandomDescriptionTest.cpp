// Random descriptions: after random writes and changes of the device, every node must answer what the reference
// evaluator makes of the bytes.
#include <algorithm>

#include "ReferenceEvaluator.h"
#include "TestMap.h"

using namespace randomly;

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr uint64_t kDescriptions = 60;
#else
constexpr uint64_t kDescriptions = 1000;
#endif

std::string shown(int64_t value) {
  return std::to_string(value);
}
std::string shown(double value) {
  if (value != value) return "nan";
  char text[40];
  std::snprintf(text, sizeof(text), "%.17g", value);
  return text;
}
std::string shown(bool value) {
  return value ? "true" : "false";
}
std::string shown(const std::string& value) {
  return "'" + value + "'";
}
std::string shown(EAccessMode mode) {
  return EAccessModeClass::ToString(mode).c_str();
}
template <class List>
std::string shown(const List& values) {
  std::string all;
  for (size_t i = 0; i < values.size(); ++i) all += shown(values[i]) + ";";
  return all;
}

// What came of it, or the class of the refusal.
template <class Question>
std::string outcome(Question&& question) {
  static const char* const kRefusals[] = {"AccessException", "OutOfRangeException", "InvalidArgumentException",
                                          "LogicalErrorException", "RuntimeException"};
  try {
    if constexpr (std::is_void_v<decltype(question())>) {
      question();
      return "done";
    } else {
      return shown(question());
    }
  } catch (const Refused& refused) {
    return kRefusals[static_cast<size_t>(refused.why)];
  } catch (const AccessException&) {
    return kRefusals[0];
  } catch (const OutOfRangeException&) {
    return kRefusals[1];
  } catch (const InvalidArgumentException&) {
    return kRefusals[2];
  } catch (const LogicalErrorException&) {
    return kRefusals[3];
  } catch (const RuntimeException&) {
    return kRefusals[4];
  }
}

class Duel {
 public:
  explicit Duel(uint64_t seed)
      : dice_(seed + 1000000),
        model_(seed),
        map_(model_.xml, model_.schemaMinor),
        reference_(model_.nodes),
        caching_(cachingModesOf(model_.nodes)),
        trail_("description " + std::to_string(seed)) {
    map_.map->Connect(&other_, "Other");
    for (int port = 0; port < kPorts; ++port) {
      memory(port).resize(kPortBytes);
      for (uint8_t& byte : memory(port)) byte = dice_.chance(40) ? 0 : static_cast<uint8_t>(dice_.bits());
      reference_.memory[static_cast<size_t>(port)] = memory(port);
    }
    for (const Node& node : model_.nodes) engine_.push_back(map_.node(node.name));
    for (size_t i = 0; i < engine_.size(); ++i) {
      same(static_cast<int>(i), "caching mode", ECachingModeClass::ToString(engine_[i]->GetCachingMode()).c_str(),
           ECachingModeClass::ToString(caching_[i]).c_str());
    }
  }

  // False after a difference, which is reported.
  bool run() {
    for (int step = 0; step < 40 && agree_; ++step) {
      act();
      if (memory(0) != reference_.memory[0] || memory(1) != reference_.memory[1])
        differ(trail_ + ": other bytes on the device");
      if (step % 10 == 9) {
        for (int node = 0; node < count(); ++node) compare(node);
      } else {
        for (int64_t some = 1 + dice_.below(6); some > 0; --some) compare(any());
      }
    }
    return agree_;
  }

 private:
  int count() const { return static_cast<int>(model_.nodes.size()); }
  int any() { return static_cast<int>(dice_.below(count())); }
  const Node& at(int node) const { return model_.nodes[static_cast<size_t>(node)]; }
  INode* engine(int node) const { return engine_[static_cast<size_t>(node)]; }
  template <class Interface>
  Interface& as(int node) const {
    return dynamic_cast<Interface&>(*engine(node));
  }
  std::vector<uint8_t>& memory(int port) { return port == 0 ? map_.port.memory : other_.memory; }

  void differ(const std::string& what) {
    if (agree_) ADD_FAILURE() << what << "\n" << model_.xml;
    agree_ = false;
  }
  void same(int node, const char* what, const std::string& engine, const std::string& reference) {
    if (engine != reference)
      differ(trail_ + ": " + what + " of " + at(node).name + " is " + engine + ", not " + reference);
  }

  // --- questions ---

  void compare(int node) {
    const std::string mode = outcome([&] { return reference_.mode(node); });
    same(node, "access mode", outcome([&] { return engine(node)->GetAccessMode(); }), mode);
    if (mode == "RO" || mode == "RW") compareValue(node);
    if (mode != "RO" && mode != "RW" && mode != "WO") return;
    if (isIntegerKind(at(node).kind)) compareIntegerLimits(node);
    if (isFloatKind(at(node).kind)) compareRealLimits(node);
  }

  void compareValue(int node) {
    const bool verify = dice_.chance(25), past = dice_.chance(15);
    const Kind kind = at(node).kind;
    if (isIntegerKind(kind)) {
      same(node, verify ? "verified value" : "value",
           outcome([&] { return as<IInteger>(node).GetValue(verify, past); }), outcome([&] {
             const int64_t value = reference_.integer(node);
             if (verify) reference_.check(node, value);
             return value;
           }));
    } else if (isFloatKind(kind)) {
      same(node, verify ? "verified value" : "value", outcome([&] { return as<IFloat>(node).GetValue(verify, past); }),
           outcome([&] {
             const double value = reference_.real(node);
             if (verify) reference_.check(node, value);
             return value;
           }));
    } else if (kind == Kind::Boolean) {
      same(node, "value", outcome([&] { return as<IBoolean>(node).GetValue(verify, past); }),
           outcome([&] { return reference_.integer(node) != 0; }));
    } else if (kind == Kind::Enumeration) {
      same(node, "value", outcome([&] { return as<IEnumeration>(node).GetIntValue(false, past); }),
           outcome([&] { return reference_.enumeration(node); }));
    } else if (kind == Kind::String || kind == Kind::StringReg) {
      same(node, "text", outcome([&] { return std::string(as<IString>(node).GetValue(verify, past)); }),
           outcome([&] { return reference_.text(node); }));
    }
  }

  void compareIntegerLimits(int node) {
    auto& engine = as<IInteger>(node);
    same(node, "Min", outcome([&] { return engine.GetMin(); }),
         outcome([&] { return reference_.integerLimit(node, false); }));
    same(node, "Max", outcome([&] { return engine.GetMax(); }),
         outcome([&] { return reference_.integerLimit(node, true); }));
    same(node, "Inc", outcome([&] { return engine.GetInc(); }),
         outcome([&] { return reference_.integerIncrement(node); }));
    const bool bounded = dice_.chance(50);
    same(node, "set", outcome([&] { return shown(engine.GetListOfValidValues(bounded)); }),
         outcome([&] { return shown(reference_.integerSet(node, bounded)); }));
  }

  void compareRealLimits(int node) {
    auto& engine = as<IFloat>(node);
    same(node, "Min", outcome([&] { return engine.GetMin(); }),
         outcome([&] { return reference_.realLimit(node, false); }));
    same(node, "Max", outcome([&] { return engine.GetMax(); }),
         outcome([&] { return reference_.realLimit(node, true); }));
    same(node, "HasInc", outcome([&] { return engine.HasInc(); }),
         outcome([&] { return reference_.hasRealIncrement(node); }));
    same(node, "Inc", outcome([&] { return engine.GetInc(); }),
         outcome([&] { return reference_.realIncrement(node); }));
  }

  // --- actions ---

  void act() {
    const int64_t kind = dice_.below(100);
    if (kind < 55) {
      write(any());
    } else if (kind < 65) {
      const int node = any();
      trail_ += ", invalidate " + at(node).name;
      engine(node)->InvalidateNode();
    } else {
      poke();
    }
  }

  // The same write through both; unverified ones only where writing is allowed.
  void write(int node) {
    bool verify = dice_.chance(75);
    const std::string mode = outcome([&] { return reference_.mode(node); });
    if (mode.size() > 2) return;  // guards that cannot be read
    const bool writable = mode == "WO" || mode == "RW";
    if (!verify && !writable) verify = true;
    const auto both = [&](const std::string& value, auto&& throughEngine, auto&& throughReference) {
      trail_ += ", " + at(node).name + " := " + value + (verify ? "" : " unverified");
      same(node, "outcome of writing", outcome(throughEngine),
           writable ? outcome(throughReference) : "AccessException");
    };
    const Kind kind = at(node).kind;
    if (isRegister(kind) && dice_.chance(10)) {
      std::vector<uint8_t> bytes(static_cast<size_t>(dice_.below(9)));
      for (uint8_t& each : bytes) each = static_cast<uint8_t>(dice_.below(256));
      both(
          std::to_string(bytes.size()) + " bytes",
          [&] { as<IRegister>(node).Set(bytes.data(), static_cast<int64_t>(bytes.size()), verify); },
          [&] { reference_.writeStart(node, bytes); });
    } else if (isIntegerKind(kind)) {
      const int64_t value = someInteger(node);
      both(
          shown(value), [&] { as<IInteger>(node).SetValue(value, verify); },
          [&] { reference_.writeInteger(node, value, verify); });
    } else if (isFloatKind(kind)) {
      const double value = someReal(node);
      both(
          shown(value), [&] { as<IFloat>(node).SetValue(value, verify); },
          [&] { reference_.writeReal(node, value, verify); });
    } else if (kind == Kind::Boolean) {
      const bool value = dice_.chance(50);
      both(
          shown(value), [&] { as<IBoolean>(node).SetValue(value, verify); },
          [&] { reference_.writeInteger(node, value, verify); });
    } else if (kind == Kind::Enumeration) {
      const Entry& entry = dice_.pick(at(node).entries);
      both(
          shown(entry.value), [&] { as<IEnumeration>(node).SetIntValue(entry.value, verify); },
          [&] { reference_.writeEntry(node, entry, verify); });
    } else if (kind == Kind::Command) {
      both(
          "executed", [&] { as<ICommand>(node).Execute(verify); }, [&] { reference_.execute(node, verify); });
    } else {
      const std::string text(static_cast<size_t>(dice_.below(8)), static_cast<char>('a' + dice_.below(26)));
      both(
          text, [&] { as<IString>(node).SetValue(text.c_str(), verify); }, [&] { reference_.writeText(node, text); });
    }
  }

  int64_t someInteger(int node) {
    if (dice_.chance(5)) return static_cast<int64_t>(dice_.bits());
    try {
      if (dice_.chance(40)) return reference_.integerLimit(node, dice_.chance(50));
    } catch (const Refused&) {
      return 0;
    }
    return dice_.below(50) - 15;
  }
  double someReal(int node) {
    if (dice_.chance(5)) return (dice_.chance(50) ? 1e30 : -1e17) * static_cast<double>(dice_.below(9));
    try {
      if (dice_.chance(30)) return reference_.realLimit(node, dice_.chance(50));
    } catch (const Refused&) {
      return 0;
    }
    return static_cast<double>(dice_.below(400) - 120) / 8;
  }

  // Changes bytes of the device behind the engine's back, and tells it as little of that as the rules allow.
  void poke() {
    const auto port = static_cast<int>(dice_.below(kPorts));
    const auto first = dice_.below(kPortBytes - 4), length = 1 + dice_.below(4);
    std::vector<int> concerned;  // registers that may remember the bytes
    bool onePlace = true;
    for (int node = 0; node < count(); ++node) {
      if (!isRegister(at(node).kind) || at(node).port != port || caching_[static_cast<size_t>(node)] == NoCache)
        continue;
      try {
        const int64_t from = reference_.address(node), bytes = reference_.length(node);
        if (from >= first + length || first >= from + bytes) continue;
        concerned.push_back(node);
        onePlace = onePlace && from == reference_.address(concerned[0]) && bytes == reference_.length(concerned[0]);
      } catch (const Refused&) {
        continue;  // nothing is known of a place that cannot be told
      }
    }
    for (int64_t i = first; i < first + length; ++i) {
      const auto byte = static_cast<uint8_t>(dice_.chance(60) ? dice_.below(4) : dice_.below(256));
      memory(port)[static_cast<size_t>(i)] = reference_.memory[static_cast<size_t>(port)][static_cast<size_t>(i)] =
          byte;
    }
    trail_ += ", bytes " + std::to_string(first) + ".." + std::to_string(first + length - 1) + " of port " +
              std::to_string(port);
    tell(port, concerned, onePlace);
  }

  void tell(int port, const std::vector<int>& concerned, bool onePlace) {
    if (concerned.empty()) return;
    const int64_t way = dice_.below(5);
    if (way == 0) {
      trail_ += ", port invalidated";
      return (port == 0 ? map_.port : other_).InvalidateNode();
    }
    if (way == 1 && onePlace) {  // whoever reads past the cache tells the others
      const std::string mode = outcome([&] { return engine(concerned[0])->GetAccessMode(); });
      uint8_t bytes[64];
      if (mode == "RO" || mode == "RW") {
        trail_ += ", " + at(concerned[0]).name + " read past the cache";
        auto& source = as<IRegister>(concerned[0]);
        if (outcome([&] { source.Get(bytes, source.GetLength(), false, true); }) == "done") return;
      }
    }
    if (way == 2 || way == 3) {  // one node that all of them depend on
      for (int attempt = 0; attempt < 10; ++attempt) {
        const int node = any();
        const std::vector<bool> dependents = dependentsOf(model_.nodes, node);
        const auto isDependent = [&](int each) { return each == node || dependents[static_cast<size_t>(each)]; };
        if (!std::all_of(concerned.begin(), concerned.end(), isDependent)) continue;
        trail_ += ", invalidate " + at(node).name;
        return engine(node)->InvalidateNode();
      }
    }
    trail_ += ", invalidate each";
    for (const int each : concerned) engine(each)->InvalidateNode();
  }

  Dice dice_;
  RandomDescription model_;
  BytePort other_;  // outlives its connection
  TestMap map_;
  ReferenceEvaluator reference_;
  std::vector<ECachingMode> caching_;
  std::vector<INode*> engine_;
  std::string trail_;
  bool agree_ = true;
};

}  // namespace

TEST(RandomDescription, EveryNodeAgreesWithTheReference) {
  int faults = 0;
  for (uint64_t seed = 0; seed < kDescriptions && faults < 3; ++seed) {
    if (!Duel(seed).run()) ++faults;
  }
}
