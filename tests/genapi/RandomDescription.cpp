#include "RandomDescription.h"

#include <algorithm>
#include <functional>

namespace randomly {

namespace {

constexpr int kMaxDepth = 5;

class Maker {
 public:
  explicit Maker(Dice& dice) : dice_(dice) {}

  std::vector<Node> make() {
    const auto count = static_cast<size_t>(10 + dice_.below(26));
    for (int i = 0; i < 3; ++i) add(Kind::IntReg);
    add(Kind::MaskedIntReg);
    addSmall();
    while (nodes_.size() < count) {
      static const std::vector<Kind> kKinds = {
          Kind::Integer,      Kind::Integer,   Kind::Integer,       Kind::Integer,      Kind::Float,
          Kind::Float,        Kind::Float,     Kind::Boolean,       Kind::Enumeration,  Kind::Command,
          Kind::String,       Kind::IntReg,    Kind::IntReg,        Kind::MaskedIntReg, Kind::MaskedIntReg,
          Kind::FloatReg,     Kind::StringReg, Kind::IntSwissKnife, Kind::SwissKnife,   Kind::IntConverter,
          Kind::IntConverter, Kind::Converter, Kind::Converter};
      if (dice_.chance(12)) {
        addSmall();
      } else {
        add(dice_.pick(kKinds));
      }
    }
    addFreeLinks();
    return std::move(nodes_);
  }

 private:
  using Fits = std::function<bool(const Node&)>;

  // An earlier node to link to; the made node comes to stand above it.
  int link(Node& from, const Fits& fits) {
    std::vector<int> candidates;
    for (size_t i = 0; i < nodes_.size(); ++i) {
      if (nodes_[i].depth < kMaxDepth && fits(nodes_[i])) candidates.push_back(static_cast<int>(i));
    }
    if (candidates.empty()) return kNone;
    const int chosen = dice_.pick(candidates);
    const Node& target = nodes_[static_cast<size_t>(chosen)];
    from.depth = std::max(from.depth, target.depth + 1);
    from.uncached = from.uncached || target.uncached;
    from.unsteady = from.unsteady || target.unsteady;
    return chosen;
  }
  int linkIf(int percent, Node& from, const Fits& fits) { return dice_.chance(percent) ? link(from, fits) : kNone; }

  static bool isSmall(const Node& node) { return node.small; }
  static bool isNumber(const Node& node) {
    return isIntegerKind(node.kind) || isFloatKind(node.kind) || node.kind == Kind::Boolean ||
           node.kind == Kind::Enumeration;
  }
  // Limits may be kept while a guard that is never kept takes away the right to read them.
  static bool isSteady(const Node& node) { return isNumber(node) && !node.unsteady; }
  static bool isInteger(const Node& node) { return isIntegerKind(node.kind); }
  static bool isText(const Node& node) { return node.kind == Kind::String || node.kind == Kind::StringReg; }

  Node begun(Kind kind) {
    Node made;
    made.kind = kind;
    made.name = "N" + std::to_string(nodes_.size());
    return made;
  }
  void finish(Node made) {
    made.uncached = made.uncached || (isRegister(made.kind) && made.caching == NoCache);
    made.guards = guards(made, 8);
    if (dice_.chance(6)) made.imposed = dice_.chance(50) ? RO : WO;
    nodes_.push_back(std::move(made));
  }
  Guards guards(Node& from, int percent) {
    const Fits fits = [&](const Node& node) { return dice_.chance(20) ? isNumber(node) : isSmall(node); };
    const Guards made = {linkIf(percent, from, fits), linkIf(2 * percent, from, fits), linkIf(percent, from, fits)};
    for (const int each : {made.implemented, made.available, made.locked}) {
      if (each != kNone && nodes_[static_cast<size_t>(each)].uncached) from.unsteady = true;
    }
    return made;
  }

  // Something that counts from 0 to 3.
  void addSmall() {
    Node made = begun(dice_.chance(60) ? Kind::Integer : Kind::MaskedIntReg);
    made.small = true;
    if (made.kind == Kind::Integer) {
      made.held = static_cast<double>(dice_.below(4));
      made.min = 0;
      made.max = 3;
    } else {
      place(made);
      made.isSigned = false;
      made.width = 2;
      made.shift = static_cast<int>(dice_.below(8 * made.length - 1));
      made.caching = dice_.pick(std::vector<ECachingMode>{WriteThrough, WriteAround, NoCache});
    }
    made.uncached = isRegister(made.kind) && made.caching == NoCache;
    made.guards = guards(made, 3);
    nodes_.push_back(std::move(made));
  }

  void add(Kind kind) {
    Node made = begun(kind);
    if (isRegister(kind)) {
      makeRegister(made);
    } else if (kind == Kind::Integer || kind == Kind::Float) {
      makeNumber(made);
    } else if (kind >= Kind::IntSwissKnife) {
      if (!makeFormula(made)) return;
    } else {
      makeOther(made);
    }
    finish(std::move(made));
  }

