// Bytes below the typed values: a port's address space, a register's contents.
#include "Node.h"

namespace orxGenApi {
namespace {

void checkMemoryAccess(const TypedNode& node, const void* buffer, int64_t size) {
  if (node.type != NT_Port) throw orx_error(OXGENAPI_E_NOT_SUPPORTED, "Only port nodes support memory access");
  if (buffer == nullptr || size == 0) throw orx_error(OXGENAPI_E_INVALID_ARGUMENT, "Invalid buffer");
}

}  // namespace

uint32_t Node::GetAsMemory(int64_t address, void* buffer, int64_t size) noexcept {
  return guarded(operation("::GetAsMemory", kReading), [&] {
    checkMemoryAccess(typed_, buffer, size);
    typed_.port->Read(buffer, address, size);
  });
}

uint32_t Node::SetAsMemory(int64_t address, const void* buffer, int64_t size) noexcept {
  // Raw bytes are no value: their failures have the same codes in both directions.
  return guarded(operation("::SetAsMemory", kReading), [&] {
    checkMemoryAccess(typed_, buffer, size);
    typed_.port->Write(buffer, address, size);
  });
}

uint32_t Node::GetAsRegisterData(void* buffer, int64_t* size) noexcept {
  return guarded(operation("::GetAsRegisterData", kReading), [&] {
    if (typed_.type != NT_Register)
      throw orx_error(OXGENAPI_E_NOT_SUPPORTED, "The node does not implement the IRegister interface");
    if (buffer == nullptr)
      *size = typed_.reg->GetLength();
    else
      typed_.reg->Get(static_cast<uint8_t*>(buffer), *size, false, false);
  });
}

}  // namespace orxGenApi
