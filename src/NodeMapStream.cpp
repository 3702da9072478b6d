#include "NodeMapStream.h"

#include <new>
#include <nlohmann/json.hpp>
#include <utility>

#include "Failure.h"
#include "OxBase/OxBase.h"

namespace orxGenApi {
namespace {

const char* typeName(TNodeType type) {
  switch (type) {
    case NT_Boolean: return "Boolean";
    case NT_Category: return "Category";
    case NT_Command: return "Command";
    case NT_Enumeration: return "Enumeration";
    case NT_Float: return "Float";
    case NT_Integer: return "Integer";
    case NT_String: return "String";
    default: throw orx_error(OXGENAPI_E_UNSPECIFIED, "not a valid node type");
  }
}

std::string valueText(Node& node) {
  const TNodeType type = node.typed().type;
  if (type == NT_Category || type == NT_Command) return {};
  try {
    return node.readText(true).c_str();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (...) {  // a snapshot of a node that cannot be read is still a snapshot
    return {};
  }
}

// As JSON. A text alone: the library's objects and arrays need memory even to end, and must end without.
void appendQuoted(std::string& text, std::string value) {
  constexpr int kCompact = -1;
  text += nlohmann::json(std::move(value)).dump(kCompact, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace

uint64_t NodeMapStream::interfaceId() noexcept {
  static const uint64_t id = OxRegisterInterface("OxGenApi_NodeMapStream");
  return id;
}

void NodeMapStream::push(Node& node) {
  const TypedNode& typed = node.typed();
  std::string text = R"({"Display Name":)";
  appendQuoted(text, typed.node->GetDisplayName().c_str());
  appendQuoted(text += R"(,"Name":)", typed.name().c_str());
  text.append(R"(,"Type":")").append(typeName(typed.type));
  appendQuoted(text += R"(","Value":)", valueText(node));
  text += '}';

  const std::lock_guard guard(lock_);
  // Room first: what follows must not stop half way. Grown by half at a time, whatever the library would choose.
  const size_t needed = text_.size() + text.size() + 1;
  if (text_.capacity() < needed) text_.reserve(needed + needed / 2);
  if (text_ == "[]")
    text_.pop_back();
  else
    text_.back() = ',';
  text_ += text;
  text_ += ']';
}

}  // namespace orxGenApi
