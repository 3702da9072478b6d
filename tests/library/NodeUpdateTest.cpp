// Update callbacks, invalidation, verify mode.
#include <stdexcept>

#include "Device.h"
#include "Records.h"

namespace {

const char* const kNodes = R"(
  <Integer Name="Width"><pValue>Reg</pValue></Integer>
  <IntReg Name="Reg"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <pInvalidator>Trigger</pInvalidator><Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <Integer Name="Trigger"><Value>0</Value></Integer>)";

// What happens in a callback.
struct Observer {
  int calls = 0;
  NODE last = nullptr;
  void (*action)(Observer&) = nullptr;
  NODE node = nullptr;
  TCallbackHandle handle = 0;
  uint32_t actionResult = ~0u;

  static void update(NODE changed, void* self) {
    auto& observer = *static_cast<Observer*>(self);
    ++observer.calls;
    observer.last = changed;
    if (observer.action != nullptr) observer.action(observer);
  }
};

class NodeUpdate : public testing::Test {
 protected:
  void observe(NODE node, Observer& observer) {
    observer.node = node;
    ASSERT_OK(NRegisterUpdate(node, &Observer::update, &observer, &observer.handle));
  }
  Device device{kNodes};
};

TEST_F(NodeUpdate, ChangesReachTheNodeAndWhatDependsOnIt) {
  Observer width, reg, regAgain;
  observe(device.node("Width"), width);
  observe(device.node("Reg"), reg);
  observe(device.node("Reg"), regAgain);
  EXPECT_NE(reg.handle, regAgain.handle);
  EXPECT_OK(NSetAsInteger(device.node("Width"), 5));
  EXPECT_EQ(width.calls, 1);
  EXPECT_EQ(width.last, device.node("Width"));
  EXPECT_EQ(reg.calls, 1);
  EXPECT_EQ(regAgain.calls, 1);
  EXPECT_OK(NDeregisterUpdate(reg.node, reg.handle));
  EXPECT_OK(NInvalidate(device.node("Reg")));
  EXPECT_EQ(width.calls, 3);  // once for the invalidator Trigger, once for the register
  EXPECT_EQ(reg.calls, 1);
  EXPECT_EQ(regAgain.calls, 3);
}

TEST_F(NodeUpdate, InvalidatingDropsWhatTheInvalidatorsCover) {
  int64_t value = 0;
  ASSERT_OK(NGetAsInteger(device.node("Width"), &value));
  device.setInteger(0, 9);
  ASSERT_OK(NGetAsInteger(device.node("Width"), &value));
  EXPECT_EQ(value, 0);
  ASSERT_OK(NInvalidate(device.node("Reg")));
  ASSERT_OK(NGetAsInteger(device.node("Width"), &value));
  EXPECT_EQ(value, 9);
}

TEST_F(NodeUpdate, BadRegistrationsAreRefused) {
  TCallbackHandle handle = 4711;
  const NODE node = device.node("Width");
  EXPECT_FAILS(NRegisterUpdate(node, nullptr, nullptr, &handle), OXGENAPI_E_INVALID_ARGUMENT,
               "Callback function pointer must be set");
  EXPECT_EQ(handle, 4711);
  Observer observer;
  observe(node, observer);
  EXPECT_FAILS(NDeregisterUpdate(device.node("Reg"), observer.handle), OXGENAPI_E_NOT_PRESENT,
               "Given callback handle not present");  // another node's
  EXPECT_OK(NDeregisterUpdate(node, observer.handle));
  EXPECT_FAILS(NDeregisterUpdate(node, observer.handle), OXGENAPI_E_NOT_PRESENT, "Given callback handle not present");
}