  double number(bool whole) {
    const double small = static_cast<double>(dice_.below(41) - 20);
    return whole || dice_.chance(50) ? small : small + static_cast<double>(dice_.below(8)) / 8;
  }

  void makeNumber(Node& made) {
    const bool whole = made.kind == Kind::Integer;
    const int64_t form = dice_.below(10);
    if (form < 6) made.value = link(made, isNumber);
    if (form >= 6 && form < 8) makeTable(made, whole);
    if (made.value == kNone) made.held = number(whole);
    if (whole && made.value != kNone && dice_.chance(25)) {
      for (int64_t copies = 1 + dice_.below(2); copies > 0; --copies) {
        const int copy = link(made, isNumber);
        if (copy != kNone) (dice_.chance(50) ? made.copiesBefore : made.copiesAfter).push_back(copy);
      }
    }
    if (dice_.chance(35)) {
      const double low = number(whole);
      if (dice_.chance(80)) made.min = low;
      if (dice_.chance(80)) made.max = dice_.chance(90) ? low + static_cast<double>(dice_.below(60)) : low - 1;
    } else {
      made.pMin = linkIf(12, made, isSteady);
      made.pMax = linkIf(12, made, isSteady);
    }
    if (dice_.chance(20)) {
      made.inc = dice_.chance(95) ? static_cast<double>(1 + dice_.below(4)) + (whole ? 0 : 0.5) : 0;
    } else {
      made.pInc = linkIf(10, made, isSteady);
    }
    if (whole && dice_.chance(12)) {
      for (int i = 0; i < 5; ++i) made.set.push_back(static_cast<int64_t>(number(true)));
    }
  }

  void makeTable(Node& made, bool whole) {
    made.index = link(made, isSmall);
    if (made.index == kNone) return;
    const auto fill = [&](Cell& cell) {
      cell.link = linkIf(60, made, isNumber);
      cell.constant = number(whole);
    };
    for (int64_t index = 0; index < 3; ++index) {
      if (!dice_.chance(70) && index > 0) continue;
      made.cells.push_back({index, kNone, 0});
      fill(made.cells.back());
    }
    fill(made.otherwise);
  }

  void makeOther(Node& made) {
    switch (made.kind) {
      case Kind::Boolean:
        made.value = linkIf(70, made, isNumber);
        made.held = static_cast<double>(dice_.below(2));
        made.on = dice_.below(5);
        made.off = made.on + 1 + dice_.below(3);
        if (dice_.chance(60)) made.on = 1, made.off = 0;
        break;
      case Kind::Enumeration: {
        made.value = linkIf(70, made, isNumber);
        for (int64_t value = dice_.below(3), i = 2 + dice_.below(4); i > 0; --i, value += 1 + dice_.below(3)) {
          Entry entry;
          entry.value = value;
          if (dice_.chance(30)) entry.numeric = number(false);
          if (dice_.chance(25)) entry.guards = guards(made, 30);
          made.entries.push_back(entry);
        }
        made.held = static_cast<double>(dice_.pick(made.entries).value);
        break;
      }
      case Kind::Command:
        made.value = linkIf(80, made, isNumber);
        made.on = dice_.below(9);
        made.pCommand = linkIf(25, made, isNumber);
        break;
      default:
        made.value = linkIf(70, made, isText);
        made.text = std::string(static_cast<size_t>(1 + dice_.below(6)), 't');
        break;
    }
  }

  void place(Node& made) {
    const bool isText = made.kind == Kind::StringReg;
    static const std::vector<int64_t> kFieldLengths = {1, 2, 4, 8};
    made.length = isText                        ? 1 + dice_.below(10)
                  : made.kind == Kind::FloatReg ? 4 * (1 + dice_.below(2))
                  : made.kind == Kind::IntReg   ? 1 + dice_.below(8)
                                                : dice_.pick(kFieldLengths);
    made.port = dice_.chance(75) ? 0 : 1;
    made.address = dice_.below(kPortBytes - 10);
    made.bigEndian = dice_.chance(40);
    for (const Node& other : nodes_) {  // over a register that is there already
      if (!isRegister(other.kind) || other.length != made.length || !dice_.chance(30)) continue;
      made.port = other.port;
      made.address = other.address;
    }
  }

  void makeRegister(Node& made) {
    place(made);
    made.access = dice_.chance(70) ? RW : dice_.chance(60) ? RO : WO;
    made.caching = dice_.chance(50) ? WriteThrough : dice_.chance(50) ? WriteAround : NoCache;
    made.isSigned = dice_.chance(40);
    if (made.kind == Kind::MaskedIntReg) {
      made.width = 1 + static_cast<int>(dice_.below(8 * made.length));
      made.shift = static_cast<int>(dice_.below(8 * made.length - made.width + 1));
    }
    made.pAddress = linkIf(15, made, isSmall);
    made.addressIndex = linkIf(12, made, isSmall);
    if (made.addressIndex != kNone) {
      made.stride = static_cast<Node::Stride>(dice_.below(3));
      made.offset = dice_.below(8);
      if (made.stride == Node::Stride::Linked) made.pOffset = link(made, isSmall);
      if (made.pOffset == kNone && made.stride == Node::Stride::Linked) made.stride = Node::Stride::Given;
    }
    if (made.kind != Kind::MaskedIntReg) made.pLength = linkIf(5, made, isSmall);
    if (!dice_.chance(8)) return;
    Node knife = begun(Kind::IntSwissKnife);
    knife.embeddedIn = static_cast<int>(nodes_.size()) + 1;
    knife.names.push_back({.name = "S", .node = link(knife, isSmall), .expression = {}});
    if (knife.names[0].node == kNone) return;
    knife.formula = {.op = Op::Name, .parts = {}};
    knife.formulaText = "S";
    made.name = "N" + std::to_string(knife.embeddedIn);
    knife.name = "_" + made.name + "_Knife";
    made.depth = std::max(made.depth, knife.depth + 1);
    made.embedded = static_cast<int>(nodes_.size());
    nodes_.push_back(std::move(knife));
  }

