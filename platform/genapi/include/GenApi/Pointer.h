// Smart pointers that cast: CIntegerPtr width = nodeMap->GetNode("Width").
#pragma once
#include "Base/GCException.h"
#include "GenApi/IBoolean.h"
#include "GenApi/ICategory.h"
#include "GenApi/IChunkPort.h"
#include "GenApi/ICommand.h"
#include "GenApi/IDeviceInfo.h"
#include "GenApi/IEnumeration.h"
#include "GenApi/IFloat.h"
#include "GenApi/IInteger.h"
#include "GenApi/INode.h"
#include "GenApi/INodeMap.h"
#include "GenApi/IPortConstruct.h"
#include "GenApi/IRegister.h"
#include "GenApi/ISelector.h"
#include "GenApi/IString.h"

namespace GENAPI_NAMESPACE {

// Holds what dynamic_cast gives; null is allowed, dereferencing null throws LogicalErrorException.
template <class T, class B = IBase>
class CPointer {
 public:
  CPointer() = default;
  CPointer(B* pB) : m_pT(dynamic_cast<T*>(pB)) {}  // NOLINT: an implicit cast is what it is for
  virtual ~CPointer() = default;
  CPointer(const CPointer&) = default;
  CPointer& operator=(const CPointer&) = default;
  CPointer& operator=(B* pB) {
    m_pT = dynamic_cast<T*>(pB);
    return *this;
  }
  operator T*() const noexcept { return m_pT; }  // null stays null
  T& operator*() const { return *checked(); }
  T& operator()() const { return *checked(); }
  T* operator->() const { return checked(); }
  bool IsValid() const noexcept { return m_pT != nullptr; }
  explicit operator bool() const noexcept { return m_pT != nullptr; }
  bool operator==(const CPointer& other) const { return m_pT == other.m_pT; }
  bool operator==(T* pT) const { return m_pT == pT; }  // takes NULL and nullptr, too

 protected:
  T* checked() const {
    if (!m_pT) throw LOGICAL_ERROR_EXCEPTION("NULL pointer dereferenced");
    return m_pT;
  }
  T* m_pT = nullptr;
};

using CBasePtr = CPointer<IBase>;
using CNodePtr = CPointer<INode>;
using CValuePtr = CPointer<IValue>;
using CIntegerPtr = CPointer<IInteger>;
using CBooleanPtr = CPointer<IBoolean>;
using CCommandPtr = CPointer<ICommand>;
using CStringPtr = CPointer<IString>;
using CRegisterPtr = CPointer<IRegister>;
using CEnumerationPtr = CPointer<IEnumeration>;
using CEnumEntryPtr = CPointer<IEnumEntry>;
using CCategoryPtr = CPointer<ICategory>;
using CPortPtr = CPointer<IPort>;
using CPortConstructPtr = CPointer<IPortConstruct>;
using CChunkPortPtr = CPointer<IChunkPort>;
using CSelectorPtr = CPointer<ISelector>;
using CNodeMapPtr = CPointer<INodeMap, INodeMap>;
using CDeviceInfoPtr = CPointer<IDeviceInfo, INodeMap>;

class CFloatPtr : public CPointer<IFloat> {
 public:
  CFloatPtr() = default;
  CFloatPtr(IBase* pB) : CPointer<IFloat>(pB) {}  // NOLINT: an implicit cast is what it is for
  CFloatPtr& operator=(IBase* pB) {
    CPointer<IFloat>::operator=(pB);
    return *this;
  }
  // The node's cast alias as that type, or null.
  IInteger* GetIntAlias() const { return dynamic_cast<IInteger*>(castAlias()); }
  IEnumeration* GetEnumAlias() const { return dynamic_cast<IEnumeration*>(castAlias()); }

 private:
  INode* castAlias() const { return checked()->GetNode()->GetCastAlias(); }
};

template <class T, class B>
bool IsReadable(const CPointer<T, B>& p) {
  return p.IsValid() && IsReadable(p->GetAccessMode());
}
template <class T, class B>
bool IsWritable(const CPointer<T, B>& p) {
  return p.IsValid() && IsWritable(p->GetAccessMode());
}
template <class T, class B>
bool IsAvailable(const CPointer<T, B>& p) {
  return p.IsValid() && IsAvailable(p->GetAccessMode());
}
template <class T, class B>
bool IsImplemented(const CPointer<T, B>& p) {
  return p.IsValid() && IsImplemented(p->GetAccessMode());
}
}  // namespace GENAPI_NAMESPACE