TEST_F(NodeUpdate, ACallbackMayDeregisterItselfAndUseTheNode) {
  Observer observer;
  observer.action = [](Observer& self) {
    if (self.calls == 1) {
      int64_t value = 0;
      EXPECT_OK(NGetAsInteger(self.node, &value));
      EXPECT_EQ(value, 5);
      EXPECT_OK(NDeregisterUpdate(self.node, self.handle));
    }
  };
  observe(device.node("Width"), observer);
  EXPECT_OK(NSetAsInteger(observer.node, 5));
  EXPECT_OK(NSetAsInteger(observer.node, 6));
  EXPECT_EQ(observer.calls, 1);
}

TEST_F(NodeUpdate, ACallbackMayReleaseTheLastHandleOfItsNode) {
  Observer observer;
  NODE reg = nullptr;
  ASSERT_OK(NMGetNode(device.map, "Reg", reg));
  observe(reg, observer);
  observer.action = [](Observer& self) { OxIfaceContainerReleaseUseCounter(self.node); };
  EXPECT_OK(NSetAsInteger(device.node("Width"), 5));
  EXPECT_EQ(observer.calls, 1);
  EXPECT_FALSE(IsNode(reg));
  EXPECT_OK(NSetAsInteger(device.node("Width"), 6));
  EXPECT_EQ(observer.calls, 1);
}

TEST_F(NodeUpdate, ANodeThatEndsIsNotCalledForAnyMore) {
  Observer observer;
  NODE reg = nullptr;
  ASSERT_OK(NMGetNode(device.map, "Reg", reg));
  observe(reg, observer);
  OxIfaceContainerReleaseUseCounter(reg);
  EXPECT_OK(NSetAsInteger(device.node("Width"), 5));
  EXPECT_EQ(observer.calls, 0);
}

TEST_F(NodeUpdate, ACallbackMayLoadAnew) {
  Observer observer;
  observer.action = [](Observer& self) {
    self.actionResult = NMLoadXMLString(*reinterpret_cast<NODEMAP*>(self.handle), description(kNodes).c_str());
  };
  observe(device.node("Width"), observer);
  observer.handle = reinterpret_cast<TCallbackHandle>(&device.map);
  EXPECT_OK(NSetAsInteger(observer.node, 5));
  EXPECT_EQ(observer.actionResult, 0u);
}

TEST_F(NodeUpdate, ExceptionsOfCallbacksAreDroppedAndReported) {
  Observer observer, second;
  observer.action = [](Observer&) { throw std::runtime_error("not yours"); };
  observe(device.node("Width"), observer);
  observe(device.node("Width"), second);
  const Records records;
  EXPECT_OK(NSetAsInteger(observer.node, 5));
  EXPECT_EQ(device.integerAt(0), 5);
  EXPECT_EQ(second.calls, 1);
  EXPECT_EQ(records.texts(3), (std::vector<std::string>{"Width: External callback's C++ exception discarded"}));
  EXPECT_EQ(records.texts(0), (std::vector<std::string>(2, "Width: Node updated event")));
}

TEST_F(NodeUpdate, TheVerifyModeBelongsToTheNode) {
  TVerifyMode mode = VM_None;
  EXPECT_OK(NGetVerifyMode(device.node("Width"), &mode));
  EXPECT_EQ(mode, VM_WriteOnly);
  EXPECT_FAILS(NSetVerifyMode(device.node("Width"), static_cast<TVerifyMode>(4)), OXGENAPI_E_INVALID_ARGUMENT,
               "Unknown validation mode");
  const Records records;
  EXPECT_OK(NSetVerifyMode(device.node("Width"), VM_ReadWrite));
  EXPECT_EQ(records.texts(0), (std::vector<std::string>{"Width: Set verify mode to Read/Write"}));
  EXPECT_OK(NGetVerifyMode(device.node("Width"), &mode));
  EXPECT_EQ(mode, VM_ReadWrite);
  EXPECT_OK(NGetVerifyMode(device.node("Reg"), &mode));
  EXPECT_EQ(mode, VM_WriteOnly);
}

}  // namespace
