// Devices that fail: each access of each call fails once, in several ways. The call tells so or does without; what the
// node map says afterwards is what the device holds, and the call works once the device does.
#include <functional>
#include <map>
#include <memory>
#include <sstream>

#include "Device.h"
#include "OxSimulation/FaultPort.h"
#include "OxSimulation/SimulatedCamera.h"

namespace {

using ox::simulation::FaultPort;
using ox::simulation::RegisterDevice;
using ox::simulation::SimulatedCamera;

// Carries out what it then denies.
class Liar final : public RegisterDevice {
 public:
  explicit Liar(RegisterDevice& device) : device_(device) {}
  int read(void* buffer, int64_t address, int64_t length) override { return device_.read(buffer, address, length); }
  int write(const void* buffer, int64_t address, int64_t length) override {
    const int result = device_.write(buffer, address, length);
    return --left == 0 ? fail(static_cast<int>(OXGENAPI_E_UNSPECIFIED), "denied") : result;
  }
  int accessMode() override { return device_.accessMode(); }
  int64_t left = 0;  // writes until the one that is denied

 private:
  RegisterDevice& device_;
};

// A node map over a device, its accesses looked after by a fault port.
class Mapped {
 public:
  explicit Mapped(RegisterDevice& device) : device_(device) {
    EXPECT_OK(CreateNodeMap(map));
    EXPECT_OK(NMLoadXMLString(map, std::string(SimulatedCamera::description()).c_str()));
    EXPECT_OK(NMConnectPort(map, &read, &write, &accessMode, &device_));
  }
  ~Mapped() { release(map); }
  Mapped(const Mapped&) = delete;
  Mapped& operator=(const Mapped&) = delete;

  template <class Call>
  uint32_t with(const char* name, Call&& call) const {
    NODE node{};
    if (const uint32_t result = NMGetNode(map, name, node)) return result;
    const uint32_t result = call(node);
    release(node);
    return result;
  }
  uint32_t set(const char* name, const char* value) const {
    return with(name, [&](NODE node) { return NSetAsString(node, value); });
  }
  uint32_t get(const char* name, std::string& value) const {
    value.assign(256, '\0');
    size_t size = value.size();
    const uint32_t result = with(name, [&](NODE node) { return NGetAsString(node, value.data(), size); });
    value = value.c_str();
    return result;
  }
  // What a set of features says, refusals included.
  std::map<std::string, std::string> state() const {
    std::map<std::string, std::string> values;
    std::istringstream names(
        "Width Height OffsetX PayloadSize ExposureTime ExposureAuto Gain GainSelector PixelFormat ReverseX "
        "DeviceUserID "
        "TestCommandCount UserSetSelector FileSelector FileOperationSelector FileOpenMode FileOperationStatus FileSize "
        "AcquisitionMode TriggerSelector TriggerMode");
    for (std::string name; names >> name;)
      if (get(name.c_str(), values[name]) != OXGENAPI_OK) values[name] = "refused";
    return values;
  }

  NODEMAP map{};

