// Nodes whose value lies in a register of their own: IntReg, MaskedIntReg, FloatReg, StringReg, Register.
#pragma once
#include "nodes/FloatBase.h"
#include "nodes/IntegerBase.h"
#include "nodes/RegisterBase.h"
#include "nodes/TextBase.h"

namespace GENAPI_NAMESPACE {

// IntReg, and MaskedIntReg with the bits it names.
class IntRegNode final : public RegisterBase<IntegerBase> {
 public:
  IntRegNode(Device& device, NodeIndex index);

 protected:
  int64_t compute(Reading how) const override;
  void store(int64_t value, bool verify) const override;
  int64_t computeMin() const override;
  int64_t computeMax() const override;

 private:
  struct Field {
    int64_t bytes;  // of the whole register
    int shift, width;
  };
  Field field() const;

  bool bigEndian_ = false;
  bool signed_ = false;
  bool masked_ = false;
  uint8_t firstBit_ = 0;  // LSB and MSB as the description counts them
  uint8_t lastBit_ = 0;
};

class FloatRegNode final : public RegisterBase<FloatBase> {
 public:
  FloatRegNode(Device& device, NodeIndex index);

 protected:
  double compute(Reading how) const override;
  void store(double value, bool verify) const override;
  double computeMin() const override { return -computeMax(); }
  double computeMax() const override;

 private:
  int64_t bytes() const;

  bool bigEndian_ = false;
};

class StringRegNode final : public RegisterBase<TextBase> {
 public:
  using RegisterBase::RegisterBase;
  int64_t textMaxLength() const override { return block().length(); }

 protected:
  std::string compute(Reading how) const override;
  void store(std::string_view value, bool verify) const override;
};

// Bytes without a meaning of their own; as text "0x" and two digits per byte. ConfRom loads as one and refuses its use.
class RegisterNode final : public RegisterBase<NodeBase> {
 public:
  using RegisterBase::RegisterBase;
  INode* GetNode() override { return this; }
  GENICAM_NAMESPACE::gcstring ToString(bool Verify, bool IgnoreCache) override;
  void FromString(const GENICAM_NAMESPACE::gcstring& ValueStr, bool Verify) override;
  bool IsValueCacheValid() const override { return isValueValid(); }
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIRegister; }

 protected:
  void requireSupported() const override;
};

}  // namespace GENAPI_NAMESPACE
