// The caller's register access: access modes, failures and their texts, replacing a port.
#include <new>
#include <stdexcept>

#include "Device.h"

namespace {

// What the callbacks of a port do next.
struct Script {
  int result = 0;
  uint32_t errorCode = 0;
  const char* errorText = nullptr;
  TAccessMode accessMode = AM_ReadWrite;
  void (*thrower)() = nullptr;
  int calls = 0;

  int run() {
    ++calls;
    if (errorText != nullptr) OxSetLastError(errorCode, errorText);
    if (thrower != nullptr) thrower();
    return result;
  }
  static int read(void* buffer, int64_t, int64_t length, void* self) {
    std::memset(buffer, 0, static_cast<size_t>(length));
    return static_cast<Script*>(self)->run();
  }
  static int write(const void*, int64_t, int64_t, void* self) { return static_cast<Script*>(self)->run(); }
  static TAccessMode mode(void* self) {
    static_cast<Script*>(self)->run();
    return static_cast<Script*>(self)->accessMode;
  }
};

class PortBridge : public testing::Test {
 protected:
  PortBridge() {
    device.load(description(integerRegister("Reg", 0x1A0, "<Cachable>NoCache</Cachable>") + "<Port Name=\"Other\"/>"));
  }
  void connect(TReadMem reader, TWriteMem writer, TPortAccessMode mode = nullptr) {
    ASSERT_OK(NMConnectPort(device.map, reader, writer, mode, &script));
  }
  Outcome read() {
    int64_t value = 0;
    return outcome(NGetAsInteger(device.node("Reg"), &value));
  }
  Outcome write() { return outcome(NSetAsInteger(device.node("Reg"), 1)); }
  int64_t accessMode() {
    int64_t mode = -1;
    EXPECT_OK(NInfoAsInteger(device.node("Device"), NI_AccessMode, &mode));
    return mode;
  }
  Device device;
  Script script;
};

TEST_F(PortBridge, TheAccessModeComesFromTheCallbackOrFromWhatExists) {
  connect(nullptr, nullptr);
  EXPECT_EQ(accessMode(), 0);
  connect(&Script::read, nullptr);
  EXPECT_EQ(accessMode(), 2);
  connect(nullptr, &Script::write);
  EXPECT_EQ(accessMode(), 3);
  connect(&Script::read, &Script::write);
  EXPECT_EQ(accessMode(), 4);
  for (const uint32_t mode : {0u, 1u, 2u, 3u, 4u, 5u, 0xffffffffu}) {
    script.accessMode = static_cast<TAccessMode>(mode);
    connect(&Script::read, &Script::write, &Script::mode);
    EXPECT_EQ(accessMode(), mode <= 4 ? static_cast<int64_t>(mode) : 0) << mode;
  }
}

TEST_F(PortBridge, FailuresCarryTheCallersTextIfItWasSetUnderTheSameCode) {
  connect(&Script::read, &Script::write);
  const auto denied = static_cast<int>(OXGENAPI_E_ACCESS_DENIED);
  const auto unsupported = static_cast<int>(OXGENAPI_E_NOT_SUPPORTED);
  const char *const kRead = "Address 0x1a0 is not readable", *const kWrite = "Address 0x1a0 is not writable";
  const struct {
    Script script;
    const char *read, *write;  // the texts of refusals
  } cases[] = {
      {{.result = 0}, nullptr, nullptr},
      {{.result = 5}, nullptr, nullptr},
      {{.result = denied}, kRead, kWrite},
      {{.result = denied, .errorCode = OXGENAPI_E_ACCESS_DENIED, .errorText = "unplugged"}, "unplugged", "unplugged"},
      {{.result = denied, .errorCode = OXGENAPI_E_RUNTIME, .errorText = "of another code"}, kRead, kWrite},
      {{.result = unsupported}, "Read operation not supported", "Write operation not supported"},
      {{.result = unsupported, .errorCode = OXGENAPI_E_NOT_SUPPORTED, .errorText = "not today"},
       "not today",
       "not today"},
      {{.result = -1}, kRead, kWrite},
      {{.result = -1, .errorCode = 0xffffffff, .errorText = "timeout"}, "timeout", "timeout"},
  };
  for (const auto& c : cases) {
    const auto expected = [&](uint32_t code, const char* text) {
      return text == nullptr ? succeeds() : fails(c.script.result == -1 ? OXGENAPI_E_UNSPECIFIED : code, text);
    };
    script = c.script;
    OxSetLastError(0, "");
    EXPECT_EQ(read(), expected(OXGENAPI_E_NOT_READABLE, c.read));
    OxSetLastError(0, "");
    EXPECT_EQ(write(), expected(OXGENAPI_E_NOT_WRITABLE, c.write));
  }
}

// The names of these classes are the engine's own: even they must not be mistaken for its failures.
TEST_F(PortBridge, ExceptionsOfCallbacksGoNoFurther) {
  connect(&Script::read, &Script::write);
  void (*const throwers[])() = {[] { throw 7; }, [] { throw std::runtime_error("own text"); }, [] { throw "text"; }};
  for (auto* thrower : throwers) {
    script.thrower = thrower;
    EXPECT_EQ(read(), fails(OXGENAPI_E_UNSPECIFIED, "Unspecified error"));
    EXPECT_EQ(write(), fails(OXGENAPI_E_UNSPECIFIED, "Unspecified error"));
  }
  script.thrower = [] { throw std::bad_alloc(); };
  EXPECT_EQ(read(), fails(OXGENAPI_E_OUT_OF_MEMORY, "Unspecified error"));
}

TEST_F(PortBridge, AnUnknownPortNameChangesNothing) {
  connect(&Script::read, &Script::write);
  for (const auto& [name, text] :
       std::initializer_list<std::pair<const char*, const char*>>{{"Nowhere", "Node 'Nowhere' not present in NodeMap"},
                                                                  {"Reg", "Node 'Reg' is not a port"},
                                                                  {nullptr, "Node '' not present in NodeMap"}})
    EXPECT_FAILS(NMConnectPortEx(device.map, nullptr, nullptr, nullptr, nullptr, name), OXGENAPI_E_NOT_PRESENT, text);
  EXPECT_EQ(read(), succeeds());
  EXPECT_OK(NMConnectPortExW(device.map, &Script::read, nullptr, nullptr, &script, L"Other"));
  EXPECT_OK(NMConnectPortEx(device.map, &Script::read, nullptr, nullptr, &script, "Other"));
}

// The engine is inside the port's callback while the port is replaced, or its description is.
TEST_F(PortBridge, ACallbackMayReplaceItsPortOrLoadAnew) {
  struct Context {
    NODEMAP map;
    Script* next;
    bool loads;
    int calls;
    static int read(void* buffer, int64_t, int64_t length, void* self) {
      auto& context = *static_cast<Context*>(self);
      std::memset(buffer, 0, static_cast<size_t>(length));
      ++context.calls;
      if (context.loads)
        return static_cast<int>(NMLoadXMLString(context.map, description(integerRegister("Reg", 0)).c_str()));
      return static_cast<int>(NMConnectPort(context.map, &Script::read, nullptr, nullptr, context.next));
    }
  };
  const NODE reg = device.node("Reg");
  for (const bool loads : {false, true}) {
    Context context{device.map, &script, loads, 0};
    ASSERT_OK(NMConnectPort(device.map, &Context::read, nullptr, nullptr, &context));
    int64_t value = -1;
    NGetAsInteger(reg, &value);
    EXPECT_EQ(context.calls, 1);
    NGetAsInteger(reg, &value);
    EXPECT_EQ(context.calls, 1);
    ASSERT_OK(NMConnectPort(device.map, &Script::read, nullptr, nullptr, &script));
  }
  int64_t value = -1;
  EXPECT_EQ(NGetAsInteger(reg, &value), OXGENAPI_E_NOT_READABLE);  // of the description before
}

}  // namespace
