// The register interface, put on top of the value interface that a register node has.
#pragma once
#include <cstring>
#include <vector>

#include "Base/GCException.h"
#include "GenApi/IRegister.h"
#include "nodes/IntegerFace.h"
#include "nodes/RegisterBlock.h"

namespace GENAPI_NAMESPACE {

template <class Face>
class RegisterFace : public Face, public IRegister {
 public:
  RegisterFace(NodeMap& map, NodeIndex index) : Face(map, index), block_(*this) {}

  void Set(const uint8_t* pBuffer, int64_t Length, bool Verify) override {
    this->writing(Verify, [&] {
      requireSupported();
      checkBuffer(pBuffer, Length);
      const EvaluationStep step(this->map(), *this);
      this->completeWrite(block_.writeStart(pBuffer, Length, block_.length()));
      if (Verify) this->checkErrors();
    });
  }
  void Get(uint8_t* pBuffer, int64_t Length, bool Verify, bool IgnoreCache) override {
    static_cast<void>(Verify);  // bytes have no limits to check
    this->reading([&] {
      requireSupported();
      checkBuffer(pBuffer, Length);
      const EvaluationStep step(this->map(), *this);
      const int64_t total = block_.length();
      block_.readStart(pBuffer, Length, total, IgnoreCache);
      if (Length == total && !this->isUncached() && step.isUnspoiled()) this->state().flags |= kValid;
    });
  }
  int64_t GetLength(bool) override {
    return this->asked([&] { return block_.length(); });
  }
  int64_t GetAddress(bool) override {
    return this->asked([&] {
      const EvaluationStep step(this->map(), *this);
      return block_.reportedAddress();
    });
  }

  EAccessMode typeMode() override { return block_.mode(); }
  void forgetContent() noexcept override { block_.forgetContent(); }
  void forgetPlace() noexcept override { block_.forgetPlace(); }
  bool mayUseWritten() const override { return block_.elementMode() == RW; }

 protected:
  RegisterBlock& block() { return block_; }
  // Throws for node types that load but cannot be used.
  virtual void requireSupported() const {}

 private:
  void checkBuffer(const void* buffer, int64_t length) {
    if (length < 0 || (!buffer && length > 0)) {
      throw INVALID_ARGUMENT_EXCEPTION("%s: no buffer of %ld bytes", zeroTerminated(this->name()).c_str(),
                                       static_cast<long>(length));
    }
    const int64_t total = block_.length();
    if (length > total) {
      throw OUT_OF_RANGE_EXCEPTION("%s: length %ld exceeds register length %ld", zeroTerminated(this->name()).c_str(),
                                   static_cast<long>(length), static_cast<long>(total));
    }
  }

  RegisterBlock block_;
};

}  // namespace GENAPI_NAMESPACE