  bool makeFormula(Node& made) {
    const bool isConverter = made.kind == Kind::IntConverter || made.kind == Kind::Converter;
    const bool whole = made.kind == Kind::IntConverter || made.kind == Kind::IntSwissKnife;
    if (isConverter) made.value = link(made, isNumber);
    if (isConverter && made.value == kNone) return false;
    declare(made, whole);
    Shape shape{whole, made.names.size(), isConverter, "TO"};
    std::vector<std::string> names;
    for (const Declared& each : made.names) names.push_back(each.name);
    if (isConverter && dice_.chance(60)) {  // something that can be undone
      Expression step = {.op = Op::Literal, .integer = 1 + dice_.below(4), .parts = {}};
      step.real = static_cast<double>(step.integer);
      const Expression argument = {.op = Op::Argument, .parts = {}};
      const bool scales = dice_.chance(50);
      made.formula = {.op = scales ? Op::Times : Op::Plus, .parts = {argument, step}};
      made.inverse = {.op = scales ? Op::Divided : Op::Minus, .parts = {argument, step}};
    } else {
      made.formula = makeExpression(dice_, shape, 1 + static_cast<int>(dice_.below(3)));
      if (isConverter) made.inverse = makeExpression(dice_, shape, 1 + static_cast<int>(dice_.below(2)));
    }
    made.formulaText = textOf(made.formula, shape, names, dice_);
    shape.argument = "FROM";
    if (isConverter) made.inverseText = textOf(made.inverse, shape, names, dice_);
    made.slope = static_cast<ESlope>(dice_.below(4));
    made.isLinear = dice_.chance(40);
    return true;
  }

  void declare(Node& made, bool whole) {
    const int64_t variables = dice_.below(4);
    for (int64_t i = 0; i < variables; ++i) {
      Declared variable{.name = std::string(1, static_cast<char>('A' + i)), .expression = {}};
      variable.node = link(made, isNumber);
      if (variable.node == kNone) break;
      const Kind kind = nodes_[static_cast<size_t>(variable.node)].kind;
      if ((isIntegerKind(kind) || isFloatKind(kind)) && dice_.chance(25)) {
        variable.aspect = static_cast<Aspect>(1 + dice_.below(2));
        variable.name += variable.aspect == Aspect::Min ? ".Min" : ".Max";
      }
      made.names.push_back(variable);
    }
    if (dice_.chance(20)) {
      made.names.push_back({.name = "K", .expression = {}, .integer = dice_.below(100)});
      made.names.back().real = static_cast<double>(made.names.back().integer) + (whole ? 0 : 0.25);
    }
    if (!dice_.chance(20)) return;
    std::vector<std::string> names;
    for (const Declared& each : made.names) names.push_back(each.name);
    const Shape shape{whole, names.size(), false, ""};
    Declared sub{.name = "X", .expression = makeExpression(dice_, shape, 2)};
    made.expressionTexts.push_back(textOf(*sub.expression, shape, names, dice_));
    made.names.push_back(std::move(sub));
  }

  // Links that need no order: what invalidates whom, what selects whom.
  void addFreeLinks() {
    const auto count = static_cast<int64_t>(nodes_.size());
    for (int64_t i = 0; i < count; ++i) {
      Node& node = nodes_[static_cast<size_t>(i)];
      if (node.embeddedIn != kNone) continue;
      while (dice_.chance(15)) node.invalidators.push_back(static_cast<int>(dice_.below(count)));
      const bool selects = node.kind == Kind::Enumeration || node.kind == Kind::Boolean || isInteger(node);
      if (selects && i + 1 < count && dice_.chance(10)) {
        node.selected.push_back(static_cast<int>(i + 1 + dice_.below(count - i - 1)));
      }
    }
  }

  Dice& dice_;
  std::vector<Node> nodes_;
};

}  // namespace

std::string xmlOf(const std::vector<Node>& nodes, Dice& dice);

RandomDescription::RandomDescription(uint64_t seed) {
  Dice dice(seed);
  nodes = Maker(dice).make();
  schemaMinor = dice.chance(50) ? 1 : 0;
  xml = xmlOf(nodes, dice);
}

}  // namespace randomly
