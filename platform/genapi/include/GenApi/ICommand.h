// Commands.
#pragma once
#include "GenApi/IValue.h"

namespace GENAPI_NAMESPACE {

class ICommand : virtual public IValue {
 public:
  // Starts the command; it may still be executing on return.
  virtual void Execute(bool Verify = true) = 0;
  void operator()() { Execute(); }
  // Asks the device, past every cache, whether the command has finished. Fires callbacks when it just has.
  virtual bool IsDone(bool Verify = true) = 0;
};

}  // namespace GENAPI_NAMESPACE
