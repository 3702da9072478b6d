// What every node with a value offers: its value as text.
#pragma once
#include "Base/GCString.h"
#include "GenApi/IBase.h"

namespace GENAPI_NAMESPACE {

class INode;

class IValue : virtual public IBase {
 public:
  // The node behind this value; never null for a node of a node map.
  virtual INode* GetNode() = 0;
  // The value as text in the C locale. Throws AccessException when not readable; with Verify also OutOfRangeException
  // when the value read breaks the node's own limits. IgnoreCache reads past every cache of the value chain.
  virtual GENICAM_NAMESPACE::gcstring ToString(bool Verify = false, bool IgnoreCache = false) = 0;
  // Writes the value given as text. Throws AccessException (not writable, only with Verify), InvalidArgumentException
  // (the text does not parse), OutOfRangeException (limits, only with Verify), and what the port throws.
  virtual void FromString(const GENICAM_NAMESPACE::gcstring& ValueStr, bool Verify = true) = 0;
  // True while the node holds a valid cached value.
  virtual bool IsValueCacheValid() const = 0;
};

}  // namespace GENAPI_NAMESPACE
