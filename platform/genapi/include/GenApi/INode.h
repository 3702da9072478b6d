// What every node of a node map can tell and do.
#pragma once
#include <cstdint>

#include "Base/GCString.h"
#include "Base/GCStringVector.h"
#include "GenApi/Container.h"
#include "GenApi/IBase.h"

namespace GENAPI_NAMESPACE {

class CNodeCallback;
class INodeMap;
using CallbackHandleType = intptr_t;

class INode : virtual public IBase {
 public:
  // The node's name; both forms are the plain name, which is unique within a description.
  virtual GENICAM_NAMESPACE::gcstring GetName(bool FullQualified = false) const = 0;
  virtual ENameSpace GetNameSpace() const = 0;
  virtual EVisibility GetVisibility() const = 0;
  // Drops the caches of the node and of everything that depends on it, then fires callbacks.
  virtual void InvalidateNode() = 0;
  virtual bool IsCachable() const = 0;
  virtual EYesNo IsAccessModeCacheable() const = 0;
  virtual ECachingMode GetCachingMode() const = 0;
  // Milliseconds; -1 when the node has none.
  virtual int64_t GetPollingTime() const = 0;
  virtual GENICAM_NAMESPACE::gcstring GetToolTip() const = 0;
  virtual GENICAM_NAMESPACE::gcstring GetDescription() const = 0;
  virtual GENICAM_NAMESPACE::gcstring GetDisplayName() const = 0;
  virtual GENICAM_NAMESPACE::gcstring GetDeviceName() const = 0;
  // Nodes related by the link type, each once. The list is replaced.
  virtual void GetChildren(NodeList_t& Children, ELinkType LinkType = ctReadingChildren) const = 0;
  virtual void GetParents(NodeList_t& Parents) const = 0;
  // Takes ownership of the callback; the handle is unique in the process while registered. Null is
  // InvalidArgumentException.
  virtual CallbackHandleType RegisterCallback(CNodeCallback* pCallback) = 0;
  // Destroys the callback; false for an unknown handle.
  virtual bool DeregisterCallback(CallbackHandleType hCallback) = 0;
  virtual INodeMap* GetNodeMap() const = 0;
  // Hexadecimal text; empty when none.
  virtual GENICAM_NAMESPACE::gcstring GetEventID() const = 0;
  virtual bool IsStreamable() const = 0;
  virtual void GetPropertyNames(GENICAM_NAMESPACE::gcstring_vector& PropertyNames) const = 0;
  // False and empty texts when the node has no such property; several values are joined by tabs.
  virtual bool GetProperty(const GENICAM_NAMESPACE::gcstring& PropertyName, GENICAM_NAMESPACE::gcstring& ValueStr,
                           GENICAM_NAMESPACE::gcstring& AttributeStr) = 0;
  // Can only narrow what the node has of itself; fires callbacks.
  virtual void ImposeAccessMode(EAccessMode ImposedAccessMode) = 0;
  virtual void ImposeVisibility(EVisibility ImposedVisibility) = 0;
  // Null when none.
  virtual INode* GetAlias() const = 0;
  virtual INode* GetCastAlias() const = 0;
  virtual GENICAM_NAMESPACE::gcstring GetDocuURL() const = 0;
  virtual bool IsDeprecated() const = 0;
  virtual EInterfaceType GetPrincipalInterfaceType() const = 0;
  // True when the node can be reached from the category Root.
  virtual bool IsFeature() const = 0;
};

}  // namespace GENAPI_NAMESPACE
