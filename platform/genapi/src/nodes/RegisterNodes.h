// Nodes whose value lies in a register of their own: IntReg, MaskedIntReg, FloatReg, StringReg, Register.
#pragma once
#include "nodes/FloatFace.h"
#include "nodes/IntegerFace.h"
#include "nodes/RegisterFace.h"
#include "nodes/TextFace.h"

namespace GENAPI_NAMESPACE {

// IntReg, and MaskedIntReg with the bits it names.
class IntRegNode final : public RegisterFace<IntegerFace> {
 public:
  IntRegNode(NodeMap& map, NodeIndex index);
  std::string_view unit() override;
  ERepresentation representation() override;

 protected:
  int64_t fetch(Reading how) override;
  void store(int64_t value, bool verify) override;
  int64_t fetchMin() override;
  int64_t fetchMax() override;

 private:
  struct Field {
    int64_t bytes;  // of the whole register
    int shift, width;
  };
  Field field();

  bool bigEndian_ = false;
  bool signed_ = false;
  bool masked_ = false;
  uint8_t firstBit_ = 0;  // LSB and MSB as the description counts them
  uint8_t lastBit_ = 0;
};

class FloatRegNode final : public RegisterFace<FloatFace> {
 public:
  FloatRegNode(NodeMap& map, NodeIndex index);
  std::string_view unit() override;
  ERepresentation representation() override;
  EDisplayNotation displayNotation() override;
  int64_t displayPrecision() override;

 protected:
  double fetch(Reading how) override;
  void store(double value, bool verify) override;
  double fetchMin() override { return -fetchMax(); }
  double fetchMax() override;

 private:
  int64_t bytes();

  bool bigEndian_ = false;
};

class StringRegNode final : public RegisterFace<TextFace> {
 public:
  using RegisterFace::RegisterFace;
  int64_t textMaxLength() override { return block().length(); }

 protected:
  std::string fetch(Reading how) override;
  void store(std::string_view value, bool verify) override;
};

// Bytes without a meaning of their own; as text "0x" and two digits per byte. ConfRom loads as one and refuses its use.
class RegisterNode final : public RegisterFace<NodeBase> {
 public:
  using RegisterFace::RegisterFace;
  INode* GetNode() override { return this; }
  GENICAM_NAMESPACE::gcstring ToString(bool Verify, bool IgnoreCache) override;
  void FromString(const GENICAM_NAMESPACE::gcstring& ValueStr, bool Verify) override;
  bool IsValueCacheValid() const override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIRegister; }

 protected:
  void requireSupported() const override;
};

}  // namespace GENAPI_NAMESPACE
