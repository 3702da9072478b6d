#include "GenApi/INode.h"
#include "GenApi/PortImpl.h"

namespace GENAPI_NAMESPACE {

CPortImpl::CPortImpl() = default;
CPortImpl::~CPortImpl() = default;
void CPortImpl::SetPortImpl(IPort* pPort) { m_pPort = pPort; }
EYesNo CPortImpl::GetSwapEndianess() { return No; }
void CPortImpl::InvalidateNode() {
  if (auto* node = dynamic_cast<INode*>(m_pPort)) node->InvalidateNode();
}

}  // namespace GENAPI_NAMESPACE
