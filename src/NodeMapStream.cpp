#include "NodeMapStream.h"

#include <new>
#include <nlohmann/json.hpp>

#include "Failure.h"
#include "OxBase/OxBase.h"

namespace orxGenApi {
namespace {

const char* typeName(TNodeType type) {
  switch (type) {
    case NT_Boolean:
      return "Boolean";
    case NT_Category:
      return "Category";
    case NT_Command:
      return "Command";
    case NT_Enumeration:
      return "Enumeration";
    case NT_Float:
      return "Float";
    case NT_Integer:
      return "Integer";
    case NT_String:
      return "String";
    default:
      throw orx_error(OXGENAPI_E_UNSPECIFIED, "not a valid node type");
  }
}

std::string valueText(Node& node) {
  const TNodeType type = node.typed().type;
  if (type == NT_Category || type == NT_Command) return {};
  try {
    return node.readText(true);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (...) {  // a snapshot of a node that cannot be read is still a snapshot
    return {};
  }
}

}  // namespace

uint64_t NodeMapStream::interfaceId() noexcept {
  static const uint64_t id = OxRegisterInterface("OxGenApi_NodeMapStream");
  return id;
}

void NodeMapStream::push(Node& node) {
  const TypedNode& typed = node.typed();
  const nlohmann::json element = {{"Name", typed.name().c_str()},
                                  {"Display Name", typed.node->GetDisplayName().c_str()},
                                  {"Type", typeName(typed.type)},
                                  {"Value", valueText(node)}};
  constexpr int kCompact = -1;
  std::string text = element.dump(kCompact, ' ', false, nlohmann::json::error_handler_t::replace);

  const std::lock_guard guard(lock_);
  // Room first: what follows must not stop half way. Grown by half at a time, whatever the library would choose.
  const size_t needed = text_.size() + text.size() + 1;
  if (text_.capacity() < needed) text_.reserve(needed + needed / 2);
  if (text_ == "[]") {
    text_.pop_back();
  } else {
    text_.back() = ',';
  }
  text_ += text;
  text_ += ']';
}

}  // namespace orxGenApi
