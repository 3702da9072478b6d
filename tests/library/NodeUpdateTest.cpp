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
  EXPECT_EQ(device.value("Width"), 5);
  device.setInteger(0, 9);
  EXPECT_EQ(device.value("Width"), 5);
  EXPECT_OK(NInvalidate(device.node("Reg")));
  EXPECT_EQ(device.value("Width"), 9);
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
  for (const TCallbackHandle unknown : {TCallbackHandle{0}, TCallbackHandle{-1}, observer.handle + 1000})
    EXPECT_FAILS(NDeregisterUpdate(node, unknown), OXGENAPI_E_NOT_PRESENT, "Given callback handle not present");
  EXPECT_OK(NDeregisterUpdate(node, observer.handle));
  EXPECT_FAILS(NDeregisterUpdate(node, observer.handle), OXGENAPI_E_NOT_PRESENT, "Given callback handle not present");
}

// Each case acts in the first callback of "Width", whose node has a second observer; two writes of 5 and 6 follow.
TEST_F(NodeUpdate, ACallbackMayUseTheNodeAndTheRegistrations) {
  static Observer second, added;
  static NODE reg, trigger;
  struct Case {
    const char* what;
    void (*act)(Observer& self);
    int calls, secondCalls;  // in the end
    int64_t value;           // of "Width" in the end
  };
  const Case cases[] = {
      {"read it",
       [](Observer& self) {
         int64_t value = 0;
         EXPECT_OK(NGetAsInteger(self.node, &value));
         EXPECT_EQ(value, 5);
       },
       2, 2, 6},
      {"set it", [](Observer& self) { EXPECT_OK(NSetAsInteger(self.node, 7)); }, 3, 3, 6},
      {"set another feature", [](Observer&) { EXPECT_OK(NSetAsInteger(trigger, 1)); }, 3, 3, 6},
      {"invalidate", [](Observer&) { EXPECT_OK(NInvalidate(reg)); }, 4, 4, 6},  // once for Trigger, once for Reg
      {"change the verify mode", [](Observer& self) { EXPECT_OK(NSetVerifyMode(self.node, VM_None)); }, 2, 2, 6},
      {"end its own registration, once",
       [](Observer& self) {
         EXPECT_OK(NDeregisterUpdate(self.node, self.handle));
         EXPECT_FAILS(NDeregisterUpdate(self.node, self.handle), OXGENAPI_E_NOT_PRESENT,
                      "Given callback handle not present");
       },
       1, 2, 6},
      {"end one whose turn comes later", [](Observer&) { EXPECT_OK(NDeregisterUpdate(second.node, second.handle)); }, 2,
       0, 6},
      {"register one more",
       [](Observer& self) { EXPECT_OK(NRegisterUpdate(self.node, &Observer::update, &added, &added.handle)); }, 2, 2,
       6},
  };
  for (const Case& each : cases) {
    Device own{kNodes};
    const NODE width = own.node("Width");
    reg = own.node("Reg");
    trigger = own.node("Trigger");
    Observer observer;
    second = added = {};
    static void (*act)(Observer&);
    act = each.act;
    observer.action = [](Observer& self) {
      if (self.calls == 1) act(self);
    };
    observe(width, observer);
    observe(width, second);
    EXPECT_OK(NSetAsInteger(width, 5));
    EXPECT_EQ(added.calls, 0);  // not for the change that is being told
    EXPECT_OK(NSetAsInteger(width, 6));
    EXPECT_EQ(added.calls, added.handle != 0 ? 1 : 0);
    EXPECT_EQ(observer.calls, each.calls) << each.what;
    EXPECT_EQ(second.calls, each.secondCalls) << each.what;
    EXPECT_EQ(own.integerAt(0), each.value) << each.what;
  }
}

TEST_F(NodeUpdate, ACallbackMayReleaseTheLastHandlesOfNodesAndNodeMap) {
  static NODEMAP map;
  static NODE width, reg;
  std::vector<uint8_t> memory(8);
  ASSERT_OK(CreateNodeMap(map));
  ASSERT_OK(NMLoadXMLString(map, description(kNodes).c_str()));
  const auto write = [](const void* bytes, int64_t, int64_t length, void* to) {
    std::memcpy(static_cast<std::vector<uint8_t>*>(to)->data(), bytes, static_cast<size_t>(length));
    return 0;
  };
  ASSERT_OK(NMConnectPort(map, nullptr, write, nullptr, &memory));
  ASSERT_OK(NMGetNode(map, "Width", width));
  ASSERT_OK(NMGetNode(map, "Reg", reg));
  Observer ofWidth, ofReg;
  observe(width, ofWidth);
  observe(reg, ofReg);
  ofWidth.action = [](Observer&) {
    for (void* handle : {static_cast<void*>(map), static_cast<void*>(reg), static_cast<void*>(width)})
      EXPECT_GE(OxIfaceContainerReleaseUseCounter(handle), 0);
  };
  EXPECT_OK(NSetAsInteger(width, 5));
  EXPECT_EQ(memory[0], 5);
  EXPECT_EQ(ofWidth.calls, 1);
  EXPECT_EQ(ofReg.calls, 0);  // its turn would have come later
  EXPECT_FALSE(IsNode(width));
  EXPECT_FALSE(IsNode(reg));
  EXPECT_FALSE(IsNodeMap(map));
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
  for (const TVerifyMode each : {VM_None, VM_WriteOnly, VM_ReadOnly, VM_ReadWrite}) {
    EXPECT_OK(NSetVerifyMode(device.node("Width"), each));
    EXPECT_OK(NGetVerifyMode(device.node("Width"), &mode));
    EXPECT_EQ(mode, each);
  }
  EXPECT_EQ(records.texts(0),
            (std::vector<std::string>{"Width: Set verify mode to None", "Width: Set verify mode to Write-only",
                                      "Width: Set verify mode to Read-only", "Width: Set verify mode to Read/Write"}));
  EXPECT_OK(NGetVerifyMode(device.node("Reg"), &mode));
  EXPECT_EQ(mode, VM_WriteOnly);
}

}  // namespace
