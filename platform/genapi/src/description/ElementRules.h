// What the description language says about its elements: their form, which node types carry them, how often.
#pragma once
#include <array>
#include <cstdint>
#include <string_view>

#include "description/Element.h"

namespace GENAPI_NAMESPACE {

class ElementSet {
 public:
  constexpr ElementSet() = default;
  template <class... Elements>
  constexpr explicit ElementSet(Elements... elements) {
    (add(elements), ...);
  }
  constexpr void add(Element element) { bits_[word(element)] |= bit(element); }
  constexpr bool has(Element element) const { return (bits_[word(element)] & bit(element)) != 0; }
  constexpr bool hasAny(ElementSet other) const {
    return ((bits_[0] & other.bits_[0]) | (bits_[1] & other.bits_[1])) != 0;
  }
  constexpr ElementSet operator|(ElementSet other) const {
    other.bits_[0] |= bits_[0];
    other.bits_[1] |= bits_[1];
    return other;
  }
  constexpr bool empty() const { return (bits_[0] | bits_[1]) == 0; }

 private:
  static constexpr size_t word(Element element) { return static_cast<size_t>(element) / 64; }
  static constexpr uint64_t bit(Element element) { return uint64_t{1} << (static_cast<size_t>(element) % 64); }
  uint64_t bits_[2] = {0, 0};
};
static_assert(kElements <= 128);

class NodeTypeSet {
 public:
  constexpr NodeTypeSet() = default;
  template <class... Types>
  constexpr explicit NodeTypeSet(Types... types) : bits_(((uint32_t{1} << static_cast<uint32_t>(types)) | ...)) {}
  constexpr bool has(NodeType type) const { return (bits_ >> static_cast<uint32_t>(type) & 1) != 0; }
  constexpr NodeTypeSet operator|(NodeTypeSet other) const {
    other.bits_ |= bits_;
    return other;
  }

 private:
  uint32_t bits_ = 0;
};

inline constexpr NodeTypeSet kIntegerKinds(NodeType::Integer, NodeType::IntReg, NodeType::MaskedIntReg,
                                           NodeType::IntConverter, NodeType::IntSwissKnife, NodeType::IntKey,
                                           NodeType::AdvFeatureLock, NodeType::SmartFeature);
inline constexpr NodeTypeSet kFloatKinds(NodeType::Float, NodeType::FloatReg, NodeType::Converter,
                                         NodeType::SwissKnife);
inline constexpr NodeTypeSet kStringKinds(NodeType::String, NodeType::StringReg, NodeType::TextDesc);
inline constexpr NodeTypeSet kRegisterKinds(NodeType::IntReg, NodeType::MaskedIntReg, NodeType::FloatReg,
                                            NodeType::StringReg, NodeType::Register, NodeType::ConfRom,
                                            NodeType::AdvFeatureLock, NodeType::SmartFeature);
// How an element gives a number.
inline constexpr NodeTypeSet kNumericKinds =
    kIntegerKinds | kFloatKinds | NodeTypeSet(NodeType::Boolean, NodeType::Enumeration);

// How the text of an element is read.
enum class Form : uint8_t {
  Text,      // trimmed
  Verbatim,  // unchanged, blanks included; an empty one counts as given
  Integer,
  Real,
  Boolean,  // true, false, 1, 0
  Word,     // a fixed vocabulary
  HexDigits,
  IntegerSet,  // integers separated by ';'
  Link,
  Child,  // EnumEntry, IntSwissKnife, TextDesc, IntKey: a node of its own
  Ignored
};

// All of it in one look-up, because it is asked for every element of a description.
struct ElementRule {
  Form form = Form::Ignored;
  bool belongs = false;  // the element has a meaning in nodes of that type
  bool repeats = false;
  uint8_t alternative = 0;  // elements of which a node has one or the other (Value, pValue) share a number above 0
};
using ElementRules = std::array<ElementRule, kElements>;
extern const std::array<ElementRules, kNodeTypes> kElementRules;
inline const ElementRule& ruleOf(Element element, NodeType type) {
  return kElementRules[static_cast<size_t>(type)][static_cast<size_t>(element)];
}
inline constexpr size_t kAlternatives = 10;

// Links that a node's value is written through ...
inline constexpr ElementSet kWritingLinks(Element::pValue, Element::pValueCopy, Element::pValueIndexed,
                                          Element::pValueDefault);
// ... the links read for values, limits, addresses and lengths, which also make somebody a parent.
inline constexpr ElementSet kReadingLinks(Element::pValue, Element::pMin, Element::pMax, Element::pInc, Element::pIndex,
                                          Element::pValueIndexed, Element::pValueDefault, Element::pVariable,
                                          Element::pAddress, Element::IntSwissKnife, Element::pOffset, Element::pLength,
                                          Element::pCommandValue, Element::pChunkID);
// Links whose target decides about access, in the order in which they are asked.
inline constexpr Element kGuardLinks[] = {Element::pIsImplemented, Element::pIsAvailable, Element::pIsLocked,
                                          Element::pBlockPolling};
inline constexpr ElementSet kGuards(kGuardLinks[0], kGuardLinks[1], kGuardLinks[2], kGuardLinks[3]);
// Links that may be left out when they lead nowhere.
inline constexpr ElementSet kDescriptiveLinks(Element::pFeature, Element::pSelected, Element::pInvalidator,
                                              Element::pAlias, Element::pCastAlias, Element::pError,
                                              Element::pBlockPolling);
// Elements whose text names another node.
inline constexpr ElementSet kNamingLinks = [] {
  ElementSet links;
#define GENAPI_ADD_LINK(name, form) \
  if (Form::form == Form::Link) links.add(Element::name);
  GENAPI_ELEMENTS(GENAPI_ADD_LINK)
#undef GENAPI_ADD_LINK
  return links;
}();
// Kinds of nodes that such a link of such a node may name.
NodeTypeSet linkTargets(Element element, NodeType type);

// Reads a word of the element's vocabulary into the value of its enumeration; false for any other word.
bool parseWord(Element element, std::string_view text, uint8_t& word);
// A wrong word of these is only noted, and the default applies; other wrong words make a node unusable.
inline constexpr ElementSet kDescriptiveWords(Element::Visibility, Element::Representation, Element::DisplayNotation,
                                              Element::Streamable, Element::IsDeprecated, Element::IsSelfClearing,
                                              Element::CacheChunkData, Element::IsLinear);

}  // namespace GENAPI_NAMESPACE
