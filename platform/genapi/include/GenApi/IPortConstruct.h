// The side of a port that is used when an implementation is connected to a port node.
#pragma once
#include "GenApi/IPort.h"

namespace GENAPI_NAMESPACE {

class IPortConstruct : virtual public IPort {
 public:
  // Called with the port node on connect and with null on disconnect.
  virtual void SetPortImpl(IPort* pPort) = 0;
  virtual EYesNo GetSwapEndianess() = 0;
};

}  // namespace GENAPI_NAMESPACE