 private:
  static int finish(int result) {
    const std::string& text = RegisterDevice::lastFailureText();
    if (result < 0 && !text.empty()) OxSetLastError(static_cast<uint32_t>(result), text.c_str());
    return result;
  }
  static int read(void* buffer, int64_t address, int64_t length, void* device) {
    return finish(static_cast<RegisterDevice*>(device)->read(buffer, address, length));
  }
  static int write(const void* buffer, int64_t address, int64_t length, void* device) {
    return finish(static_cast<RegisterDevice*>(device)->write(buffer, address, length));
  }
  static TAccessMode accessMode(void* device) {
    return static_cast<TAccessMode>(static_cast<RegisterDevice*>(device)->accessMode());
  }
  RegisterDevice& device_;
};

bool note(NODE, uint32_t, void* problems) {
  ++*static_cast<int*>(problems);
  return true;
}

struct Case {
  const char* name;
  std::function<uint32_t(Mapped&, int& problems)> call;
};

constexpr const char* kSettings = "Width = \"320\"\nExposureTime = \"5000\"\nAcquisitionMode = \"SingleFrame\"\n";

Case reading(const char* name, const char* feature) {
  return {name, [feature](Mapped& m, int&) {
            std::string value;
            return m.get(feature, value);
          }};
}
Case writing(const char* name, const char* feature, const char* value) {
  return {name, [=](Mapped& m, int&) { return m.set(feature, value); }};
}
Case setting(const char* name, const char* feature) {
  return {name,
          [feature](Mapped& m, int&) { return m.with(feature, [](NODE node) { return NSetAsBoolean(node, true); }); }};
}

const Case kCases[] = {
    reading("read an integer", "PayloadSize"),
    reading("read a float", "ExposureTime"),
    reading("read an enumeration", "PixelFormat"),
    writing("write an integer", "Width", "320"),
    writing("write a float", "ExposureTime", "5000"),
    writing("write an enumeration", "PixelFormat", "Mono8"),
    writing("write a text", "DeviceUserID", "changed"),
    setting("write a boolean", "ReverseX"),
    setting("execute", "TestCommand"),
    setting("execute what changes all", "UserSetLoad"),
    {"ask for a limit",
     [](Mapped& m, int&) {
       int64_t limit = 0;
       return m.with("Width", [&](NODE node) { return NInfoAsInteger(node, NI_Max, &limit); });
     }},
    {"invalidate", [](Mapped& m, int&) { return m.with("Width", [](NODE node) { return NInvalidate(node); }); }},
    {"poll", [](Mapped& m, int&) { return NMPollNodes(m.map, 10'000); }},
    {"save settings",
     [](Mapped& m, int& problems) {
       size_t size = 0;
       return NMSaveSetStringEx(m.map, nullptr, &size, "Width|Gain|TriggerMode|ExposureTime", &note, &problems);
     }},
    {"load settings",
     [](Mapped& m, int& problems) { return NMLoadSetString(m.map, kSettings, false, &note, &problems); }},
    {"push to a stream",
     [](Mapped& m, int& problems) {
       NODEMAPSTREAM stream{};
       if (const uint32_t result = NMCreateStream(m.map, ST_Json, &stream)) return result;
       const uint32_t result = m.with("ExposureTime", [&](NODE node) { return NMStreamPush(stream, node); });
       char text[512] = {};
       size_t size = sizeof text;
       NMStreamDump(stream, text, &size);
       release(stream);
       if (std::strstr(text, "\"Value\":\"\"") != nullptr) ++problems;  // told in this way
       return result;
     }},
    {"upload", [](Mapped& m, int&) { return NMUploadFileMemory(m.map, "UserFile1", "some content of a file", 22); }},
    {"download",
     [](Mapped& m, int&) {
       char content[64];
       size_t size = sizeof content;
       return NMDownloadFileMemory(m.map, "UserFile1", content, &size);
     }},
    {"read memory",
     [](Mapped& m, int&) {
       char bytes[16];
       return m.with("Device", [&](NODE node) { return NGetAsMemory(node, 0x1c098, bytes, sizeof bytes); });
     }},
};

using Fault = std::function<void(FaultPort& port, Liar& liar, int64_t n)>;
struct Kind {
  const char* name;
  Fault arm;
  bool onWrites = false;  // counts writes alone
  bool lasts = false;     // until the port is healed
};

const Kind kKinds[] = {
    {"refused with a text",
     [](FaultPort& port, Liar&, int64_t n) { port.failNth(n, static_cast<int>(OXGENAPI_E_ACCESS_DENIED), "broken"); }},
    {"not supported, no text",
     [](FaultPort& port, Liar&, int64_t n) { port.failNth(n, static_cast<int>(OXGENAPI_E_NOT_SUPPORTED)); }},
    {"an odd code", [](FaultPort& port, Liar&, int64_t n) { port.failNth(n, -1, "minus one"); }},
    {"every access from there",
     [](FaultPort& port, Liar&, int64_t n) {
       port.failWhen([n, seen = int64_t{0}](const FaultPort::Access&) mutable { return ++seen >= n; },
                     static_cast<int>(OXGENAPI_E_UNSPECIFIED), "gone");
     },
     false, true},
    {"carried out and denied", [](FaultPort&, Liar& liar, int64_t n) { liar.left = n; }, true},
    {"an exception",
     [](FaultPort& port, Liar&, int64_t n) {
       port.onAccess([left = std::make_shared<int64_t>(n)](const FaultPort::Access&) {
         if (--*left == 0) throw std::runtime_error("thrown by a port");
       });
     }},
};

class DeviceFailure : public testing::TestWithParam<Case> {};

TEST_P(DeviceFailure, IsToldAndLeavesTheTruth) {
  const Case& tried = GetParam();
  SimulatedCamera some;
  const Mapped keeper(some);  // keeps the description parsed
  int64_t failed = 0;
  for (const Kind& kind : kKinds) {
    bool isDue = true;
    for (int64_t n = 1; isDue && !HasFailure(); ++n) {
      ASSERT_LT(n, 2000);
      SCOPED_TRACE(testing::Message() << tried.name << ", " << kind.name << ", access " << n);
      SimulatedCamera camera({.clock = [] { return int64_t{0}; }, .fileBufferBytes = 64});
      camera.setFileContent("UserFile1", {'u', 's', 'e', 'r'});
      Liar liar(camera);
      FaultPort port(liar);
      Mapped mapped(port);
      mapped.state();  // much is cached now
      const int64_t before = port.reads() + port.writes();
      const int64_t writesBefore = port.writes();
      kind.arm(port, liar, n);
      int problems = 0;
      const uint32_t result = tried.call(mapped, problems);
      isDue = (kind.onWrites ? port.writes() - writesBefore : port.reads() + port.writes() - before) >= n;
      failed += isDue;
      port.heal();
      liar.left = 0;
      if (isDue) {
        // The file protocol closes a file once more after a failure, and asks some features that may be missing.
        EXPECT_TRUE(result != OXGENAPI_OK || problems > 0 || std::string_view(tried.name).ends_with("load"));
      } else {
        EXPECT_EQ(outcome(result), succeeds());
        EXPECT_EQ(problems, 0);
      }
      // A node map that has just met the camera says the same.
      const Mapped fresh(camera);
      EXPECT_EQ(mapped.state(), fresh.state());
      // A device that was gone when a file was to be closed still has it open.
      const bool isOpen = kind.lasts && std::string_view(tried.name).ends_with("load");
      if (isDue && !isOpen) {
        problems = 0;
        EXPECT_EQ(tried.call(mapped, problems), OXGENAPI_OK) << "once more: " << lastErrorText();
        EXPECT_EQ(problems, 0);
        EXPECT_EQ(mapped.state(), Mapped(camera).state()) << "once more";
      }
    }
  }
  std::printf("%s: %lld accesses failed\n", tried.name, static_cast<long long>(failed));
}

std::string nameOf(const testing::TestParamInfo<Case>& tried) {
  std::string name = tried.param.name;
  std::replace(name.begin(), name.end(), ' ', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Calls, DeviceFailure, testing::ValuesIn(kCases), nameOf);

}  // namespace
