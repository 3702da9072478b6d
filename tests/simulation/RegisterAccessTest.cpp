// Reading and writing bytes: what is granted, what is refused, and what a refusal leaves behind.
#include <gmock/gmock.h>

#include <atomic>
#include <sstream>
#include <thread>

#include "CameraBench.h"

using namespace ox::simulation;

TEST(RegisterAccess, StoresNumbersInTheByteOrderOfTheDescription) {
  CameraBench bench;
  const struct {
    const char* name;
    uint64_t value;
    std::vector<uint8_t> bytes;
  } cases[] = {{"TestUnsigned16", 0x1234, {0x12, 0x34}},
               {"TestSigned16", 0x1234, {0x34, 0x12}},
               {"TestUnsigned24", 0x010203, {1, 2, 3}},
               {"TestFloatBigReg", 0x3FC00000, {0x3F, 0xC0, 0, 0}},
               {"TestFloatLittleReg", 0x3FC00000, {0, 0, 0xC0, 0x3F}},
               {"GevMACAddressReg", 0x02005E10C200, {0x02, 0x00, 0x5E, 0x10, 0xC2, 0x00}}};
  for (const auto& c : cases) {
    if (std::string(c.name) != "GevMACAddressReg") bench.set(c.name, c.value);
    std::vector<uint8_t> bytes(c.bytes.size());
    ASSERT_EQ(bench->read(bytes.data(), bench.addressOf(c.name), static_cast<int64_t>(bytes.size())), 0) << c.name;
    EXPECT_EQ(bytes, c.bytes) << c.name;
  }
}

TEST(RegisterAccess, RefusesWithTheNameOfTheRegister) {
  CameraBench bench;
  uint8_t bytes[64] = {};
  const struct {
    bool write;
    int64_t address;
    int64_t length;
    int code;
    const char* text;
  } cases[] = {
      {false, 0x7FFFFFFF0000, 4, kAccessRefused, "no register at address 0x7fffffff0000"},
      {false, -8, 4, kAccessRefused, "no register at address 0xfffffffffffffff8"},
      {false, 0xE8, 32, kAccessRefused, "no register at address 0xf8"},  // begins in one, ends behind it
      {true, 0x48, 1, kAccessRefused, "register DeviceVendorName at address 0x48 is read-only"},
      {false, bench.addressOf("TestWriteOnlyReg"), 4, kAccessRefused, "TestWriteOnly"},
      {false, 0x48, -1, kInvalidArgument, "negative length"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.write ? bench->write(bytes, c.address, c.length) : bench->read(bytes, c.address, c.length), c.code);
    EXPECT_NE(RegisterDevice::lastFailureText().find(c.text), std::string::npos) << RegisterDevice::lastFailureText();
  }
  EXPECT_EQ(bench->read(nullptr, 0x48, 4), kInvalidArgument);
  EXPECT_EQ(bench->read(nullptr, 0x48, 0), 0);

  // The reason is the thread's own.
  ASSERT_EQ(bench->write(bytes, 0x48, 1), kAccessRefused);
  std::thread([&] {
    EXPECT_EQ(bench->read(bytes, 0x10, 1), kAccessRefused);
    EXPECT_NE(RegisterDevice::lastFailureText().find("0x10"), std::string::npos);
  }).join();
  EXPECT_NE(RegisterDevice::lastFailureText().find("DeviceVendorName"), std::string::npos);
}

TEST(RegisterAccess, WorksFromSeveralThreads) {
  SimulatedCamera camera;
  std::vector<std::thread> threads;
  std::atomic<int> torn{0};
  for (uint8_t mark = 1; mark <= 4; ++mark)
    threads.emplace_back([&, mark] {
      std::vector<uint8_t> mine(4096, mark), seen(4096);
      for (int i = 0; i < 200; ++i) {
        camera.write(mine.data(), 0x40000, 4096);
        camera.read(seen.data(), 0x40000, 4096);
        for (const uint8_t byte : seen) torn += byte != seen[0];
        camera.acquireFrame();
      }
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(torn, 0);
}

TEST(CameraState, ComesBackInAnotherCamera) {
  std::stringstream state;
  {
    CameraBench bench;
    bench.set("WidthReg", 800);
    bench.set("GainRawReg", 300, 1);
    bench->setFileContent("UserFile1", {1, 2, 3});
    bench.set("UserSetSelectorReg", 2);
    bench.set("UserSetSaveReg", 1);
    bench.set("WidthReg", 400);
    bench.wait(5000);
    bench->saveState(state);
  }
  CameraBench bench;
  bench->loadState(state);
  EXPECT_EQ(bench.get("WidthReg"), 400u);
  EXPECT_EQ(bench.get("GainRawReg", 1), 300u);
  EXPECT_EQ(bench->fileContent("UserFile1"), (std::vector<uint8_t>{1, 2, 3}));
  EXPECT_EQ(bench.get("TimestampReg"), 5'000'000'000u) << "the camera's time goes on";
  bench.set("UserSetLoadReg", 1);
  EXPECT_EQ(bench.get("WidthReg"), 800u);
}

TEST(CameraState, RefusesWhatIsNoStateAndChangesNothing) {
  std::stringstream whole;
  CameraBench donor;
  donor.set("WidthReg", 320);
  donor->saveState(whole);
  const std::string good = whole.str();
  const struct {
    std::string text;
    const char* reason;
  } cases[] = {{"", "ends too early at byte 0"},
               {"something else altogether", "the first line is not OXCAMERA 1"},
               {good.substr(0, good.size() / 2), "ends too early"},
               {good.substr(0, 11) + std::string("\0\1A\xff\xff\xff\xff\xff\xff\xff\xff", 11), "claims"},
               {good.substr(0, 11) + std::string("\0\1A\0\0\0\0\0\0\0\0\0\1A", 14), "ends too early"}};
  for (const auto& c : cases) {
    CameraBench bench;
    std::stringstream in(c.text);
    EXPECT_THAT([&] { bench->loadState(in); },
                testing::ThrowsMessage<std::runtime_error>(testing::HasSubstr(c.reason)));
    EXPECT_EQ(bench.get("WidthReg"), 640u);
  }
}
