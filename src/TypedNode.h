// An engine node with its kind and the interface of that kind, found once.
#pragma once
#include "GenApi/GenApi.h"
#include "OxGenApi/Types.h"

namespace orxGenApi {

struct TypedNode {
  // Tests the node's interfaces in a fixed order; the first one it has decides its kind.
  explicit TypedNode(GENAPI_NAMESPACE::INode* engineNode) noexcept;

  GENAPI_NAMESPACE::gcstring name() const { return node->GetName(true); }

  GENAPI_NAMESPACE::INode* node;
  GENAPI_NAMESPACE::IValue* value;  // null for ports
  TNodeType type;
  // The member that the kind names; none for NT_Other.
  union {
    GENAPI_NAMESPACE::IBoolean* boolean;
    GENAPI_NAMESPACE::IInteger* integer;
    GENAPI_NAMESPACE::ICommand* command;
    GENAPI_NAMESPACE::IEnumeration* enumeration;
    GENAPI_NAMESPACE::IFloat* real;
    GENAPI_NAMESPACE::IString* string;
    GENAPI_NAMESPACE::IEnumEntry* entry;
    GENAPI_NAMESPACE::ICategory* category;
    GENAPI_NAMESPACE::IPort* port;
    GENAPI_NAMESPACE::IRegister* reg;
  };
};

}  // namespace orxGenApi
