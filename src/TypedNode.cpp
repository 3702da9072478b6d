#include "TypedNode.h"

namespace orxGenApi {
namespace {

template <class Interface>
bool is(GENAPI_NAMESPACE::INode* node, Interface*& interface) noexcept {
  interface = dynamic_cast<Interface*>(node);
  return interface != nullptr;
}

}  // namespace

TypedNode::TypedNode(GENAPI_NAMESPACE::INode* engineNode) noexcept
    : node(engineNode), value(dynamic_cast<GENAPI_NAMESPACE::IValue*>(engineNode)), type(NT_Other), boolean(nullptr) {
  // The order counts: an integer register is an integer, never a register.
  if (is(node, boolean))
    type = NT_Boolean;
  else if (is(node, integer))
    type = NT_Integer;
  else if (is(node, command))
    type = NT_Command;
  else if (is(node, enumeration))
    type = NT_Enumeration;
  else if (is(node, real))
    type = NT_Float;
  else if (is(node, string))
    type = NT_String;
  else if (is(node, entry))
    type = NT_EnumEntry;
  else if (is(node, category))
    type = NT_Category;
  else if (is(node, port))
    type = NT_Port;
  else if (is(node, reg))
    type = NT_Register;
}

}  // namespace orxGenApi
