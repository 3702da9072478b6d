// The node types of the IIDC era: they load, list and link, and every access to their value is refused by name.
#pragma once
#include "Base/GCException.h"
#include "nodes/RegisterFace.h"
#include "nodes/TextFace.h"

namespace GENAPI_NAMESPACE {

// Throws RuntimeException "node type ... is not supported".
[[noreturn]] inline void refuseUnsupported(const NodeBase& node) {
  throw RUNTIME_EXCEPTION("%s: node type %s is not supported", node.map().pathTo(node).c_str(),
                          zeroTerminated(nodeTypeName(node.record().type)).c_str());
}

// AdvFeatureLock and SmartFeature: integers over a register whose protocol is not spoken here.
class UnsupportedIntegerNode final : public RegisterFace<IntegerFace> {
 public:
  using RegisterFace::RegisterFace;

 protected:
  int64_t fetch(Reading) override { refuseUnsupported(*this); }
  void store(int64_t, bool) override { refuseUnsupported(*this); }
  void requireSupported() const override { refuseUnsupported(*this); }
};

// IntKey: an entry of a configuration ROM.
class UnsupportedKeyNode final : public IntegerFace {
 public:
  using IntegerFace::IntegerFace;
  EAccessMode typeMode() override { return RO; }

 protected:
  int64_t fetch(Reading) override { refuseUnsupported(*this); }
  void store(int64_t, bool) override { refuseUnsupported(*this); }
};

// TextDesc: a text of a configuration ROM.
class UnsupportedTextNode final : public TextFace {
 public:
  using TextFace::TextFace;
  EAccessMode typeMode() override { return RO; }

 protected:
  std::string fetch(Reading) override { refuseUnsupported(*this); }
  void store(std::string_view, bool) override { refuseUnsupported(*this); }
};

}  // namespace GENAPI_NAMESPACE
