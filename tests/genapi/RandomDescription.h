// Valid descriptions made by dice, as a model that the reference evaluator reads and as XML that the engine reads.
#pragma once
#include <optional>

#include "GenApi/Types.h"
#include "RandomExpression.h"

namespace randomly {

using namespace GENAPI_NAMESPACE;

enum class Kind {
  Integer,
  Float,
  Boolean,
  Enumeration,
  Command,
  String,
  IntReg,
  MaskedIntReg,
  FloatReg,
  StringReg,
  IntSwissKnife,
  SwissKnife,
  IntConverter,
  Converter
};

constexpr int kNone = -1;  // no node
constexpr int kPortBytes = 48;
constexpr int kPorts = 2;

enum class Aspect { Value, Min, Max, Inc };

// A name that a formula may use.
struct Declared {
  std::string name;
  int node = kNone;  // a variable
  Aspect aspect = Aspect::Value;
  std::optional<Expression> expression;  // else a constant, when there is no node
  int64_t integer = 0;
  double real = 0;
};

struct Guards {
  int implemented = kNone, available = kNone, locked = kNone;
};

struct Entry {
  int64_t value = 0;
  std::optional<double> numeric;
  Guards guards;
};

// One value of an index table: a constant, or a link.
struct Cell {
  int64_t index = 0;
  int link = kNone;
  double constant = 0;
};

struct Node {
  Kind kind = Kind::Integer;
  std::string name;
  int depth = 0;          // of the longest chain of links below
  bool small = false;     // its value stays near 0: fit to index, to guard, to be a length
  bool uncached = false;  // something below it may not be cached
  bool unsteady = false;  // so may a guard of its own or below it
  int embeddedIn = kNone;

  Guards guards;
  EAccessMode imposed = RW;
  std::vector<int> invalidators, selected;

  // where the value comes from: a link, a table, or the node itself
  int value = kNone;
  std::vector<int> copiesBefore, copiesAfter;
  int index = kNone;  // of a table
  std::vector<Cell> cells;
  Cell otherwise;
  double held = 0;
  std::string text;

  // own limits: a number or a link
  std::optional<double> min, max, inc;
  int pMin = kNone, pMax = kNone, pInc = kNone;
  std::vector<int64_t> set;

  int64_t on = 1, off = 0;  // Boolean; `on` is also the value of a command
  int pCommand = kNone;
  std::vector<Entry> entries;

  // registers
  int port = 0;
  int64_t address = 0, length = 0, offset = 0;
  int pAddress = kNone, addressIndex = kNone, pOffset = kNone, embedded = kNone, pLength = kNone;
  enum class Stride { Given, Linked, Length } stride = Stride::Given;
  EAccessMode access = RW;
  ECachingMode caching = WriteThrough;
  bool isSigned = false, bigEndian = false;
  int shift = 0, width = 0;  // of a field

  // formulas: value is the one that reads
  std::vector<Declared> names;
  Expression formula, inverse;
  std::string formulaText, inverseText;
  std::vector<std::string> expressionTexts;
  ESlope slope = Automatic;
  bool isLinear = false;
};

inline bool isRegister(Kind kind) {
  return kind >= Kind::IntReg && kind <= Kind::StringReg;
}
inline bool isIntegerKind(Kind kind) {
  return kind == Kind::Integer || kind == Kind::IntReg || kind == Kind::MaskedIntReg || kind == Kind::IntSwissKnife ||
         kind == Kind::IntConverter;
}
inline bool isFloatKind(Kind kind) {
  return kind == Kind::Float || kind == Kind::FloatReg || kind == Kind::SwissKnife || kind == Kind::Converter;
}

struct RandomDescription {
  explicit RandomDescription(uint64_t seed);
  // Links lead from later nodes to earlier ones.
  std::vector<Node> nodes;
  std::string xml;  // the node elements, ports included, in an order of its own
  int schemaMinor = 1;
};

// The caching mode of each node: its own combined with those of everything it reads.
std::vector<ECachingMode> cachingModesOf(const std::vector<Node>& nodes);
// Nodes that depend on the given one by any kind of link, itself not included unless it depends on itself.
std::vector<bool> dependentsOf(const std::vector<Node>& nodes, int node);

}  // namespace randomly
