// The node types of the IIDC era: they load, list and link, and every access to their value is refused by name.
#pragma once
#include "nodes/RegisterBase.h"
#include "nodes/TextBase.h"

namespace GENAPI_NAMESPACE {

// Throws RuntimeException "node type ... is not supported".
[[noreturn]] inline void refuseUnsupported(const NodeBase& node) {
  refuse<RuntimeException>("{}: node type {} is not supported", node.path(), nodeTypeName(node.record().type));
}

// AdvFeatureLock and SmartFeature: integers over a register whose protocol is not spoken here.
class UnsupportedIntegerNode final : public RegisterBase<IntegerBase> {
 public:
  using RegisterBase::RegisterBase;

 protected:
  int64_t compute(Reading) const override { refuseUnsupported(*this); }
  void store(int64_t, bool) const override { refuseUnsupported(*this); }
  void requireSupported() const override { refuseUnsupported(*this); }
};

// IntKey: an entry of a configuration ROM.
class UnsupportedKeyNode final : public IntegerBase {
 public:
  using IntegerBase::IntegerBase;
  EAccessMode typeMode() const override { return RO; }

 protected:
  int64_t compute(Reading) const override { refuseUnsupported(*this); }
  void store(int64_t, bool) const override { refuseUnsupported(*this); }
};

// TextDesc: a text of a configuration ROM.
class UnsupportedTextNode final : public TextBase {
 public:
  using TextBase::TextBase;
  EAccessMode typeMode() const override { return RO; }

 protected:
  std::string compute(Reading) const override { refuseUnsupported(*this); }
  void store(std::string_view, bool) const override { refuseUnsupported(*this); }
};

}  // namespace GENAPI_NAMESPACE
