// Port: the node through which registers reach whatever implementation is connected.
#pragma once
#include "GenApi/IChunkPort.h"
#include "GenApi/IPortConstruct.h"
#include "nodes/NodeBase.h"

namespace GENAPI_NAMESPACE {

class PortNode final : public NodeBase, public IPortConstruct, public IChunkPort, public IRegisterPort {
 public:
  PortNode(Device& device, NodeIndex index);
  ~PortNode() override;

  // IPort, straight to the implementation
  void Read(void* pBuffer, int64_t Address, int64_t Length) override;
  void Write(const void* pBuffer, int64_t Address, int64_t Length) override;
  // IPortConstruct: connects an implementation, as INodeMap::Connect does
  void SetPortImpl(IPort* pPort) override;
  EYesNo GetSwapEndianess() override { return swaps_ ? Yes : No; }
  // IChunkPort
  GENICAM_NAMESPACE::gcstring GetChunkID() const override;
  EYesNo CacheChunkData() const override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIPort; }

  // inner operations
  EAccessMode typeMode() const override;
  void connect(IPort* implementation);
  IPort* implementation() const { return implementation_; }
  // The description gives the chunk ID itself, not through another node.
  bool hasFixedChunkId() const { return !find(Element::pChunkID); }
  // Bytes of a register; in the order that SwapEndianess asks for.
  void readRegister(uint8_t* buffer, int64_t address, int64_t bytes) override;
  void writeRegister(const uint8_t* buffer, int64_t address, int64_t bytes) override;
  // A negative address counts from the end of the attached chunk: the address from its start. Others stay.
  int64_t fromStart(int64_t address);

 private:
  IPort& connected(int64_t bytes) const;
  void requireWholeGroups(int64_t address, int64_t bytes) const;

  IPort* implementation_ = nullptr;
  bool swaps_ = false;
};

}  // namespace GENAPI_NAMESPACE
