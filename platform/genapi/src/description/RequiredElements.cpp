// What a node must have to be of use, and numbers that do not fit together.
#include "description/Limits.h"
#include "description/NodeReader.h"

namespace GENAPI_NAMESPACE {

void NodeReader::checkComplete(NodeDraft& draft) {
  using E = Element;
  const auto requireSource = [&] { require(draft, ElementSet(E::Value, E::pValue), "Value or pValue"); };
  const auto requireRegister = [&] {
    require(draft, ElementSet(E::Address, E::pAddress, E::pIndex, E::IntSwissKnife), "Address");
    require(draft, ElementSet(E::Length, E::pLength), "Length");
    require(draft, ElementSet(E::pPort), "pPort");
    checkLength(draft);
  };
  switch (draft.record.type) {
    case NodeType::Integer:
    case NodeType::Float:
      require(draft, ElementSet(E::Value, E::pValue, E::pIndex), "Value, pValue or pIndex");
      if (draft.alternatives[ruleOf(E::pIndex, NodeType::Integer).alternative] == E::pIndex) {
        require(draft, ElementSet(E::ValueIndexed, E::pValueIndexed), "ValueIndexed or pValueIndexed");
        require(draft, ElementSet(E::ValueDefault, E::pValueDefault), "ValueDefault or pValueDefault");
      }
      break;
    case NodeType::IntReg:
    case NodeType::FloatReg:
    case NodeType::StringReg:
    case NodeType::Register: requireRegister(); break;
    case NodeType::ConfRom:
    case NodeType::AdvFeatureLock:
    case NodeType::SmartFeature: require(draft, ElementSet(E::pPort), "pPort"); break;
    case NodeType::MaskedIntReg:
      requireRegister();
      require(draft, ElementSet(E::Bit, E::LSB, E::MSB), "Bit or LSB and MSB");
      if (draft.seen.has(E::MSB)) require(draft, ElementSet(E::LSB), "LSB");
      if (draft.seen.has(E::LSB)) require(draft, ElementSet(E::MSB), "MSB");
      break;
    case NodeType::Boolean:
      requireSource();
      checkBoolean(draft);
      break;
    case NodeType::Command:
      requireSource();
      require(draft, ElementSet(E::CommandValue, E::pCommandValue), "CommandValue or pCommandValue");
      break;
    case NodeType::Enumeration:
      requireSource();
      require(draft, ElementSet(E::EnumEntry, E::pEnumEntry), "EnumEntry");
      break;
    case NodeType::EnumEntry: require(draft, ElementSet(E::Value), "Value"); break;
    case NodeType::String: requireSource(); break;
    case NodeType::Converter:
    case NodeType::IntConverter:
      require(draft, ElementSet(E::pValue), "pValue");
      require(draft, ElementSet(E::FormulaTo), "FormulaTo");
      require(draft, ElementSet(E::FormulaFrom), "FormulaFrom");
      break;
    case NodeType::SwissKnife:
    case NodeType::IntSwissKnife: require(draft, ElementSet(E::Formula), "Formula"); break;
    default: break;
  }
}

void NodeReader::require(NodeDraft& draft, ElementSet oneOf, std::string_view names) {
  if (!draft.seen.hasAny(oneOf)) setDefective(draft, draft.record.sourceOffset, names, "missing");
}

void NodeReader::checkLength(NodeDraft& draft) {
  const Property* const length = find(draft, Element::Length);
  if (length == nullptr || draft.record.defective) return;
  const NodeType type = draft.record.type;
  const bool integer = type == NodeType::IntReg || type == NodeType::MaskedIntReg;
  const size_t offset = parts_.offsetOf(length->valueData, draft.record.sourceOffset);
  if (length->integer <= 0 || (integer && length->integer > 8)) {
    const std::string reason = std::to_string(length->integer) + " bytes";
    setDefective(draft, offset, "Length", reason + (integer ? " are not between 1 and 8" : " are no register"));
  } else if (type == NodeType::MaskedIntReg) {
    checkBits(draft, length->integer);
  }
}

void NodeReader::checkBits(NodeDraft& draft, int64_t registerBytes) {
  Property* const lsb = find(draft, Element::LSB);
  Property* const msb = find(draft, Element::MSB);
  for (const Property* bit : {static_cast<const Property*>(find(draft, Element::Bit)),
                              static_cast<const Property*>(lsb), static_cast<const Property*>(msb)}) {
    if (bit == nullptr || (bit->integer >= 0 && bit->integer < 8 * registerBytes)) continue;
    setDefective(draft, parts_.offsetOf(bit->valueData, draft.record.sourceOffset), elementName(bit->element),
                 "bit " + std::to_string(bit->integer) + " lies outside the register of " +
                     std::to_string(registerBytes) + " bytes");
    return;
  }
  if (lsb == nullptr || msb == nullptr) return;
  const Property* const endianess = find(draft, Element::Endianess);
  const bool bigEndian = endianess != nullptr && endianess->word == BigEndian;
  if (bigEndian ? lsb->integer >= msb->integer : lsb->integer <= msb->integer) return;
  // From here on LSB is the bit of lowest weight, whatever the maker called it.
  std::swap(lsb->integer, msb->integer);
  std::swap(lsb->valueData, msb->valueData);
  std::swap(lsb->valueSize, msb->valueSize);
  parts_.findings.note(parts_.offsetOf(lsb->valueData, draft.record.sourceOffset), kNoNode, "LSB",
                       "LSB and MSB are in the wrong order for " +
                           std::string(bigEndian ? "BigEndian" : "LittleEndian") + ", taken the other way round");
}

void NodeReader::checkBoolean(const NodeDraft& draft) {
  const Property* const on = find(draft, Element::OnValue);
  const Property* const off = find(draft, Element::OffValue);
  const int64_t onValue = on != nullptr ? on->integer : 1;
  const int64_t offValue = off != nullptr ? off->integer : 0;
  if (onValue != offValue || draft.record.defective) return;
  parts_.fatal(draft.record.sourceOffset, draft.record, "OnValue",
               "OnValue and OffValue are both " + std::to_string(onValue));
}

Property* NodeReader::find(const NodeDraft& draft, Element element) const {
  if (!draft.seen.has(element)) return nullptr;
  for (size_t i = draft.record.firstProperty; i < parts_.properties.size(); ++i)
    if (parts_.properties[i].element == element) return &parts_.properties[i];
  return nullptr;
}

void NodeReader::setDefective(NodeDraft& draft, size_t offset, std::string_view element, std::string reason) {
  // A hostile text must not make findings without end: the first one says why the node cannot be used.
  if (draft.record.defective && parts_.findings.count() > kMaxNotes) return;
  draft.record.defective = true;
  parts_.findings.defect(offset, kNoNode, element, std::move(reason));
}

}  // namespace GENAPI_NAMESPACE
