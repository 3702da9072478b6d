// Base class of the ports that clients connect to a node map.
#pragma once
#include "GenApi/IPortConstruct.h"

namespace GENAPI_NAMESPACE {

// GetAccessMode, Read and Write are the client's. An implementation must outlive its connection.
class CPortImpl : public IPortConstruct {
 public:
  CPortImpl();
  ~CPortImpl() override;
  void SetPortImpl(IPort* pPort) override;
  EYesNo GetSwapEndianess() override;
  // Tells the connected port node that the device changed; does nothing while unconnected.
  void InvalidateNode();

 protected:
  IPort* m_pPort = nullptr;
};

}  // namespace GENAPI_NAMESPACE
