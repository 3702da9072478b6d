// The register interface, put on top of the value interface that a register node has.
#pragma once
#include "GenApi/IRegister.h"
#include "nodes/RegisterBlock.h"

namespace GENAPI_NAMESPACE {

template <class Base>
class RegisterBase : public Base, public IRegister {
 public:
  RegisterBase(Device& device, NodeIndex index) : Base(device, index), block_(*this) {}

  void Set(const uint8_t* pBuffer, int64_t Length, bool Verify) override {
    this->writing(Verify, [&] {
      requireSupported();
      checkBuffer(pBuffer, Length);
      this->write(Verify, [&] { return block_.write(pBuffer, Length, block_.length()); });
    });
  }
  void Get(uint8_t* pBuffer, int64_t Length, bool Verify, bool IgnoreCache) override {
    static_cast<void>(Verify);  // bytes have no limits to check
    this->reading([&] {
      requireSupported();
      checkBuffer(pBuffer, Length);
      const Evaluation::Frame frame(this->evaluation(), this->index());
      const int64_t total = block_.length();
      block_.read(pBuffer, Length, total, IgnoreCache);
      if (Length == total) this->evaluation().noteReading(frame);
    });
  }
  int64_t GetLength(bool) override {
    return this->asking([&] { return block_.length(); });
  }
  int64_t GetAddress(bool) override {
    return this->asking([&] {
      const Evaluation::Frame frame(this->evaluation(), this->index());
      return block_.reportedAddress();
    });
  }

  EAccessMode typeMode() const override { return block_.mode(); }

 protected:
  const RegisterBlock& block() const { return block_; }
  // Throws for node types that load but cannot be used.
  virtual void requireSupported() const {}

 private:
  void checkBuffer(const void* buffer, int64_t length) const {
    if (length < 0 || (!buffer && length > 0))
      refuse<InvalidArgumentException>("{}: no buffer of {} bytes", this->name(), length);
    const int64_t total = block_.length();
    if (length > total)
      refuse<OutOfRangeException>("{}: length {} exceeds register length {}", this->name(), length, total);
  }

  const RegisterBlock block_;
};

}  // namespace GENAPI_NAMESPACE
