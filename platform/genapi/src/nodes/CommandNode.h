// Command: writes a value that the device takes as an order, and asks whether it has finished.
#pragma once
#include "GenApi/ICommand.h"
#include "nodes/ValueNode.h"

namespace GENAPI_NAMESPACE {

class CommandNode final : public ValueNode<ICommand> {
 public:
  CommandNode(Device& device, NodeIndex index);

  // IValue, ICommand
  bool IsValueCacheValid() const override { return link_ == kNoNode; }
  void Execute(bool Verify) override;
  bool IsDone(bool Verify) override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfICommand; }

  // inner operations
  EAccessMode typeMode() const override;
  // "1" while the command is under way. Only reads: IsDone and polling notice completion.
  std::string readText(Reading how) const override;
  void writeText(std::string_view value, bool verify) const override;

  // For polling: only a command that is executing and can be asked is polled. Each start from rest is counted.
  bool isExecuting() const { return evaluation().isActive(index()); }
  uint32_t starts() const { return evaluation().activity(index()).turns; }
  bool canBeAsked() const;
  // Asks the device past every cache; true when it has finished. Noticing that it just has drops and collects
  // everything that depends on the command and its source.
  bool askDevice() const;

 private:
  void start(bool verify) const;
  int64_t commandValue() const;
  // Whether the device still shows the command value; asked past every cache.
  bool isUnderWay() const;

  const NodeIndex link_, commandLink_;
  const int64_t command_;
};

}  // namespace GENAPI_NAMESPACE
